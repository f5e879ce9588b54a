#include "string_utils.h"

namespace trellion {

bool string_is_num(std::string_view text) {
  text = trim_trailing_blanks(text);
  if (text.empty()) return false;
  const char* const end = text.data() + text.size();
  const char* const after = skip_number(text.data(), end);
  return after == end && is_whole_number(text.data(), after);
}

std::string_view trim_trailing_blanks(std::string_view text) {
  return text.substr(0, text.find_last_not_of(' ') + 1);
}

}  // namespace trellion
