#pragma once

#include <cstdint>
#include <memory>
#include <string_view>

#include "files.h"

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

/// Equality of kind and (blank-padded) text. Layout and position never take part, and numbers are
/// compared as text: 12 is not 12.0.
bool tok_eq_tok(const token& a, const token& b);
bool tok_neq_tok(const token& a, const token& b);

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
  explicit token_list(std::string_view text, std::int64_t first_line = 1);

  [[nodiscard]] bool empty() const { return position_ == end_; }
  /// Splits off the first token; the list must not be empty.
  token take_head();
  /// True when both lists, made from the same text, begin at the same token.
  [[nodiscard]] bool same_head(const token_list& other) const {
    return position_ == other.position_;
  }

 private:
  std::int64_t take_line_ends();

  const char* position_ = nullptr;  // behind the line ends of the token last taken
  const char* end_ = nullptr;
  std::int64_t line_number_ = 1;
};

/// A stretch of consecutive tokens: from the head of `begin` up to, not including, that of `end`.
struct token_range {
  token_list begin;
  token_list end;
};

/// Writes the token's blanks, text and line ends.
void write_token(const token& token, text_writer& out);

/// Writes the tokens of a range in order.
void purge(token_range tokens, text_writer& out);

/// Writes the blank lines and comment lines that the list begins with and takes them off it. A
/// comment starts with a token whose first character is "%" and runs to its line's end.
void purge_comments(token_list& list, text_writer& out);

/// Writes a one-line description of a token: its blanks, text, line and line ends.
void display_token(const token& token, text_writer& out);

/// A text read whole.
struct file_text {
  std::unique_ptr<char[]> bytes;
  std::size_t size = 0;

  [[nodiscard]] std::string_view view() const { return {bytes.get(), size}; }
};

/// Reads the source to its end and returns its text, ready to be made into a token_list. When a
/// read fails the error number, the line reached and what was read of it go to the console and the
/// run ends early. `expected_size` saves growing the buffer when it is right.
file_text tokenize_file(byte_source& source, std::size_t expected_size, text_writer& console);

}  // namespace trellion
