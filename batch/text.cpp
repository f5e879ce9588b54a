#include "batch/text.h"

#include <algorithm>
#include <cstdio>

namespace trellion::batch {
namespace {

/// The length of the UTF-8 character at the start of a text, which is not empty, when it can be
/// shown; 0 for a control character and for what is none.
std::size_t length_of_shown(std::string_view text) {
  const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  if (byte(0) < 0x80) return byte(0) >= ' ' && byte(0) != 0x7f ? 1 : 0;
  const std::size_t length = byte(0) < 0xc2 ? 0 : byte(0) < 0xe0 ? 2 : byte(0) < 0xf0 ? 3 : 4;
  if (length == 0 || byte(0) > 0xf4 || text.size() < length) return 0;
  for (std::size_t i = 1; i < length; ++i) {
    if ((byte(i) & 0xc0) != 0x80) return 0;
  }
  // Longer than needed, halves of pairs, beyond the last character, control characters.
  const bool is_wrong = (byte(0) == 0xe0 && byte(1) < 0xa0) ||
                        (byte(0) == 0xed && byte(1) > 0x9f) ||
                        (byte(0) == 0xf0 && byte(1) < 0x90) ||
                        (byte(0) == 0xf4 && byte(1) > 0x8f) || (byte(0) == 0xc2 && byte(1) < 0xa0);
  return is_wrong ? 0 : length;
}

bool begins_character(char c) { return (static_cast<unsigned char>(c) & 0xc0) != 0x80; }

/// Copies a text; `replace` is given every byte that cannot be shown.
template <class Replace>
std::string copied(std::string_view text, Replace replace) {
  std::string result;
  while (!text.empty()) {
    const std::size_t length = length_of_shown(text);
    if (length == 0) {
      result += replace(text.front());
    } else {
      result += text.substr(0, length);
    }
    text.remove_prefix(std::max<std::size_t>(length, 1));
  }
  return result;
}

}  // namespace

std::string printable(std::string_view text) {
  return copied(text, [](char) { return "?"; });
}

std::string escaped(std::string_view text) {
  std::string doubled;
  for (const char c : text) doubled.append(c == '\\' ? 2 : 1, c);
  return copied(doubled, [](char c) -> std::string {
    if (c == '\t') return "\\t";
    if (c == '\n') return "\\n";
    constexpr std::string_view digits = "0123456789abcdef";
    const auto byte = static_cast<unsigned char>(c);
    return {'\\', 'x', digits[byte / 16], digits[byte % 16]};
  });
}

void complain(std::string_view what) {
  std::fprintf(stderr, "trellion-batch: %s\n", printable(what).c_str());
}

std::size_t width_of(std::string_view text) {
  return static_cast<std::size_t>(std::ranges::count_if(text, begins_character));
}

std::string_view first_columns(std::string_view text, std::size_t columns) {
  std::size_t end = 0;
  for (; end < text.size(); ++end) {
    if (begins_character(text[end]) && columns-- == 0) break;
  }
  return text.substr(0, end);
}

}  // namespace trellion::batch
