#include "tokens.h"

#include <gtest/gtest.h>

#include <array>
#include <random>

#include "string_utils.h"
#include "support.h"
#include "token_cursor.h"

namespace trellion::testing {
namespace {

std::vector<token> tokens_of(std::string_view text) {
  std::vector<token> tokens;
  for (token_list list(text); !list.empty();) tokens.push_back(list.take_head());
  return tokens;
}

/// Texts with their kinds, blanks and line ends, as in "0|3|word|1".
std::string described(std::string_view text) {
  std::string result;
  for (const token& t : tokens_of(text)) {
    result += std::to_string(t.leading_spaces) + '|' + std::to_string(static_cast<int>(t.kind)) +
              '|' + std::string(t.text) + '|' + std::to_string(t.line_ends) + ' ';
  }
  return result;
}

std::string written(std::string_view text) {
  captured_text out;
  purge({token_list(text), token_list(text.substr(text.size()))}, out);
  return out.text();
}

TEST(tokens, split_at_blanks_line_ends_and_braces_only) {
  const std::vector<std::array<std::string, 2>> texts = {
      {"  10 20 moveto", "2|2|10|0 1|2|20|0 1|3|moveto|1 "},
      {"/x{exch}def", "0|3|/x|0 0|1|{|0 0|3|exch|0 0|1|}|0 0|3|def|1 "},
      {"(a string)\tshow[1]", "0|3|(a|0 1|3|string)\tshow[1]|1 "},
      {"a\nb\r\nc\rd", "0|3|a|1 0|3|b|1 0|3|c|1 0|3|d|1 "},
      {"a  \n\n  \r\n b", "0|3|a|3 1|3|b|1 "},
      {"\n \na\n   ", "0|0||2 0|3|a|1 "},
      {"a\r\r\n", "0|3|a|2 "},
      {"    ", ""}};
  for (const auto& [text, expected] : texts) EXPECT_EQ(described(text), expected) << text;
  EXPECT_EQ(tokens_of("a b\n\nc\r\nd").back().line_number, 4);

  // Writing restores the text less blanks at line ends.
  const std::string text = "%!PS\n\n  /x {1  exch}  def\n\n\n{ } show\n";
  EXPECT_EQ(written(text), text);
  EXPECT_EQ(written("a   \r\n b\r\rc"), "a\n b\n\nc\n");
  EXPECT_EQ(written("{a}"), "{a}\n");
  for (std::size_t n = 60; n < 70; ++n) {
    const std::string restored = written(std::string(n, 'x').append(" \n").append(99, 'y'));
    EXPECT_EQ(restored, std::string(n, 'x').append("\n").append(99, 'y').append("\n"));
  }
}

TEST(tokens, numbers_have_an_optional_minus_and_one_point_at_most) {
  for (const auto* text : {"0", "-12", "3.25", "-.5", "5.", ".", "-."}) {
    EXPECT_TRUE(string_is_num(text)) << text;
  }
  for (const auto* text : {"", "-", "--5", "+5", "1e5", "1.2.3", "16#FF", "5-"}) {
    EXPECT_FALSE(string_is_num(text)) << text;
  }
}

/// Words, gaps and odd things in any order, so that each comes to lie anywhere among 64 bytes.
std::string random_text(std::mt19937& random) {
  static const std::vector<std::string> pieces = {" ",
                                                  " ",
                                                  "\n",
                                                  "\n",
                                                  "\r",
                                                  "\r\n",
                                                  "  \n",
                                                  "{",
                                                  "}",
                                                  "-",
                                                  ".",
                                                  "7",
                                                  "12",
                                                  "-3.25",
                                                  "4.",
                                                  ".5",
                                                  "1.2",
                                                  "-",
                                                  "l",
                                                  "moveto",
                                                  "e1",
                                                  std::string(61, '8'),
                                                  std::string(64, 'w'),
                                                  std::string(65, ' ')};
  std::string text = "x";
  if (random() % 4 == 0) {  // one brace, and one byte beyond those of ASCII
    while (text.size() < 120) text += "lll l ll ";
    for (const char c : {'{', '\xe9'}) text[random() % text.size()] = c;
  }
  while (text.size() < 400) {
    const std::size_t common = random() % 20 == 0 ? pieces.size() : pieces.size() - 3;
    text += pieces[random() % common];
    if (random() % 2 == 0) text += ' ';
  }
  return text;
}

TEST(tokens, are_the_same_for_a_cursor) {
  std::mt19937 random(3);
  const operator_text op("l");
  int n_tokens = 0;
  int n_left_to_list = 0;
  for (int round = 0; round < 2000; ++round) {
    const std::string text = random_text(random);
    token_list list(text);
    while (!list.empty()) {
      token_cursor cursor(list);
      token_list at;
      // One token on, or past others to the next number.
      const auto step = [&] {
        token_cursor last = cursor;
        const bool to_number = random() % 4 == 0;
        const bool found = to_number ? cursor.next_number() : cursor.next();
        at = cursor.list_from(cursor.here());
        if (!to_number) return found;
        for (; at.n_bytes() < list.n_bytes(); ++n_tokens) {
          EXPECT_FALSE(list.take_head().is_number()) << text;
        }
        EXPECT_TRUE(!at.same_head(list) || cursor.is_number() == found) << text;
        while (!found && last.next()) continue;
        EXPECT_TRUE(found || cursor.text() == last.text()) << text;
        return found;
      };
      while (step()) {
        ASSERT_TRUE(at.same_head(list)) << text;
        ASSERT_EQ(at.line_number(), list.line_number()) << text;
        const token t = list.take_head();
        ASSERT_EQ(cursor.is_number(), t.is_number()) << t.text << " in " << text;
        ASSERT_EQ(cursor.is(op), t.text == "l") << text;
        if (t.is_number()) {
          const coordinate by_marks = coordinate_of(cursor.number(), list.text_end());
          const coordinate alone = coordinate_at(t.text.data(), t.text.data() + t.text.size());
          ASSERT_EQ(by_marks.thousandths, alone.thousandths) << t.text << " in " << text;
          ASSERT_EQ(by_marks.fault, alone.fault) << t.text << " in " << text;
        }
        ++n_tokens;
      }
      if (!list.empty()) list.take_head();
      ++n_left_to_list;
    }
  }
#ifdef __SSE2__
  EXPECT_LT(10 * n_left_to_list, n_tokens);
#endif
}

TEST(tokens, equality_ignores_layout_but_not_kind_or_spelling) {
  auto a = tokens_of("moveto {\n\n   moveto 12 12.0");
  EXPECT_TRUE(tok_eq_tok(a[0], a[2]) && tok_neq_tok(a[3], a[4]));
  a[2].kind = token_kind::brace;
  EXPECT_FALSE(tok_eq_tok(a[0], a[2]));
}

TEST(tokens, leading_comments_are_written_and_taken_off) {
  const std::string_view text = "\n%!PS-Adobe-3.0 EPSF\n\n%%End{a}b\nnewpath %late\n";
  token_list list(text);
  captured_text out;
  purge_comments(list, out);
  EXPECT_EQ(out.text(), "\n%!PS-Adobe-3.0 EPSF\n\n%%End{a}b\n");
  EXPECT_EQ(list.take_head().text, "newpath");

  token_list comments_only("% a\n% b");
  captured_text all;
  purge_comments(comments_only, all);
  EXPECT_EQ(all.text(), "% a\n% b\n");
  EXPECT_TRUE(comments_only.empty());
}

TEST(tokens, description_tells_layout) {
  captured_text out;
  for (const token& t : tokens_of("            moveto\n 5\n\n")) display_token(t, out);
  EXPECT_EQ(out.text(),
            "12 leading spaces, followed by the string 'moveto' from line          1 <line ends>\n"
            "1 leading space,  followed by the number '5' from line          2 <line ends x 2 >\n");
}

TEST(tokens, failed_read_reports_the_line_reached) {
  struct failing_source : byte_source {
    std::size_t read(char* buffer, std::size_t capacity) override {
      if (text.empty()) throw read_failure("x", EIO);
      const std::size_t count = text.copy(buffer, capacity);
      text.erase(0, count);
      return count;
    }
    std::string text = "one\r\n" + std::string(10'000, '2') + "\nthr ee  ";
  } source;
  captured_text console;
  EXPECT_THROW(tokenize_file(source, 0, console), read_failure);
  EXPECT_EQ(console.text(),
            "Tokenizing postscript code ... \n"
            "trellion: iostat error     5 has occurred.\n"
            "Current line number   :        3\n"
            "Current line contents : thr ee\n");
}

}  // namespace
}  // namespace trellion::testing
