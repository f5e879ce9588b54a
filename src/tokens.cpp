#include "tokens.h"

#include <algorithm>
#include <string>

#include "fields.h"
#include "param.h"
#include "string_utils.h"
#include "token_marks.h"

namespace trellion {
namespace {

const char* skip_blanks(const char* position, const char* end) {
  return std::find_if(position, end, [](char c) { return c != ' '; });
}

/// The position after the line end that stands at `position`.
const char* skip_line_end(const char* position, const char* end) {
  const bool pair = position[0] == '\r' && end - position > 1 && position[1] == '\n';
  return position + (pair ? 2 : 1);
}

std::string_view text_between(const char* begin, const char* end) {
  return {begin, static_cast<std::size_t>(end - begin)};
}

/// The start of the last word or brace before `end`, blanks and line ends after it left aside.
const char* start_of_last_word(const char* begin, const char* end) {
  while (end != begin && (end[-1] == ' ' || is_line_end(end[-1]))) --end;
  if (end != begin && ends_word(end[-1])) return end - 1;
  while (end != begin && !ends_word(end[-1])) --end;
  return end;
}

void report_read_failure(std::string_view text, int error_number, text_writer& console) {
  std::int64_t line_number = 1;
  const char* position = text.data();
  const char* const end = position + text.size();
  const char* line_end = std::find_if(position, end, is_line_end);
  while (line_end != end) {
    ++line_number;
    position = skip_line_end(line_end, end);
    line_end = std::find_if(position, end, is_line_end);
  }
  const std::string_view line(position, static_cast<std::size_t>(end - position));
  console.put("trellion: iostat error  ").put(integer_field(error_number, 4)).put(" has occurred.");
  console.put(nl).put("Current line number   : ").put(integer_field(line_number, 8)).put(nl);
  console.put("Current line contents : ").put(trim_trailing_blanks(line)).put(nl);
}

}  // namespace

token_list::token_list(std::string_view text)
    : position_(text.data()), end_(text.data() + text.size()) {
  // A text of blanks alone, without a line end, holds no token.
  if (skip_blanks(position_, end_) == end_) position_ = end_;
}

/// Blank lines at the start of a text; elsewhere the token before them takes them.
void token_list::take_null_token(token& head) {
  head.kind = token_kind::null;
  head.text = {};
  head.leading_spaces = 0;
  head.line_ends = take_line_ends();
}

/// Moves past the line ends that follow, blanks before each included, and counts them. The last
/// line of a text counts as ended even when the text just stops.
std::int64_t token_list::take_line_ends() {
  std::int64_t count = 0;
  while (true) {
    const char* const next = skip_blanks(position_, end_);
    if (next == end_) {
      position_ = end_;
      line_number_ += count;
      return std::max<std::int64_t>(count, 1);
    }
    if (!is_line_end(*next)) {
      line_number_ += count;
      return count;
    }
    position_ = skip_line_end(next, end_);
    ++count;
  }
}

void write_token(const token& token, text_writer& out) {
  out.repeat(static_cast<std::size_t>(token.leading_spaces), ' ');
  out.put(token.text);
  out.repeat(static_cast<std::size_t>(token.line_ends), nl);
}

void purge(token_range tokens, text_writer& out) {
  token_list& list = tokens.begin;
  const char* const end = tokens.end.text_begin();
  while (!list.same_head(tokens.end)) {
    // What writing the tokens restores is written as it stands: up to the token that other layout
    // follows, or that ends the text, as its last line counts as ended in any case.
    const char* const begin = list.text_begin();
    const char* const other = find_other_layout(begin, end);
    if (other == end && end != list.text_end()) {
      out.put(text_between(begin, end));
      return;
    }
    list = list.from(start_of_last_word(begin, other), list.line_number());
    out.put(text_between(begin, list.text_begin()));
    write_token(list.take_head(), out);
  }
}

void purge_comments(token_list& list, text_writer& out) {
  bool in_comment = false;
  while (!list.empty()) {
    token_list rest = list;
    const token head = rest.take_head();
    const bool blank_line = head.kind == token_kind::null;
    in_comment = in_comment || head.text.starts_with('%');
    if (!blank_line && !in_comment) return;
    write_token(head, out);
    list = rest;
    if (head.line_ends > 0) in_comment = false;
  }
}

void display_token(const token& token, text_writer& out) {
  if (token.leading_spaces == 1) out.put("1 leading space,  followed by ");
  if (token.leading_spaces > 1) {
    out.put(std::to_string(token.leading_spaces)).put(" leading spaces, followed by ");
  }
  out.put(token.kind == token_kind::number ? "the number '" : "the string '").put(token.text);
  out.put('\'');
  if (token.line_number >= 1) out.put(" from line ").put(integer_field(token.line_number, 10));
  if (token.line_ends == 1) out.put(" <line ends>");
  if (token.line_ends > 1) {
    out.put(" <line ends x ").put(std::to_string(token.line_ends)).put(" >");
  }
  out.put(nl);
}

file_text tokenize_file(byte_source& source, std::size_t expected_size, text_writer& console) {
  console.put("Tokenizing postscript code ... ").put(nl).flush();

  // One byte more than expected lets the read that meets the end find room.
  file_text text;
  text.bytes.resize(std::max<std::size_t>(expected_size + 1, 4096));
  std::size_t size = 0;
  try {
    while (const std::size_t count =
               source.read(text.bytes.data() + size, text.bytes.size() - size)) {
      size += count;
      if (size == text.bytes.size()) text.bytes.resize(2 * size);
    }
    text.bytes.resize(size);
  } catch (const read_failure& failure) {
    report_read_failure(text.view().substr(0, size), failure.error_number(), console);
    throw;
  }
  return text;
}

}  // namespace trellion
