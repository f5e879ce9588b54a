#include "batch/interruption.h"

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <csignal>

#include "batch/process.h"
#include "processes.h"
#include "support.h"

namespace trellion::testing {
namespace {

TEST(interruptions, end_children_first_and_then_us_by_the_same_signal) {
  const scratch_directory directory;
  for (const int number : {SIGINT, SIGTERM, SIGHUP, SIGQUIT}) {
    const witness watching(directory.path() / "witness");
    const pid_t process = in_process([&] {
      std::signal(number, SIG_DFL);  // whoever started the tests may ignore it
      const batch::interruption interrupted;
      const batch::child_limits limits{std::chrono::minutes(2), UINT64_MAX, UINT64_MAX};
      const std::string script = "exec 5>witness; sleep 1000 & echo ready >&5; wait";
      const batch::child_result result = batch::process_runner(interrupted, limits)
                                             .run({"/bin/sh", "-c", script}, directory.path(), {});
      if (result.how != batch::child_result::ending::interrupted) return 1;
      if (result.reason() != "interrupted" || !watching.all_gone()) return 2;
      interrupted.end_by_signal();
      return 3;
    });
    EXPECT_EQ(watching.next(), "ready\n");
    ::kill(process, number);
    const int status = wait_for(process);
    EXPECT_TRUE(WIFSIGNALED(status));
    EXPECT_EQ(WTERMSIG(status), number);
  }
}

TEST(interruptions, do_not_come_from_signals_that_were_ignored) {
  const pid_t process = in_process([] {
    std::signal(SIGHUP, SIG_IGN);
    std::signal(SIGTERM, SIG_DFL);
    const batch::interruption interrupted;
    ::kill(::getpid(), SIGHUP);
    ::kill(::getpid(), SIGTERM);
    while (!interrupted.requested()) std::this_thread::yield();
    interrupted.end_by_signal();
    return 1;
  });
  EXPECT_EQ(WTERMSIG(wait_for(process)), SIGTERM);
}

}  // namespace
}  // namespace trellion::testing
