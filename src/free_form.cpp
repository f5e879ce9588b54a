#include "free_form.h"

#include <algorithm>
#include <charconv>
#include <istream>

namespace trellion {
namespace {

constexpr std::string_view blanks = " \t";
constexpr std::string_view item_ends = " \t,;/";

std::string_view skip_blanks(std::string_view text) {
  text.remove_prefix(std::min(text.find_first_not_of(blanks), text.size()));
  return text;
}

std::string unquoted(std::string_view text) {
  const char quote = text.front();
  std::string name;
  for (std::size_t i = 1; i < text.size(); ++i) {
    if (text[i] == quote && (i + 1 == text.size() || text[++i] != quote)) break;
    name += text[i];
  }
  return name;
}

}  // namespace

bool read_integer(std::string_view text, std::int32_t& value) {
  text = skip_blanks(text);
  if (text.empty()) return false;
  std::string_view item = text.substr(0, text.find_first_of(item_ends));
  if (item.empty()) return true;

  const bool signed_item = item.front() == '+' || item.front() == '-';
  if (signed_item && (item.size() == 1 || item[1] < '0' || item[1] > '9')) return false;
  if (item.front() == '+') item.remove_prefix(1);

  std::int32_t number = 0;
  const auto [end, error] = std::from_chars(item.data(), item.data() + item.size(), number);
  if (error != std::errc{} || end != item.data() + item.size()) return false;
  value = number;
  return true;
}

bool read_name(std::string_view text, std::string& name) {
  text = skip_blanks(text);
  if (text.empty()) return false;
  if (text.front() == '\'' || text.front() == '"') {
    name = unquoted(text);
    return true;
  }
  const std::string_view item = text.substr(0, text.find_first_of(item_ends));
  if (!item.empty()) name = item;
  return true;
}

bool next_answer(std::istream& answers, std::string& line) {
  while (std::getline(answers, line)) {
    if (line.ends_with('\r')) line.pop_back();
    if (!skip_blanks(line).empty()) return true;
  }
  return false;
}

}  // namespace trellion
