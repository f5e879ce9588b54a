#include "batch/progress.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <string>

#include "processes.h"
#include "support.h"

namespace trellion::testing {
namespace {

using namespace batch;

void tell_two(bool quiet) {
  progress told(2, quiet);
  file_report report;
  report.file = "folder/\x1b[2J\r" + std::string(100, 'a') + ".eps";
  report.result = verdict::failed;
  report.reason = "gs:\x07why";
  told.tell(report);
  report.result = verdict::written;
  report.reason.clear();
  told.tell(report);
  told.end();
}

TEST(progress, is_told_line_by_line) {
  const std::string name = "folder/?[2J?" + std::string(100, 'a') + ".eps";
  for (const bool quiet : {false, true}) {
    ::testing::internal::CaptureStderr();
    tell_two(quiet);
    EXPECT_EQ(::testing::internal::GetCapturedStderr(),
              quiet ? "" : "[1/2] " + name + ": FAILED: gs:?why\n[2/2] " + name + ": written\n");
  }
}

TEST(progress, overwrites_one_line_of_a_terminal) {
  const file_descriptor terminal(::posix_openpt(O_RDWR | O_NOCTTY));
  ASSERT_EQ(::grantpt(terminal.get()), 0);
  ASSERT_EQ(::unlockpt(terminal.get()), 0);
  const file_descriptor screen(::open(::ptsname(terminal.get()), O_RDWR | O_NOCTTY));
  const pid_t process = in_process([&] {
    ::dup2(screen.get(), STDERR_FILENO);
    tell_two(false);
    return 0;
  });
  ASSERT_EQ(wait_for(process), 0);
  // A terminal hands on in its own time what was written to it, in pieces: a last character tells
  // that all of it has come.
  constexpr char last = '$';
  ASSERT_EQ(::write(screen.get(), &last, 1), 1);
  std::string seen;
  std::array<char, 4096> piece;
  while (!seen.ends_with(last)) {
    const ssize_t n_read = ::read(terminal.get(), piece.data(), piece.size());
    ASSERT_GT(n_read, 0);
    seen.append(piece.data(), static_cast<std::size_t>(n_read));
  }
  const std::string cleared = "\r\x1b[K";
  const auto line = [&](const std::string& begin) {
    return cleared + (begin + std::string(100, 'a')).substr(0, 79);
  };
  EXPECT_EQ(seen, line("[1/2] ?[2J?") + line("[2/2] ?[2J?") + cleared + last);
}

}  // namespace
}  // namespace trellion::testing
