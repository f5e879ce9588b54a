#pragma once

#include <cstddef>
#include <mutex>
#include <string>

#include "batch/file_report.h"

namespace trellion::batch {

/// Tells on standard error how far the work is: on a terminal with one line that is overwritten,
/// else with a line for every file. May be called by several threads.
class progress {
 public:
  progress(std::size_t n_files, bool quiet);

  void tell(const file_report& report);
  /// Takes the line on the terminal away.
  void end();

 private:
  std::size_t n_files_;
  std::size_t n_done_ = 0;
  bool quiet_;
  bool on_terminal_;
  std::mutex one_at_a_time_;
};

}  // namespace trellion::batch
