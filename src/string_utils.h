#pragma once

#include <array>
#include <bit>
#include <cstdint>
#include <cstring>
#include <string_view>

/// Recognises numbers, and what ends them: the bytes of which words are made.

namespace trellion {

enum class byte_class : std::uint8_t { other, sign_or_point, digit, blank, brace, line_end };

/// A table, because every byte of the input is asked what it is.
inline constexpr auto byte_classes = [] {
  std::array<byte_class, 256> table{};
  for (char c = '0'; c <= '9'; ++c) table[static_cast<unsigned char>(c)] = byte_class::digit;
  for (const char c : {'{', '}'}) table[static_cast<unsigned char>(c)] = byte_class::brace;
  for (const char c : {'\n', '\r'}) table[static_cast<unsigned char>(c)] = byte_class::line_end;
  for (const char c : {'-', '.'}) table[static_cast<unsigned char>(c)] = byte_class::sign_or_point;
  table[' '] = byte_class::blank;
  return table;
}();

inline byte_class class_of(char c) { return byte_classes[static_cast<unsigned char>(c)]; }
inline bool is_digit(char c) { return class_of(c) == byte_class::digit; }
inline bool is_line_end(char c) { return class_of(c) == byte_class::line_end; }
inline bool ends_word(char c) { return class_of(c) >= byte_class::blank; }

/// The form of what could be a number at the start of eight bytes: digits with at most one "."
/// among them. All lengths are 8 when no byte ends it.
struct number_form {
  unsigned before_point;  ///< digits before the point
  bool has_point;
  unsigned length;  ///< digits and point
};

/// Whether number_form_of can be used: the bytes of a word are looked at in the order of the text.
inline constexpr bool words_are_text = std::endian::native == std::endian::little;

inline std::uint64_t load_word(const char* p) {
  std::uint64_t word = 0;
  std::memcpy(&word, p, sizeof word);
  return word;
}

/// Looks at all bytes at once, without a branch: the lengths of numbers are what no processor
/// foresees.
inline number_form number_form_of(std::uint64_t word) {
  constexpr std::uint64_t each = 0x0101010101010101;
  const std::uint64_t digits = word ^ (each * '0');  // bytes of 0 to 9 where there is a digit
  const std::uint64_t others = (((digits & (each * 0x7f)) + each * 0x76) | digits) & (each * 0x80);
  const auto before_point = static_cast<unsigned>(std::countr_zero(others)) / 8;
  const bool has_point = others != 0 && (word >> (8 * before_point % 64) & 0xff) == '.';
  const std::uint64_t ends = has_point ? others & (others - 1) : others;
  return {before_point, has_point, static_cast<unsigned>(std::countr_zero(ends)) / 8};
}

/// Past the longest beginning of a text that could be one of a number: an optional "-", then
/// digits with at most one "." among them.
inline const char* skip_number(const char* p, const char* end) {
  if (p != end && *p == '-') ++p;
  if (words_are_text && end - p >= 8) {
    const unsigned length = number_form_of(load_word(p)).length;
    if (length < 8) return p + length;
  }
  while (p != end && is_digit(*p)) ++p;
  if (p != end && *p == '.') ++p;
  while (p != end && is_digit(*p)) ++p;
  return p;
}

/// True when what skip_number passed over is a number, given that the word ends there: it must hold
/// more than a "-". "." and "-." count: they are told apart only where a value is needed.
inline bool is_whole_number(const char* begin, const char* after) {
  return after - begin > (*begin == '-' ? 1 : 0);
}

/// True for a text that is a number, blanks at its end left aside. "+1" and "1e5" are none.
bool string_is_num(std::string_view text);

/// The text without the blanks at its end; only the blank counts, a tab is an ordinary character.
std::string_view trim_trailing_blanks(std::string_view text);

}  // namespace trellion
