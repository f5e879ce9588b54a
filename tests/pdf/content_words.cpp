#include "content_words.h"

#include <algorithm>
#include <charconv>

namespace trellion::pdf::testing {
namespace {

constexpr std::string_view blanks("\0\t\n\f\r ", 6);
constexpr std::string_view ends_of_words("\0\t\n\f\r ()<>[]{}/%", 16);

/// Without needless signs, points and zeros.
std::string normal(std::string word) {
  if (!is_number(word)) return word;
  std::string sign;
  if (word[0] == '+' || word[0] == '-') {
    if (word[0] == '-') sign = "-";
    word.erase(0, 1);
  }
  if (word.find('.') != std::string::npos) {
    word.erase(word.find_last_not_of('0') + 1);
    if (word.ends_with('.')) word.pop_back();
  }
  word.erase(0, std::min(word.find_first_not_of('0'), word.size()));
  return word.empty() ? "0" : sign + word;
}

}  // namespace

bool is_number(std::string_view word) {
  return word.find_first_not_of("+-.0123456789") == std::string_view::npos &&
         word.find_first_of("0123456789") != std::string_view::npos;
}

double to_number(std::string_view word) {
  double result = 0;
  std::from_chars(word.data(), word.data() + word.size(), result);
  return result;
}

std::optional<std::int64_t> scaled(std::string_view word, std::size_t decimals) {
  if (!is_number(word)) return std::nullopt;
  const bool is_negative = word[0] == '-';
  if (is_negative) word.remove_prefix(1);
  const std::size_t point = std::min(word.find('.'), word.size());
  std::string digits(word.substr(0, point));
  if (point < word.size()) digits += word.substr(point + 1);
  const std::size_t n_digits = point + decimals;
  constexpr std::size_t most_digits = 18;
  if (n_digits > most_digits) return std::nullopt;
  const bool is_more = digits.size() > n_digits && digits[n_digits] >= '5';
  digits.resize(n_digits, '0');
  std::int64_t result = is_more ? 1 : 0;
  std::int64_t value = 1;
  for (std::size_t i = n_digits; i-- > 0; value *= 10) result += (digits[i] - '0') * value;
  return is_negative ? -result : result;
}

std::string content_words::next() {
  std::string result = next_piece();
  std::size_t depth = 0;
  for (std::string piece = result; !piece.empty(); result += piece = normal(next_piece())) {
    if (piece == "[" || piece == "<<") ++depth;
    if ((piece == "]" || piece == ">>") && depth > 0) --depth;
    if (depth == 0) break;
    if (piece != "[") result += ' ';
  }
  return normal(result);
}

std::string content_words::next_piece() {
  while (true) {
    at_ = std::min(content_.find_first_not_of(blanks, at_), content_.size());
    if (at_ == content_.size() || content_[at_] != '%') break;
    at_ = std::min(content_.find_first_of("\r\n", at_), content_.size());
  }
  if (at_ == content_.size()) return {};
  const std::size_t begin = at_++;
  const std::string_view two = content_.substr(begin, 2);
  if (two == "<<" || two == ">>") {
    ++at_;
  } else if (two[0] == '(') {
    skip_string();
  } else if (two[0] == '<') {
    at_ = std::min(content_.find('>', at_), content_.size() - 1) + 1;
  } else if (two[0] == '/' || ends_of_words.find(two[0]) == std::string_view::npos) {
    at_ = std::min(content_.find_first_of(ends_of_words, at_), content_.size());
  }
  return std::string(content_.substr(begin, at_ - begin));
}

/// Whose first parenthesis has been read.
void content_words::skip_string() {
  for (std::size_t depth = 1; depth > 0 && at_ < content_.size(); ++at_) {
    if (content_[at_] == '(') ++depth;
    if (content_[at_] == ')') --depth;
    if (content_[at_] == '\\' && at_ + 1 < content_.size()) ++at_;
  }
}

std::string content_words::text_up_to(std::string_view words) {
  const std::size_t end = content_.find(words, at_);
  if (end == std::string_view::npos ||
      content_.find(words, end + words.size()) != std::string_view::npos)
    return {};
  const std::size_t begin = at_;
  at_ = end + words.size();
  return std::string(content_.substr(begin, at_ - begin));
}

}  // namespace trellion::pdf::testing
