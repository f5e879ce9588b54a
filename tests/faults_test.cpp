#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <set>

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

/// What takes the superuser's right to do everything from a command.
std::string as_anyone() {
  constexpr const char* rights = "=-dac_override,-dac_read_search ";
  if (geteuid() != 0) return "";
  return std::string("setpriv --inh-caps") + rights + "--bounding-set" + rights;
}

TEST_F(faults, of_permission_are_told) {
  if (shell(as_anyone() + "true", directory).status != 0) GTEST_SKIP() << "all is permitted here";
  EXPECT_EQ(complaint("echo 1 >u.eps; chmod 0 u.eps; " + as_anyone() + "trellion u.eps"),
            "trellion: cannot open 'u.eps': Permission denied\n");
  EXPECT_EQ(complaint("mkdir w; cp s.eps w; chmod 500 w; " + as_anyone() +
                      "trellion w/s.eps; s=$?;"
                      "chmod 700 w; exit $s"),
            "trellion: cannot create 'w/s_r.eps': Permission denied\n");
}

TEST_F(faults, the_input_under_the_repaired_name_is_refused) {
  const std::string refused = "trellion: cannot create 's_r.eps': it is the input file itself\n";
  for (const std::string link : {"ln -sf", "ln -f"}) {
    EXPECT_EQ(complaint(link + " s.eps s_r.eps; trellion s.eps"), refused);
    if (!calls_can_fail) continue;
    EXPECT_EQ(complaint(failing("fstat", 1, EIO) + "trellion s.eps"),
              "trellion: cannot examine 's.eps': Input/output error\n");
    EXPECT_EQ(complaint(failing("fstat", 2, EIO) + "trellion s.eps"),
              "trellion: cannot examine 's_r.eps': Input/output error\n");
    EXPECT_EQ(complaint(failing("fstat", 3, EIO) + "trellion s.eps"), refused);
  }
}

TEST_F(faults, in_opening_writing_and_asking_are_told) {
  struct fault {
    std::string command;
    std::string said;
  };
  std::vector<fault> all = {
      {"mkdir d.eps; trellion d.eps", "cannot read 'd.eps': Is a directory"},
      {"mkdir s_r.eps; trellion s; s=$?; rmdir s_r.eps; exit $s",
       "cannot create 's_r.eps': Is a directory"},
      {"ln -s /dev/full s_r.eps; trellion s.eps; s=$?; rm s_r.eps; exit $s",
       "cannot write 's_r.eps': No space left on device"},
      {"trellion s >/dev/full", "cannot write 'standard output': No space left on device"},
      {"trellion s >&-", "cannot write 'standard output': Bad file descriptor"},
      {"trellion </dev/null", "no file was named: the input has ended"},
      {"echo s | trellion", "a question was left without an answer: the input has ended"}};
  if (calls_can_fail) {
    all.insert(all.end(), {{failing("open", 1, EMFILE) + "trellion s",
                            "cannot open 's.eps': Too many open files"},
                           {failing("open", 2, EROFS) + "trellion s",
                            "cannot create 's_r.eps': Read-only file system"},
                           {failing("ftruncate", 1, EPERM) + "trellion s",
                            "cannot empty 's_r.eps': Operation not permitted"},
                           {failing("close", 1, EDQUOT) + "trellion s",
                            "cannot write 's_r.eps': Disk quota exceeded"}});
  }
  for (const auto& [command, said] : all) {
    EXPECT_EQ(complaint(command), "trellion: " + said + '\n') << command;
  }
  if (calls_can_fail) {
    EXPECT_EQ(shell(failing("write", 2, EINTR) + "trellion s", directory).status, 0);
  }
}

TEST_F(faults, in_reading_are_told_with_the_status_of_the_console_texts) {
  // The memory of a process cannot be read where nothing is mapped.
  const outcome result = shell("ln -s /proc/self/mem x.eps; trellion x", directory);
  EXPECT_EQ(result.status, 0);
  EXPECT_NE(result.out.find("trellion: iostat error     5 has occurred.\n"), std::string::npos);
  EXPECT_EQ(result.err, "trellion: cannot read 'x.eps': Input/output error\n");
}

TEST_F(faults, limits_of_the_system_are_told) {
  const std::string mesh = to_postscript(random_mesh(1, 200, 100));
  directory.write("mesh.eps", mesh);
  EXPECT_EQ(complaint("ulimit -f 8; trellion mesh.eps -m3"),
            "trellion: cannot write 'mesh_r.eps': File too large\n");
#ifndef __SANITIZE_ADDRESS__  // which takes terabytes of address space
  // Wherever memory runs out, in reading or in merging.
  std::set<int> statuses;
  for (int kilobytes = 8000; kilobytes < 24000; kilobytes += 500) {
    const outcome result =
        shell("ulimit -v " + std::to_string(kilobytes) + "; trellion mesh.eps", directory);
    EXPECT_EQ(result.err, result.status == 0 ? "" : "trellion: 'mesh.eps': not enough memory\n");
    statuses.insert(result.status);
  }
  EXPECT_EQ(statuses, (std::set{0, 2}));
#endif
  EXPECT_EQ(directory.read("mesh.eps"), mesh);
}

TEST_F(faults, of_the_console_or_a_kill_leave_the_repair_or_the_input_whole) {
  // More console text than the buffer or a pipe holds: the run is under way when it fails.
  std::string many;
  for (int i = 0; i < 3000; ++i) many += squares + "x\n";
  directory.write("many.eps", many);
  shell("trellion many.eps", directory);
  const std::string expected = masked(directory.read("many_r.eps"));
  EXPECT_EQ(complaint("rm many_r.eps; { trellion many.eps; echo $? >&3; } 3>status | head -c 200 "
                      ">/dev/null; exit $(cat status)"),
            "trellion: cannot write 'standard output': Broken pipe\n");
  EXPECT_EQ(masked(directory.read("many_r.eps")), expected);

  const outcome killed = shell(
      "mkfifo c; trellion many.eps >c & p=$!; exec 3<c; head -c 500 <&3 >out; kill -9 $p; wait $p",
      directory);
  EXPECT_EQ(killed.status, 128 + SIGKILL);
  EXPECT_NE(directory.read("out").find("Group "), std::string::npos);
  EXPECT_EQ(directory.read("many.eps"), many);
}

TEST_F(faults, a_result_replaces_another_and_is_permitted_to_no_more_people_than_its_input) {
  const auto mode_after = [&](const std::string& commands) {
    const outcome result = shell(commands + " && stat -c %a s_r.eps && rm -f s_r.eps", directory);
    EXPECT_EQ(result.status, 0);
    return result.out.substr(result.out.rfind('\n', result.out.size() - 2) + 1);
  };
  EXPECT_EQ(mode_after("umask 022; chmod 600 s.eps; trellion s"), "600\n");
  EXPECT_EQ(mode_after("umask 022; chmod 4664 s.eps; trellion s"), "644\n");
  EXPECT_EQ(mode_after("umask 022; chmod 640 s.eps; seq 5000 >s_r.eps; trellion s; "
                       "! grep -qx 5000 s_r.eps"),
            "640\n");
  EXPECT_EQ(mode_after("chmod 644 s.eps; echo >s_r.eps; chmod 600 s_r.eps; trellion s"), "600\n");
  if (!calls_can_fail) return;
  EXPECT_EQ(mode_after("umask 022; chmod 600 s.eps; echo >s_r.eps; " + failing("fchmod", 1, EPERM) +
                       "trellion s"),
            "644\n");
}

}  // namespace
}  // namespace trellion::testing
