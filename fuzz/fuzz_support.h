#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

#include "files.h"

/// What a fuzzer calls with every input.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace trellion::fuzzing {

inline std::string_view as_text(const std::uint8_t* data, std::size_t size) {
  return {reinterpret_cast<const char*>(data), size};
}

/// Stops the fuzzer, which keeps the input, unless the claim holds.
inline void require(bool claim, const char* what) {
  if (claim) return;
  std::fprintf(stderr, "does not hold: %s\n", what);
  std::abort();
}

/// Hands a text out in pieces of growing size.
class source_in_pieces : public byte_source {
 public:
  explicit source_in_pieces(std::string_view text) : text_(text) {}

  std::size_t read(char* buffer, std::size_t capacity) override {
    const std::size_t count = text_.copy(buffer, std::min(capacity, piece_++));
    text_.remove_prefix(count);
    return count;
  }

 private:
  std::string_view text_;
  std::size_t piece_ = 1;
};

/// The text with LF for every line end and no blanks at the ends of lines. Its last line is ended,
/// too, unless nothing is left of it.
inline std::string with_plain_layout(std::string_view text) {
  std::string result;
  std::string line;
  const auto end_line = [&] {
    result += line.erase(line.find_last_not_of(' ') + 1) + '\n';
    line.clear();
  };
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '\r' && i + 1 < text.size() && text[i + 1] == '\n') continue;
    if (text[i] == '\r' || text[i] == '\n') {
      end_line();
    } else {
      line += text[i];
    }
  }
  if (line.find_first_not_of(' ') != std::string::npos) end_line();
  return result;
}

}  // namespace trellion::fuzzing
