#include "batch/progress.h"

#include <unistd.h>

#include <cstdio>

#include "batch/table.h"
#include "batch/text.h"

namespace trellion::batch {

progress::progress(std::size_t n_files, bool quiet)
    : n_files_(n_files), quiet_(quiet), on_terminal_(::isatty(STDERR_FILENO) != 0) {}

void progress::tell(const file_report& report) {
  const std::lock_guard lock(one_at_a_time_);
  ++n_done_;
  if (quiet_) return;
  const std::string count = '[' + std::to_string(n_done_) + '/' + std::to_string(n_files_) + "] ";
  const std::string words = ": " + in_words(report);
  if (on_terminal_) {
    // A line that is longer than the terminal is wide could not be overwritten.
    constexpr std::size_t width = 79;
    const std::string line = count + printable(report.file.filename().native()) + words;
    std::fprintf(stderr, "\r\x1b[K%s", std::string(first_columns(line, width)).c_str());
  } else {
    std::fprintf(stderr, "%s\n", (count + printable(report.file.native()) + words).c_str());
  }
}

void progress::end() {
  const std::lock_guard lock(one_at_a_time_);
  if (on_terminal_ && !quiet_) std::fputs("\r\x1b[K", stderr);
}

}  // namespace trellion::batch
