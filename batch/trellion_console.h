#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace trellion::batch {

/// Reads what trellion says on its console, line by line, and keeps what matters.
class trellion_console {
 public:
  void read_line(std::string_view line);

  /// Whether the repair came to its end.
  [[nodiscard]] bool finished() const { return finished_; }
  /// Whether it ended because no polygons were found.
  [[nodiscard]] bool nothing_found() const { return nothing_found_; }
  /// Whether any polygons were joined.
  [[nodiscard]] bool joined() const { return joined_; }
  /// The polygons of all groups; -1 when a count did not fit its field.
  [[nodiscard]] std::int64_t polygons_before() const { return before_; }
  /// What is left of them; of a group that was not worth working at most one.
  [[nodiscard]] std::int64_t polygons_after() const { return after_; }
  /// The line that says why it ended; empty when none did.
  [[nodiscard]] const std::string& failure() const { return failure_; }

 private:
  bool finished_ = false;
  bool nothing_found_ = false;
  bool joined_ = false;
  std::int64_t before_ = 0;
  std::int64_t after_ = 0;
  std::int64_t of_group_ = 0;
  std::string failure_;
};

}  // namespace trellion::batch
