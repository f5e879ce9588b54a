#include "progress.h"

#include <unistd.h>

#include <cstdio>

#include "table.h"

namespace trellion::batch {

progress::progress(std::size_t n_files, bool quiet)
    : n_files_(n_files), quiet_(quiet), on_terminal_(::isatty(STDERR_FILENO) != 0) {}

void progress::tell(const file_report& report) {
  const std::lock_guard lock(one_at_a_time_);
  ++n_done_;
  if (quiet_) return;
  const char* const before = on_terminal_ ? "\r\x1b[K" : "";
  const char* const after = on_terminal_ ? "" : "\n";
  const std::string shown = on_terminal_ ? report.file.filename() : report.file;
  std::fprintf(stderr, "%s[%zu/%zu] %s: %s%s", before, n_done_, n_files_, printable(shown).c_str(),
               in_words(report).c_str(), after);
}

void progress::end() {
  const std::lock_guard lock(one_at_a_time_);
  if (on_terminal_ && !quiet_) std::fputs("\r\x1b[K", stderr);
}

}  // namespace trellion::batch
