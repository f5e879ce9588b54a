#include <gtest/gtest.h>

#include "support.h"

namespace trellion::testing {
namespace {

const std::string squares = "0 0 m 1 0 l 1 1 l 0 1 l h f 1 0 m 2 0 l 2 1 l 1 1 l h f\n";

class faults : public ::testing::Test {
 protected:
  faults() { directory.write("s.eps", squares); }
  ~faults() override { EXPECT_EQ(directory.read("s.eps"), squares) << "the input was touched"; }

  /// Runs a command and returns what it says on standard error, checking the exit status.
  std::string complaint(const std::string& command) const {
    const outcome result = shell(command, directory);
    EXPECT_EQ(result.status, 2) << result.out;
    return result.err;
  }

  scratch_directory directory;
};

TEST_F(faults, in_opening_files_name_the_file_and_the_reason) {
  EXPECT_EQ(complaint("mkdir d.eps; trellion d.eps"),
            "trellion: cannot read 'd.eps': Is a directory\n");
  EXPECT_EQ(complaint("mkdir s_r.eps; trellion s.eps"),
            "trellion: cannot create 's_r.eps': Is a directory\n");
}

TEST_F(faults, the_input_under_the_repaired_name_is_refused) {
  for (const auto* link : {"ln -s", "ln"}) {
    EXPECT_EQ(complaint(std::string(link) + " s.eps s_r.eps; trellion s.eps; s=$?; "
                                            "rm s_r.eps; exit $s"),
              "trellion: cannot create 's_r.eps': it is the input file itself\n");
  }
}

TEST_F(faults, in_writing_are_told) {
  EXPECT_EQ(complaint("ln -s /dev/full s_r.eps; trellion s.eps"),
            "trellion: cannot write 's_r.eps': No space left on device\n");
  EXPECT_EQ(complaint("trellion s >/dev/full"),
            "trellion: cannot write 'standard output': No space left on device\n");
  EXPECT_EQ(complaint("trellion </dev/null"), "trellion: no file was named: the input has ended\n");
}

TEST_F(faults, a_console_that_goes_away_does_not_stop_the_repair) {
  // More console text than the buffer holds: the first group is under way when it fails.
  std::string many;
  for (int i = 0; i < 2000; ++i) many += squares + "x\n";
  directory.write("many.eps", many);
  shell("trellion many.eps", directory);
  const std::string expected = masked(directory.read("many_r.eps"));
  EXPECT_EQ(complaint("rm many_r.eps; { trellion many.eps; echo $? >&3; } 3>status | head -c 200 "
                      ">/dev/null; exit $(cat status)"),
            "trellion: cannot write 'standard output': Broken pipe\n");
  EXPECT_EQ(masked(directory.read("many_r.eps")), expected);
}

TEST_F(faults, existing_longer_file_of_the_repaired_name_is_replaced) {
  directory.write("s_r.eps", std::string(5000, 'x'));
  EXPECT_EQ(shell("trellion s.eps", directory).status, 0);
  EXPECT_EQ(directory.read("s_r.eps").find('x'), std::string::npos);
}

}  // namespace
}  // namespace trellion::testing
