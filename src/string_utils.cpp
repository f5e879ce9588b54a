#include "string_utils.h"

#include <algorithm>

namespace trellion {

bool string_is_num(std::string_view text) {
  text = trim_trailing_blanks(text);
  if (text.starts_with('-')) text.remove_prefix(1);
  if (text.empty()) return false;

  bool point_seen = false;
  for (const char c : text) {
    if (c >= '0' && c <= '9') continue;
    if (c != '.' || point_seen) return false;
    point_seen = true;
  }
  return true;
}

std::string_view trim_trailing_blanks(std::string_view text) {
  return text.substr(0, text.find_last_not_of(' ') + 1);
}

bool equal_blank_padded(std::string_view a, std::string_view b) {
  return trim_trailing_blanks(a) == trim_trailing_blanks(b);
}

}  // namespace trellion
