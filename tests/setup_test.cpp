#include "setup.h"

#include <gtest/gtest.h>

#include "support.h"

namespace trellion::testing {
namespace {

/// What the scan reports of a text, from its third word on: the operators, or the fatal line.
std::string found_in(const std::string& text, int min_separators = 2) {
  captured_text console;
  try {
    drawing_token_scan(token_list(text), min_separators, false, console);
  } catch (const early_end&) {
    return "none";
  }
  const std::string report = console.text();
  std::string words;
  for (token_list list(report); !list.empty();) {
    const token t = list.take_head();
    if (t.line_number > 1) words.append(t.text) += ' ';
  }
  return words;
}

std::string report(const std::string& m, const std::string& l, const std::string& end, int count) {
  return "moveto : " + m + " lineto : " + l + " end polygon : " + end + " [" +
         std::to_string(count) + " associated tokens] ";
}

const std::string triangle = "0 0 m 1 0 l 1 1 l h f ";  // 11 tokens

TEST(drawing_token_scan, finds_the_operators_of_most_tokens) {
  const std::string two = triangle + triangle;
  const std::string other = "0 0 M 1 0 L 1 1 L H F 0 0 M 1 0 L 1 1 L H F x ";
  const std::string bare = "0 0 m 1 0 l 1 1 l h ";
  const std::string short_end = "0 0 m 1 0 l 1 1 l f 0 0 m 1 0 l 1 1 l f ";
  struct text {
    std::string words;
    int min_separators;
    std::string expected;
  };
  const std::vector<text> texts = {
      {"x " + two + "1 0 0 rgb " + two + triangle, 2, report("m", "l", "h f", 55)},
      // Only the first polygon of a run may have more than two numbers before it.
      {"7 7 7 " + two, 2, report("m", "l", "h f", 25)},
      {triangle + "7 " + triangle, 2, "none"},
      {"", 2, "none"},
      {short_end, 2, "none"},
      {short_end, 1, report("m", "l", "f", 20)},
      {two, 3, "none"},
      // The first to reach the highest count wins.
      {other + two, 2, report("M", "L", "H F", 22)},
      {other + two + triangle, 2, report("m", "l", "h f", 33)},
      // Without the trailing operator it is another set.
      {two + "x " + bare + bare + bare, 1, report("m", "l", "h", 30)},
      // Each run ends at the first difference: the second polygon counts, its last operator not.
      {triangle + "n1 " + triangle + "n2 " + triangle + "n3 ", 2, report("m", "l", "h f n1", 23)},
      {"0 0 m 1 0 m 1 1 m h f 0 0 m 1 0 m 1 1 m h f ", 2, "none"},
      {"0 0 m 1 0 l h m 0 0 m 1 0 l h m ", 2, "none"}};
  for (const text& tried : texts) {
    EXPECT_EQ(found_in(tried.words, tried.min_separators), tried.expected) << tried.words;
  }
}

TEST(drawing_token_scan, last_trailing_operator_may_vary) {
  captured_text console;
  const auto set =
      drawing_token_scan(token_list(triangle + "n1 " + triangle + "n2 "), 2, true, console);
  EXPECT_EQ(set.trailing_operators.back().kind, token_kind::varying);
  EXPECT_NE(console.text().find("  m l h  f  n1 [23 associated tokens]\n"), std::string::npos);
}

std::string macro_report(const std::string& text, std::string& name, bool& at_head) {
  captured_text console;
  const token_list list(text);
  const fill_macro macro = pgf_setup(list, true, console);
  name = macro.name;
  at_head = macro.existing_definition && macro.existing_definition->same_head(list);
  return console.text();
}

TEST(pgf_setup, avoids_names_that_mean_something_else) {
  const std::string start = "Attempting to set stroke/fill macro\n";
  const std::string native =
      "/pgf{closepath gsave 0 setlinewidth\nstroke grestore fill}   bind def ";
  std::string name;
  bool at_head = false;

  EXPECT_EQ(macro_report("pgf x/pgf", name, at_head), start + "Safe pgf macro is /pgf\n");
  EXPECT_EQ(macro_report(native + "x", name, at_head),
            start +
                "pgf macro /pgf detected ... native\n"
                "Safe pgf macro is /pgf (already defined in file)\n");
  EXPECT_TRUE(at_head);
  macro_report("x " + native, name, at_head);
  EXPECT_TRUE(name == "/pgf" && !at_head);
  EXPECT_EQ(macro_report(native + "/pgf {fill} def /pgfx", name, at_head),
            start +
                "pgf macro /pgf detected ... native\npgf macro /pgf detected ... foreign\n"
                "pgf macro /pgfx detected ... foreign\nSafe pgf macro is /pgfxx\n");
  EXPECT_FALSE(at_head);
}

TEST(pgf_setup, gives_up_after_a_hundred_names) {
  std::string text;
  for (std::string taken = "/pgf"; taken.size() < 4 + 100; taken += 'x') text += taken + " ";
  captured_text console;
  EXPECT_THROW(pgf_setup(token_list(text), false, console), early_end);
  EXPECT_TRUE(console.text().ends_with(
      "trelion: fatal error --- unable to determine a safe pgf command.\nLast attempt was : /pgf" +
      std::string(100, 'x') + "\n"));
}

}  // namespace
}  // namespace trellion::testing
