#pragma once

#include <bit>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <vector>

#include "string_utils.h"
#include "token_marks.h"
#include "tokens.h"

namespace trellion {

/// The text of an operator, to be looked for in texts.
class operator_text {
 public:
  explicit operator_text(std::string_view text) : text_(text) {
    if (text.size() > sizeof first_) return;
    std::memcpy(&first_, text.data(), text.size());
    if (!text.empty()) mask_ = ~std::uint64_t{0} >> (64 - 8 * text.size());
  }

  /// Whether it is all of the token at `text`.
  [[nodiscard]] bool is_at(const char* text, const char* end) const {
    const std::size_t size = text_.size();
    if (size < sizeof first_ && end - text >= std::ptrdiff_t{sizeof first_}) {
      return (load_word(text) & mask_) == first_ && ends_word(text[size]);
    }
    const std::string_view rest(text, static_cast<std::size_t>(end - text));
    return rest.starts_with(text_) && (rest.size() == size || ends_word(text[size]));
  }

 private:
  std::string_view text_;
  std::uint64_t first_ = 0;
  std::uint64_t mask_ = 0;
};

/// Goes through the tokens of a list like the list itself, many times as fast, and stops at the
/// text's end, and before what mark_tokens cannot tell. From there the list goes on.
class token_cursor {
 public:
  /// The list must not begin with blank lines.
  explicit token_cursor(const token_list& list)
      : list_(list), block_(list.text_begin()), line_number_(list.line_number()) {}

  /// Moves to the next token. False, without moving, when the list must go on.
  bool next() {
    if (left_ == 0 && !next_block()) return false;
    bit_ = std::countr_zero(left_);
    left_ &= left_ - 1;
    return true;
  }
  bool next_is_number() { return next() && is_number(); }
  bool next_is(const operator_text& text) { return next() && is(text); }
  /// Moves to the next number; to the last token before the list must go on when there is none.
  bool next_number() {
    while ((left_ & marks_.numbers) == 0) {
      if (marks_.tokens != 0) bit_ = 63 - std::countl_zero(marks_.tokens);
      left_ = 0;
      if (!next_block()) return false;
    }
    bit_ = std::countr_zero(left_ & marks_.numbers);
    left_ &= ~std::uint64_t{1} << bit_;
    return true;
  }

  /// What the current token is.
  [[nodiscard]] const char* text() const { return block_ + bit_; }
  [[nodiscard]] bool is_number() const { return (marks_.numbers >> bit_ & 1) != 0; }
  [[nodiscard]] bool is(const operator_text& op) const {
    return op.is_at(text(), list_.text_end());
  }

  /// A place that a list can be made from, once it is known which is wanted.
  struct place {
    const char* text;
    std::int64_t line_number;  // where the block begins
    std::uint64_t line_ends;   // of the block before the place
  };
  /// The place of the current token; the list's own before the first.
  [[nodiscard]] place here() const {
    return {text(), line_number_, marks_.line_ends & ((std::uint64_t{1} << bit_) - 1)};
  }
  [[nodiscard]] token_list list_from(const place& start) const {
    return list_.from(start.text, start.line_number + std::popcount(start.line_ends));
  }

 private:
  bool next_block() {
    const char* next = block_;
    std::int64_t line_number = line_number_;
    token_marks marks = marks_;
    do {  // twice at most: before a word there can be a gap that is marked alone
      next += marks.length;
      line_number += std::popcount(marks.line_ends);
      if (next == list_.text_end()) return false;
      marks = mark_tokens(next, list_.text_end());
      if (marks.length == 0) return false;
    } while (marks.tokens == 0);
    block_ = next;
    line_number_ = line_number;
    marks_ = marks;
    left_ = marks.tokens;
    return true;
  }

  token_list list_;
  const char* block_;
  std::int64_t line_number_;
  token_marks marks_;  // of the block
  std::uint64_t left_ = 0;
  int bit_ = 0;
};

/// Reads the numbers that follow, or some of them.
inline void pass_numbers(token_matcher& tokens) {
  token_cursor cursor(tokens.rest());
  token_cursor::place last = cursor.here();
  std::int64_t count = 0;
  for (; cursor.next_is_number(); ++count) last = cursor.here();
  if (count > 0) tokens.pass_to(cursor.list_from(last), count);
}

/// Reads the vertices that follow, each two numbers and the operator, or some of them.
inline void pass_vertices(token_matcher& tokens, const operator_text& op) {
  token_cursor cursor(tokens.rest());
  token_cursor::place last = cursor.here();
  std::int64_t count = 0;
  while (cursor.next_is_number() && cursor.next_is_number() && cursor.next_is(op)) {
    last = cursor.here();
    count += 3;
  }
  if (count > 0) tokens.pass_to(cursor.list_from(last), count);
}

/// The operators of plain polygons: their texts never change.
struct plain_operators {
  operator_text moveto;
  operator_text lineto;
  operator_text end_polygon;
  std::vector<operator_text> trailing;
};

/// Reads whole polygons of exactly one form as fast as can be, and leaves the first that it cannot
/// read to the matcher, which is then where reading those before would have brought it. Returns the
/// number of polygons read. The sink gets `vertex(x, y)`, where the texts of a vertex stand, and
/// `end_polygon(n_vertices)`, false from which refuses the polygon; the vertices after the last one
/// ended are to be dropped.
template <typename Sink>
std::int64_t read_plain_polygons(token_matcher& tokens, const plain_operators& operators,
                                 Sink& sink) {
  token_cursor cursor(tokens.rest());
  const auto read_vertex = [&](const operator_text& op) {
    const char* const x = cursor.text();
    if (!cursor.next_is_number()) return false;
    sink.vertex(x, cursor.text());
    return cursor.next_is(op);
  };
  std::int64_t n_read = 0;
  std::int64_t n_polygons = 0;
  const auto read_polygon = [&] {
    if (!cursor.next_is_number() || !read_vertex(operators.moveto)) return false;
    std::uint32_t n_vertices = 1;
    bool more = cursor.next();
    for (; more && cursor.is_number(); more = cursor.next()) {
      if (!read_vertex(operators.lineto)) return false;
      ++n_vertices;
    }
    if (!more || !cursor.is(operators.end_polygon)) return false;
    for (const operator_text& op : operators.trailing) {
      if (!cursor.next_is(op)) return false;
    }
    if (!sink.end_polygon(n_vertices)) return false;
    n_read += 3 * std::int64_t{n_vertices} + 1;
    return true;
  };

  token_cursor::place last = cursor.here();
  while (read_polygon()) {
    ++n_polygons;
    last = cursor.here();
  }
  if (n_polygons > 0) {
    n_read += n_polygons * static_cast<std::int64_t>(operators.trailing.size());
    tokens.pass_to(cursor.list_from(last), n_read);
  }
  return n_polygons;
}

}  // namespace trellion
