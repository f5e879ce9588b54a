#include "batch/process.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <fstream>
#include <latch>
#include <thread>

#include "processes.h"
#include "support.h"

namespace trellion::testing {
namespace {

using batch::child_limits;
using batch::child_result;
using batch::interruption;
using batch::process_runner;
using ending = child_result::ending;
using std::chrono::milliseconds;

constexpr child_limits generous{std::chrono::minutes(2), std::uint64_t{8} << 30,
                                std::uint64_t{1} << 30};

std::vector<std::string> script(const std::string& text) { return {"/bin/sh", "-c", text}; }

class children : public ::testing::Test {
 protected:
  /// Runs a script, and gathers its output.
  child_result run(const std::string& text, const child_limits& limits = generous) {
    output.clear();
    const auto take = [this](std::string_view bytes) {
      output += bytes;
      return true;
    };
    return process_runner(interrupted, limits, 77).run(script(text), directory.path(), take);
  }
  /// A script that says so when it runs, with a process beside it, until it is killed.
  [[nodiscard]] std::string endless() const {
    return "exec 5>" + watching.path() + "; sleep 1000 & echo ready >&5; wait";
  }

  scratch_directory directory;
  const witness watching{directory.path() / "witness"};
  const interruption interrupted;
  std::string output;
};

TEST_F(children, pass_on_what_they_say_and_how_they_end) {
  child_result result = run("printf 'a\\nb'; echo c >&2; exit 3");
  EXPECT_EQ(output, "a\nb");
  EXPECT_EQ(result.messages, "c\n");
  EXPECT_EQ(result.how, ending::exited);
  EXPECT_EQ(result.status, 3);
  result = run("kill -TERM $$");
  EXPECT_EQ(result.how, ending::killed);
  EXPECT_EQ(result.status, SIGTERM);
  EXPECT_TRUE(run("head -c 1000000 /dev/zero").succeeded());
  EXPECT_EQ(output.size(), 1'000'000U);
  EXPECT_TRUE(run("exec >&- 2>&-; pwd >told; read nothing || exit 0").succeeded());
  EXPECT_EQ(directory.read("told"), std::filesystem::canonical(directory.path()).string() + '\n');

  // What they leave behind does not stay; what has left their group holds nobody up.
  EXPECT_EQ(run("exec 5>" + watching.path() + "; sleep 1000 & exit 4").status, 4);
  EXPECT_TRUE(watching.all_gone());
  EXPECT_EQ(
      run("setsid sh -c 'echo $$; >free; exec sleep 1000' & until [ -e free ]; do :; done; exit 4")
          .status,
      4);
  EXPECT_EQ(::kill(std::stoi(output), SIGKILL), 0);

  result = process_runner(interrupted, generous)
               .run({directory.path() / "absent"}, directory.path(), {});
  EXPECT_EQ(result.reason(), "cannot be run: No such file or directory");
  EXPECT_FALSE(result.succeeded());
}

TEST_F(children, give_reasons) {
  EXPECT_EQ(run("exit 3").reason(), "exit status 3");
  EXPECT_EQ(run("kill -KILL $$").reason(), "killed by signal 9");
  EXPECT_EQ(run("echo one >&2; echo two >&2; echo >&2; exit 1").reason(), "two");
  EXPECT_EQ(run("echo Error: /undefined in x >&2; echo stack >&2; exit 1").reason(),
            "Error: /undefined in x");
  EXPECT_EQ(run("head -c 300000 /dev/zero >&2; printf '\\nlast' >&2; exit 1").reason(), "last");
  EXPECT_EQ(run("printf 'a\\033[2J\\tb\\302\\233c\\303\\251\\r\\n' >&2; exit 1").reason(),
            "a?[2J?b??c\xC3\xA9?");
}

TEST_F(children, have_limits) {
  child_limits small{std::chrono::minutes(2), std::uint64_t{256} << 20, 51200};
  EXPECT_EQ(run("exec head -c 100000 /dev/zero >large", small).reason(), "writes too much");
  EXPECT_EQ(directory.read("large").size(), small.file_size);
  EXPECT_EQ(run("exec dd if=/dev/zero of=/dev/null bs=1G count=1", small).reason(),
            "needs too much memory");
  ASSERT_TRUE(run("ulimit -c; ulimit -n", small).succeeded());
  EXPECT_EQ(output, "0\n77\n");

  small.running_time = milliseconds(200);
  for (const std::string& text :
       {endless(), "exec >&- 2>&-; " + endless(), "trap '' TERM HUP; yes; " + endless()}) {
    const child_result result = run(text, small);
    EXPECT_EQ(result.how, ending::timed_out);
    EXPECT_EQ(result.reason(), "takes too long (--time-limit)");
  }
  EXPECT_TRUE(watching.all_gone());

  // Or until there is enough.
  std::size_t taken = 0;
  const auto take = [&taken](std::string_view bytes) { return (taken += bytes.size()) < 100'000; };
  EXPECT_EQ(process_runner(interrupted, generous).run(script("yes"), directory.path(), take).how,
            ending::stopped);
}

TEST_F(children, have_nothing_of_ours_that_they_do_not_need) {
  ::setenv("GS_OPTIONS", "-dNOSAFER", 1);
  ::setenv("TMPDIR", "/elsewhere", 1);
  ::setenv("TRELLION_ANYTHING", "kept", 1);
  constexpr int inherited = 50;
  ::dup2(STDERR_FILENO, inherited);
  run("env; for f in /proc/$$/fd/*; do [ -e $f ] && echo is ${f##*/} open; done");
  ::close(inherited);
  ::unsetenv("GS_OPTIONS");
  ::unsetenv("TMPDIR");
  EXPECT_EQ(output.find("GS_OPTIONS"), std::string::npos);
  EXPECT_EQ(output.find("/elsewhere"), std::string::npos);
  EXPECT_NE(output.find("TMPDIR=" + directory.path().string() + '\n'), std::string::npos);
  EXPECT_NE(output.find("TRELLION_ANYTHING=kept\n"), std::string::npos);
  EXPECT_TRUE(output.ends_with("is 0 open\nis 1 open\nis 2 open\n")) << output;
  EXPECT_EQ(output.find("is 3 open"), std::string::npos);
  // Signals that we ignore or have blocked end them.
  EXPECT_EQ(run("kill -PIPE $$").status, SIGPIPE);
}

TEST_F(children, do_not_outlive_us) {
  for (const int number : {SIGKILL, SIGALRM}) {
    const witness watching_this_time(watching.path());
    const pid_t process = in_process([this] {
      const interruption own;
      return process_runner(own, generous).run(script(endless()), directory.path(), {}).succeeded()
                 ? 0
                 : 1;
    });
    EXPECT_EQ(watching_this_time.next(), "ready\n");
    ::kill(process, number);
    EXPECT_EQ(WTERMSIG(wait_for(process)), number);
    EXPECT_TRUE(watching_this_time.all_gone());
  }
}

TEST_F(children, do_not_outlive_their_supervisor) {
  // With us there to see it, nobody is left of the group.
  const child_result result =
      run("exec 5>" + watching.path() + "; sleep 1000 & kill -9 $PPID; wait");
  EXPECT_EQ(result.reason(), "killed by signal 9");
  EXPECT_TRUE(watching.all_gone());

  // Without us the program is gone.
  const witness lonely(directory.path() / "lonely");
  const pid_t process = in_process([this, &lonely] {
    const interruption own;
    const std::string text = "exec 5>" + lonely.path() + "; echo $PPID >&5; exec sleep 1000";
    return process_runner(own, generous).run(script(text), directory.path(), {}).status;
  });
  const std::string supervisor = lonely.next();
  ASSERT_NE(supervisor, "");
  ::kill(process, SIGSTOP);
  ::kill(std::stoi(supervisor), SIGKILL);
  EXPECT_TRUE(lonely.all_gone());
  ::kill(process, SIGKILL);
  wait_for(process);
}

TEST_F(children, are_not_late_because_we_were_stopped) {
  const witness never(directory.path() / "never");
  const child_limits second{std::chrono::seconds(1), generous.memory, generous.file_size};
  const pid_t process = in_process([this, &second] {
    const interruption own;
    const std::string text = "echo ready >" + watching.path() + "; until [ -e end ]; do :; done";
    return process_runner(own, second).run(script(text), directory.path(), {}).succeeded() ? 0 : 1;
  });
  EXPECT_EQ(watching.next(), "ready\n");
  ::kill(process, SIGSTOP);
  EXPECT_TRUE(WIFSTOPPED(wait_for(process, WUNTRACED)));
  // For as long as it takes another one to be late.
  EXPECT_EQ(run("sleep 1000", second).how, ending::timed_out);
  ::kill(process, SIGCONT);
  EXPECT_TRUE(WIFCONTINUED(wait_for(process, WCONTINUED)));
  directory.write("end", "");
  EXPECT_EQ(wait_for(process), 0);
}

TEST_F(children, can_be_many) {
  const pid_t process = in_process([this] {
    constexpr std::ptrdiff_t count = 40;
    rlimit few{};
    ::getrlimit(RLIMIT_NOFILE, &few);
    few.rlim_cur = 64;
    ::setrlimit(RLIMIT_NOFILE, &few);
    const interruption own;
    const process_runner runner(own, generous, batch::raise_file_limit());
    std::atomic<int> good = 0;
    std::latch all_run(count);
    const auto work = [&] {
      // None ends before all of them have begun.
      const auto take = [&](std::string_view bytes) {
        if (bytes == "64\n") ++good;
        all_run.arrive_and_wait();
        return true;
      };
      try {
        if (!runner.run(script("ulimit -n"), directory.path(), take).succeeded()) --good;
      } catch (const run_error&) {
        all_run.count_down();
      }
    };
    std::vector<std::jthread> threads;
    for (std::ptrdiff_t i = 0; i < count; ++i) threads.emplace_back(work);
    threads.clear();
    return good == count ? 0 : 1;
  });
  EXPECT_EQ(wait_for(process), 0);
}

}  // namespace
}  // namespace trellion::testing
