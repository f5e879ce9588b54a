#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace trellion::pdf::testing {

/// Splits a well-formed content stream into words: operators, and operands, of which equal ones
/// are written alike. Arrays and dictionaries are one word.
class content_words {
 public:
  explicit content_words(std::string_view content) : content_(content) {}

  /// The next word; empty at the end.
  std::string next();
  /// The text up to the next place where some words stand, which is passed. Empty when it does not
  /// come, or again later: then it may be another one.
  std::string text_up_to(std::string_view words);

 private:
  std::string next_piece();
  void skip_string();

  std::string_view content_;
  std::size_t at_ = 0;
};

bool is_number(std::string_view word);
double to_number(std::string_view word);
/// A number in units of the last of so many decimals, rounded. Nothing when it is none, or large.
std::optional<std::int64_t> scaled(std::string_view word, std::size_t decimals);

}  // namespace trellion::pdf::testing
