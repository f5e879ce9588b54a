#include <cerrno>
#include <csignal>

#include "batches.h"
#include "tools.h"

namespace trellion::testing {
namespace {

namespace fs = std::filesystem;

class batch_faults : public batches {
 protected:
  batch_faults() { fs::create_directory(directory.path() / "bin"); }

  /// Puts a script in the place of a program.
  void fake(const std::string& program, const std::string& script) const {
    write_script(directory, "bin/" + program, script);
  }
  /// Puts a program in the place of gs that draws the same picture of everything, and no other
  /// program that draws. `before` comes before it does that.
  void fake_quick_gs(const std::string& before = "") const {
    directory.write("picture.ppm", "P6 2 1 255\nabcdef");
    fake("gs", before + "\nexec /bin/cat '" + directory.path().string() + "/picture.ppm'");
  }
};

/// What hides all programs but the fakes.
const std::string only_fakes = "PATH=$PWD/bin:${PATH%%:*} ";

TEST_F(batch_faults, of_figures_end_soon_and_harm_nobody) {
  directory.write("endless.eps",
                  figure_of(to_postscript(random_mesh(1, 20, 20)) + "{showpage} loop\n"));
  directory.write("greedy.eps", plain_figure(3) + "[100 {3000000 array} repeat]\n");
  EXPECT_EQ(run("--time-limit 3 --memory-limit 250 .").status, 1);
  const std::map<std::string, std::string> expected = {
      {"./endless.eps", "WITHHELD: it draws more than one page"},
      {"./greedy.eps", "FAILED: gs: needs too much memory (--memory-limit MB allows more)"}};
  EXPECT_EQ(results(), expected);
  // Before a detour fills files with pages they are counted.
  EXPECT_EQ(run("--detour --no-verify endless.eps").status, 1);
  EXPECT_EQ(results()["endless.eps"],
            "WITHHELD: it draws more than one page; no other way was better");
}

TEST_F(batch_faults, of_programs_never_reach_a_result) {
  directory.write("a.eps", plain_figure(1));
  directory.write("a_r.eps", old_result);
  const auto result_with = [this](const std::string& options) {
    EXPECT_EQ(run("-f --time-limit 2 a.eps " + options, "PATH=$PWD/bin:$PATH ").status, 1);
    EXPECT_EQ(directory.read("a_r.eps"), old_result);
    return results()["a.eps"];
  };
  // An empty file, of which all was said to be well.
  fake("gs", "for a; do case $a in -sOutputFile=*) : >${a#*=};; esac; done");
  EXPECT_TRUE(result_with("--detour").starts_with("WITHHELD: it draws no picture"));
  fake("gs", "exec >&- 2>&-; exec sleep 60");
  EXPECT_EQ(result_with(""),
            "FAILED: gs: takes too long (--time-limit SECONDS allows more); "
            "'a_r.eps' is of an earlier run");

  // A limit of the system holds for the repair, too.
  const outcome limited = run("--keep -f --no-verify a.eps", "ulimit -f 2; ");
  EXPECT_EQ(limited.status, 1);
  EXPECT_NE(limited.out.find("FAILED: cannot write 'a_r.eps'"), std::string::npos) << limited.out;
  EXPECT_EQ(directory.read("a_r.eps"), old_result);
}

TEST_F(batch_faults, of_system_calls_leave_old_or_complete_results) {
  if (!calls_can_fail) GTEST_SKIP() << "no calls can be made to fail";
  directory.write("a.eps", plain_figure(1));
  fake_quick_gs();
  const outcome plain = run("-f a.eps", only_fakes);
  ASSERT_EQ(plain.status, 0);
  const std::string complete = masked(directory.read("a_r.eps"));
  int n_failures = 0;
  for (const auto* function : {"write", "open", "fsync", "fchmod", "rename", "mkdir"}) {
    bool unharmed = false;
    for (int n = 1; !unharmed; ++n) {
      ASSERT_LT(n, 200) << function;
      directory.write("a_r.eps", old_result);
      fs::remove(directory.path() / "t.tsv");
      const outcome result = run("-f a.eps", only_fakes + failing(function, n, ENOSPC));
      const std::string now = masked(directory.read("a_r.eps"));
      EXPECT_TRUE(now == old_result || now == complete) << function << ' ' << n;
      EXPECT_TRUE(told("a.eps", "result") != "written" || now == complete) << function << ' ' << n;
      unharmed = result.status == 0 && result.err == plain.err;
      EXPECT_TRUE(result.status != 0 || now == complete) << function << ' ' << n;
      n_failures += unharmed ? 0 : 1;
    }
  }
  EXPECT_GT(n_failures, 6);
}

TEST_F(batch_faults, of_interrupted_runs_leave_old_or_complete_results) {
  directory.write("a.eps", plain_figure(1) + std::string(1000, '\n'));  // larger: it is the first
  directory.write("b.eps", plain_figure(2));
  // Counts its calls, and from one on blocks.
  fake_quick_gs("cd '" + directory.path().string() +
                "'; read n <calls; echo $((n + 1)) >calls\n"
                "[ $n -lt $free_calls ] || { echo >ready; exec /bin/sleep 1000; }");
  const auto run_with_free_calls = [this](int count, const std::string& meanwhile) {
    directory.write("calls", "0\n");
    directory.write("a_r.eps", old_result);
    directory.write("b_r.eps", old_result);
    return shell("export free_calls=" + std::to_string(count) + "; export " + only_fakes +
                     "; trellion-batch -j1 -f a.eps b.eps & p=$!; " + meanwhile + " wait $p",
                 directory)
        .status;
  };
  ASSERT_EQ(run_with_free_calls(1000, ""), 0);
  const std::string complete = masked(directory.read("a_r.eps"));
  const int n_calls = std::stoi(directory.read("calls"));
  ASSERT_EQ(shell("mkfifo ready", directory).status, 0);
  for (const int count : {0, 1, n_calls / 2 - 1, n_calls / 2, n_calls - 1}) {
    EXPECT_EQ(run_with_free_calls(count, "read x <ready; kill $p;"), 128 + SIGTERM);
    EXPECT_EQ(masked(directory.read("a_r.eps")), count < n_calls / 2 ? old_result : complete)
        << count;
    EXPECT_EQ(directory.read("b_r.eps"), old_result) << count;
  }
}

}  // namespace
}  // namespace trellion::testing
