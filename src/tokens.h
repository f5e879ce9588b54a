#pragma once

#include <array>
#include <cstdint>
#include <string_view>

#include "bytes.h"
#include "large_array.h"
#include "string_utils.h"

namespace trellion {

enum class token_kind : std::uint8_t {
  null,     ///< a stretch of blank lines at the very start of the text; its text is empty
  brace,    ///< "{" or "}"
  number,   ///< a word that string_is_num accepts
  string,   ///< any other word: operators, names, pieces of strings and comments
  varying,  ///< never read from a text: an operator whose text changes from polygon to polygon
};

/// One lexical token with everything needed to write it back as it stood. The text is a view into
/// whatever the token was read from, which must outlive it.
struct token {
  std::string_view text;
  std::int64_t leading_spaces = 0;  ///< blanks before the text
  std::int64_t line_ends = 0;       ///< line ends after the text, blank lines included
  std::int64_t line_number = -1;    ///< line of the input, from 1; below 1 when unknown
  token_kind kind = token_kind::string;

  [[nodiscard]] bool is_number() const { return kind == token_kind::number; }
  [[nodiscard]] bool is_string() const { return kind == token_kind::string; }
};

/// Equality of texts. It spares the call of a library function for operators of one character,
/// which are what most files are full of.
inline bool same_text(std::string_view a, std::string_view b) {
  return a.size() == b.size() && (a.empty() || a[0] == b[0]) && (a.size() < 2 || a == b);
}

/// Equality of kind and text. Layout and position never take part, and numbers are compared as
/// text: 12 is not 12.0.
inline bool tok_eq_tok(const token& a, const token& b) {
  return a.kind == b.kind && same_text(a.text, b.text);
}
inline bool tok_neq_tok(const token& a, const token& b) { return !tok_eq_tok(a, b); }

/// A list of tokens, from its head to the end of the text that they stand in.
///
/// A file of a million polygons holds some fifteen million tokens, so they are not kept: the list
/// is the unread rest of the text, and each token is split off when it is asked for. That makes a
/// copy of a list a bookmark, cutting a list a matter of two bookmarks, and nothing has to be
/// freed. The text must outlive the list.
///
/// The text splits at blanks and braces only. A line ends with LF, CR LF or a lone CR; blanks at a
/// line's end are dropped, and blank lines become line ends of the token before them.
class token_list {
 public:
  token_list() = default;
  explicit token_list(std::string_view text);

  [[nodiscard]] bool empty() const { return position_ == end_; }
  /// Splits off the first token; the list must not be empty.
  token take_head() {
    token head;
    take_head(head);
    return head;
  }
  /// The same into a token that is there already, which spares a copy in the loops that count.
  void take_head(token& head);
  /// True when both lists, made from the same text, begin at the same token.
  [[nodiscard]] bool same_head(const token_list& other) const {
    return position_ == other.position_;
  }
  /// The list from a later token on, given where its text and in which line it stands.
  [[nodiscard]] token_list from(const char* text, std::int64_t line_number) const {
    token_list result = *this;
    while (text != position_ && text[-1] == ' ') --text;
    result.position_ = text;
    result.line_number_ = line_number;
    return result;
  }
  /// Where the text begins that is left: it can be at blanks.
  [[nodiscard]] const char* text_begin() const { return position_; }
  /// Where the text ends that the tokens stand in.
  [[nodiscard]] const char* text_end() const { return end_; }
  /// The length of the text that is left.
  [[nodiscard]] std::size_t n_bytes() const { return static_cast<std::size_t>(end_ - position_); }
  /// The input line of the first token, from 1.
  [[nodiscard]] std::int64_t line_number() const { return line_number_; }

 private:
  void take_null_token(token& head);
  std::int64_t take_line_ends();

