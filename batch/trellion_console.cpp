#include "trellion_console.h"

#include <algorithm>
#include <charconv>

namespace trellion::batch {
namespace {

constexpr std::string_view counts_end = " paths.";

/// The number before the end of a line that counts paths; -1 when there are asterisks.
std::int64_t count_in(std::string_view line) {
  line.remove_suffix(counts_end.size());
  const std::string_view digits = line.substr(line.find_last_not_of("0123456789") + 1);
  std::int64_t count = -1;
  std::from_chars(digits.data(), digits.data() + digits.size(), count);
  return count;
}

/// The sum, unknown when one of the two is.
std::int64_t sum(std::int64_t a, std::int64_t b) { return a < 0 || b < 0 ? -1 : a + b; }

}  // namespace

void trellion_console::read_line(std::string_view line) {
  if (line.starts_with("Group") && line.ends_with(counts_end)) {
    of_group_ = count_in(line);
    before_ = sum(before_, of_group_);
    after_ = sum(after_, std::min<std::int64_t>(of_group_, 1));
  } else if (line.starts_with("  Gathering ...") && line.ends_with(counts_end)) {
    const std::int64_t left = count_in(line);
    after_ = sum(after_, left < 0 ? -1 : left - 1);  // one was counted with the group
    if (left >= 0 && left != of_group_) joined_ = true;
  } else if (line.starts_with("Repaired filename is '")) {
    finished_ = true;
  } else if (line.ends_with("no drawing operators detected.")) {
    nothing_found_ = true;
  } else if (line.starts_with("trellion: ") || line.starts_with("trelion: ")) {
    failure_ = line;
  }
}

}  // namespace trellion::batch
