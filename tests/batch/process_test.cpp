#include "batch/process.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdlib>
#include <fstream>

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
    return run_command(script(text), take, limits);
  }
  [[nodiscard]] child_result run_command(const std::vector<std::string>& command,
                                         const batch::output_taker& take,
                                         const child_limits& limits = generous) const {
    const interruption interrupted;  // for no longer: `running` must find no thread of its
    return process_runner(interrupted, limits, 77).run(command, directory.path(), take);
  }
  /// A script that says so when it runs, with a process beside it, until it is killed.
  [[nodiscard]] static std::string endless(const witness& told) {
    return "exec 5>" + told.path() + "; sleep 1000 & echo $PPID >&5; wait";
  }
  /// Runs a script in a process of its own, which tells whether it succeeded.
  [[nodiscard]] pid_t running(const std::string& text,
                              const child_limits& limits = generous) const {
    return in_process([&] {
      const interruption own;
      const process_runner runner(own, limits);
      return runner.run(script(text), directory.path(), {}).succeeded() ? 0 : 1;
    });
  }

  scratch_directory directory;
  const witness watching{directory.path() / "witness"};
  std::string output;
};

TEST_F(children, pass_on_what_they_say_and_how_they_end) {
  child_result result = run("printf 'a\\nb'; echo c >&2; exit 3");
  EXPECT_EQ(output, "a\nb");
  EXPECT_EQ(result.messages, "c\n");
  EXPECT_EQ(result.reason(), "c");
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

  result = run_command({directory.path() / "absent"}, {});
  EXPECT_EQ(result.reason(), "cannot be run: No such file or directory");

  const std::vector<std::array<std::string, 2>> reasons = {
      {"exit 3", "exit status 3"},
      {"kill -KILL $$", "killed by signal 9"},
      {"echo one >&2; echo two >&2; echo >&2; exit 1", "two"},
      {"echo Error: /undefined in x >&2; echo stack >&2; exit 1", "Error: /undefined in x"},
      {"head -c 300000 /dev/zero >&2; printf '\\nlast' >&2; exit 1", "last"},
      {"printf 'a\\033[2J\\tb\\302\\233c\\303\\251\\r\\n' >&2; exit 1", "a?[2J?b??c\xC3\xA9?"}};
  for (const auto& [text, reason] : reasons) EXPECT_EQ(run(text).reason(), reason) << text;
}

TEST_F(children, have_limits) {
  child_limits small{std::chrono::minutes(2), std::uint64_t{256} << 20, 51200};
  EXPECT_EQ(run("exec head -c 100000 /dev/zero >large", small).reason(), "writes too much");
  EXPECT_EQ(directory.read("large").size(), small.file_size);
  EXPECT_EQ(run("exec dd if=/dev/zero of=/dev/null bs=1G count=1", small).reason(),
            "needs too much memory (--memory-limit MB allows more)");
  ASSERT_TRUE(run("ulimit -c; ulimit -n", small).succeeded());
  EXPECT_EQ(output, "0\n77\n");

  small.running_time = milliseconds(200);
  for (const std::string& text : {endless(watching), "exec >&- 2>&-; " + endless(watching),
                                  "trap '' TERM HUP; yes; " + endless(watching)}) {
    const child_result result = run(text, small);
    EXPECT_EQ(result.how, ending::timed_out);
    EXPECT_EQ(result.reason(), "takes too long (--time-limit SECONDS allows more)");
  }
  EXPECT_TRUE(watching.all_gone());

  // Or until there is enough.
  std::size_t taken = 0;
  const auto take = [&taken](std::string_view bytes) { return (taken += bytes.size()) < 100'000; };
  EXPECT_EQ(run_command(script("yes"), take).how, ending::stopped);
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
  const auto has = [this](const std::string& text) {
    return output.find(text) != std::string::npos;
  };
  EXPECT_FALSE(has("GS_OPTIONS") || has("/elsewhere") || has("is 3 open")) << output;
  EXPECT_TRUE(has("TMPDIR=" + directory.path().string() + '\n')) << output;
  EXPECT_TRUE(has("TRELLION_ANYTHING=kept\n")) << output;
  EXPECT_TRUE(output.ends_with("is 0 open\nis 1 open\nis 2 open\n")) << output;
  // Signals that we ignore or have blocked end them.
  EXPECT_EQ(run("kill -PIPE $$").status, SIGPIPE);
}

TEST_F(children, do_not_outlive_us) {
  for (const int number : {SIGKILL, SIGALRM}) {
    const witness watching_this_time(watching.path());
    const pid_t process = running(endless(watching_this_time));
    EXPECT_NE(watching_this_time.next(), "");
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
  const pid_t process = running("exec 5>" + lonely.path() + "; echo $PPID >&5; exec sleep 1000");
  const std::string supervisor = lonely.next();
  ASSERT_NE(supervisor, "");
  ::kill(process, SIGSTOP);
  ::kill(std::stoi(supervisor), SIGKILL);
  EXPECT_TRUE(lonely.all_gone());
  ::kill(process, SIGKILL);
  wait_for(process);
}

TEST_F(children, are_not_late_because_we_were_stopped) {
  const child_limits second{std::chrono::seconds(1), generous.memory, generous.file_size};
  const pid_t process =
      running("echo ready >" + watching.path() + "; until [ -e end ]; do :; done", second);
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

}  // namespace
}  // namespace trellion::testing