  const char* position_ = nullptr;  // after the line ends of the token last taken
  const char* end_ = nullptr;
  std::int64_t line_number_ = 1;
};

/// Reads a list against expectations, one token at a time, and remembers the token that it read
/// last and how many it has read.
class token_matcher {
 public:
  explicit token_matcher(const token_list& list) : rest_(list) {}

  /// Reads a token; false at the end of the list.
  bool next() {
    at_end_ = rest_.empty();
    if (at_end_) return false;
    rest_.take_head(last_);
    ++count_;
    return true;
  }
  /// Reads a token and tells whether it is a number, or equals the given one.
  bool next_is_number() { return next() && last_.is_number(); }
  bool next_is(const token& expected) { return next() && tok_eq_tok(last_, expected); }
  /// Passes over `count` tokens, the last of which begins the given list, as if they were read.
  void pass_to(const token_list& last, std::int64_t count) {
    rest_ = last;
    next();
    count_ += count - 1;
  }

  /// True when the last token was asked for in vain.
  [[nodiscard]] bool at_end() const { return at_end_; }
  [[nodiscard]] const token& last() const { return last_; }
  [[nodiscard]] const token_list& rest() const { return rest_; }
  [[nodiscard]] std::int64_t count() const { return count_; }

 private:
  token_list rest_;
  token last_;
  std::int64_t count_ = 0;
  bool at_end_ = false;
};

/// A stretch of consecutive tokens: from the head of `begin` up to, not including, that of `end`.
struct token_range {
  token_list begin;
  token_list end;
};

/// A text read whole.
struct file_text {
  large_array<char> bytes;

  [[nodiscard]] std::string_view view() const { return {bytes.data(), bytes.size()}; }
};

/// Reads the source to its end and returns its text, ready to be made into a token_list. When a
/// read fails the error number, the line reached and what was read of it go to the console before
/// the read_failure goes on. `expected_size` saves growing the buffer when it is right.
file_text tokenize_file(byte_source& source, std::size_t expected_size, text_writer& console);

/// Writes the token's blanks, text and line ends.
void write_token(const token& token, text_writer& out);

/// Writes the tokens of a range in order.
void purge(token_range tokens, text_writer& out);

/// Writes the blank lines and comment lines that the list begins with and takes them off it. A
/// comment starts with a token whose first character is "%" and runs to its line's end.
void purge_comments(token_list& list, text_writer& out);

/// Writes a one-line description of a token: its blanks, text, line and line ends.
void display_token(const token& token, text_writer& out);

// In the header because it is what most of the time goes into where a text is not plain.
inline void token_list::take_head(token& head) {
  const char* begin = position_;
  while (*begin == ' ') ++begin;  // the list is not empty: a token stands before its end
  head.leading_spaces = begin - position_;
  head.line_number = line_number_;

  const char* after = begin;
  head.kind = token_kind::string;
  switch (class_of(*begin)) {
    case byte_class::sign_or_point:
    case byte_class::digit:
      after = skip_number(begin, end_);
      if ((after == end_ || ends_word(*after)) && is_whole_number(begin, after)) {
        head.kind = token_kind::number;
        break;
      }
      [[fallthrough]];
    case byte_class::other:
      while (after != end_ && !ends_word(*after)) ++after;
      break;
    case byte_class::brace:
      head.kind = token_kind::brace;
      ++after;
      break;
    case byte_class::blank:  // they have been skipped
    case byte_class::line_end: take_null_token(head); return;
  }
  head.text = {begin, static_cast<std::size_t>(after - begin)};

  const bool plain_text_next = end_ - after > 1 && static_cast<unsigned char>(after[1]) > ' ';
  if (plain_text_next && *after == ' ') {
    position_ = after;
    head.line_ends = 0;
  } else if (plain_text_next && *after == '\n') {
    position_ = after + 1;
    ++line_number_;
    head.line_ends = 1;
  } else {
    position_ = after;
    head.line_ends = take_line_ends();
  }
}

}  // namespace trellion
