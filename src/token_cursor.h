#pragma once

#include <bit>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <vector>

#include "coordinates.h"
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
      : list_(list), block_{list.text_begin(), list.line_number(), {}} {}

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
    while ((left_ & block_.marks.numbers) == 0) {
      if (block_.marks.tokens != 0) bit_ = 63 - std::countl_zero(block_.marks.tokens);
      left_ = 0;
      if (!next_block()) return false;
    }
    bit_ = std::countr_zero(left_ & block_.marks.numbers);
    left_ &= ~std::uint64_t{1} << bit_;
    return true;
  }

  /// What the current token is.
  [[nodiscard]] const char* text() const { return block_.text + bit_; }
  [[nodiscard]] bool is_number() const { return (block_.marks.numbers >> bit_ & 1) != 0; }
  /// Of a number, where it stands and how it is made up.
  [[nodiscard]] number_text number() const {
    return {text(), static_cast<unsigned>(std::countr_zero(block_.marks.breaks >> bit_)),
            static_cast<unsigned>(std::countr_zero(block_.marks.points >> bit_))};
  }
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
    return {text(), block_.line_number, block_.marks.line_ends & ((std::uint64_t{1} << bit_) - 1)};
  }
  [[nodiscard]] token_list list_from(const place& start) const {
    return list_.from(start.text, start.line_number + std::popcount(start.line_ends));
  }

 private:
  struct block {
    const char* text;
    std::int64_t line_number;  // where it begins
    token_marks marks;
  };

  bool next_block() {
    const char* const text = block_.text;
    const std::int64_t line_number = block_.line_number;
    const char* const end = list_.text_end();
    do {  // twice at most: before a word there can be a gap that is marked alone
      block_.text += block_.marks.length;
      block_.line_number += std::popcount(block_.marks.line_ends);
      const bool at_end = block_.text == end;
      if (!at_end) mark_tokens(block_.text, end, block_.marks);
      if (at_end || block_.marks.length == 0) {
        stay_at(text, line_number);
        return false;
      }
    } while (block_.marks.tokens == 0);
    left_ = block_.marks.tokens;
    return true;
  }

  /// Goes back to the block that holds the current token, and marks it once more. That is needed
  /// where a cursor stops; to keep the marks would take a copy for every block.
  void stay_at(const char* text, std::int64_t line_number) {
    block_.text = text;
    block_.line_number = line_number;
    if (text != list_.text_end()) mark_tokens(text, list_.text_end(), block_.marks);
  }

  token_list list_;
  block block_;
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
/// number of polygons read. The sink gets `vertex(x, y)`, the numbers of a vertex, and
/// `end_polygon(n_vertices)`, false from which refuses the polygon; the vertices after the last one
/// ended are to be dropped.
template <typename Sink>
std::int64_t read_plain_polygons(token_matcher& tokens, const plain_operators& operators,
                                 Sink& sink) {
  token_cursor cursor(tokens.rest());
  std::int64_t n_read = 0;
  std::int64_t n_polygons = 0;
  const auto read_polygon = [&] {
    std::uint32_t n_vertices = 0;
    const operator_text* expected = &operators.moveto;
    bool more = cursor.next();
    for (; more && cursor.is_number(); more = cursor.next()) {
      const number_text x = cursor.number();
      if (!cursor.next_is_number()) return false;
      sink.vertex(x, cursor.number());
      if (!cursor.next_is(*expected)) return false;
      ++n_vertices;
      expected = &operators.lineto;
    }
    if (!more || n_vertices == 0 || !cursor.is(operators.end_polygon)) return false;
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
