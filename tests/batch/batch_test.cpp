#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <sstream>

#include "batch/detour.h"
#include "support.h"

namespace trellion::testing {
namespace {

namespace fs = std::filesystem;

std::string eps(const std::string& lineto, const std::string& page) {
  return "%!PS-Adobe-3.0 EPSF-3.0\n%%BoundingBox: 0 0 200 200\n%%EndComments\n"
         "/m {moveto} def /l {" +
         lineto + "} def /h {closepath} def /f {fill} def\n" + page + "showpage\n";
}

/// A picture that can be repaired.
std::string plain_picture(unsigned seed) {
  return eps("lineto", "0.6 setgray\n" + to_postscript(random_mesh(seed, 20, 20)));
}

/// A mesh of triangles whose vertices are relative, which the text does not show. Read as absolute
/// ones two triangles share an edge here and there.
std::string relative_picture() {
  std::string page = "0.6 setgray 0.1 0.1 scale\n";
  for (int row = 0, y = 0, height = 80; row < 20; ++row, y += height, height += 2) {
    for (int column = 0, x = 0; column < 20; ++column) {
      const int width = 80 + column / 2 * 4;
      const std::string at = std::to_string(x) + ' ' + std::to_string(y) + " m ";
      const std::string w = std::to_string(width);
      const std::string h = std::to_string(height);
      page += at + w + " 0 l 0 " + h + " l h f\n";
      page += at + w + ' ' + h + " l -" + w + " 0 l h f\n";
      x += width;
    }
  }
  return eps("rlineto", page);
}

class batches : public ::testing::Test {
 protected:
  /// Runs trellion-batch and returns its exit status.
  int run(const std::string& arguments) const {
    return shell("trellion-batch " + arguments, directory).status;
  }
  [[nodiscard]] bool exists(const std::string& name) const {
    return fs::exists(directory.path() / name);
  }
  /// The columns "result" and "way" of a report, by file.
  [[nodiscard]] std::map<std::string, std::string> verdicts(const std::string& report) const {
    std::istringstream lines(directory.read(report));
    std::map<std::string, std::string> result;
    for (std::string file, verdict, way, rest;
         std::getline(lines, file, '\t') && std::getline(lines, verdict, '\t') &&
         std::getline(lines, way, '\t') && std::getline(lines, rest);) {
      result[file] = verdict + ' ' + way;
    }
    return result;
  }
  void expect_no_debris() const {
    for (const auto& entry : fs::recursive_directory_iterator(directory.path())) {
      EXPECT_FALSE(entry.path().filename().string().starts_with(".trellion-batch"));
    }
  }

  scratch_directory directory;
};

TEST_F(batches, keeps_what_is_smaller_and_shows_the_same) {
  fs::create_directory(directory.path() / "in folder");
  const std::string picture = plain_picture(1);
  directory.write("in folder/-a.b.EPS", picture);
  directory.write("none.eps", eps("lineto", ""));
  directory.write("small.eps", eps("lineto", to_postscript(random_mesh(1, 2, 1))));
  EXPECT_EQ(run("--report t.tsv . none.eps"), 0);
  EXPECT_EQ(directory.read("in folder/-a.b.EPS"), picture);
  EXPECT_LT(directory.read("in folder/-a.b_r.EPS").size(), picture.size());
  const std::map<std::string, std::string> expected = {{"file", "result way"},
                                                       {"./in folder/-a.b.EPS", "written -s2"},
                                                       {"./none.eps", "nothing to join -s2"},
                                                       {"./small.eps", "not kept -s2"}};
  EXPECT_EQ(verdicts("t.tsv"), expected);

  // A result is neither an input nor replaced, unless that is asked for.
  directory.write("in folder/-a.b_r.EPS", "mine");
  EXPECT_EQ(run("--keep --report t.tsv ."), 0);
  EXPECT_EQ(verdicts("t.tsv")["./in folder/-a.b.EPS"], "exists ");
  EXPECT_EQ(directory.read("in folder/-a.b_r.EPS"), "mine");
  EXPECT_TRUE(exists("small_r.eps"));
  EXPECT_EQ(run("-f ."), 0);
  EXPECT_NE(directory.read("in folder/-a.b_r.EPS"), "mine");
  expect_no_debris();
}

TEST_F(batches, withholds_another_picture_and_finds_the_way_round) {
  const std::string picture = relative_picture();
  directory.write("a.eps", picture);
  EXPECT_EQ(run("--report t.tsv a.eps"), 1);
  EXPECT_EQ(verdicts("t.tsv")["a.eps"], "WITHHELD -s2");
  EXPECT_FALSE(exists("a_r.eps"));
  EXPECT_EQ(run("--no-verify a.eps"), 0);
  EXPECT_EQ(run("--auto -f --report t.tsv a.eps"), 0);
  EXPECT_TRUE(verdicts("t.tsv")["a.eps"].starts_with("written detour "));
  EXPECT_LT(directory.read("a_r.eps").size(), picture.size());
  EXPECT_EQ(directory.read("a.eps"), picture);
  expect_no_debris();
}

TEST_F(batches, tells_failures_and_goes_on) {
  directory.write("good.eps", plain_picture(2));
  directory.write("twins.eps", "0 0 m 1 0 l 1 1 l h f 0 0 m 1 0 l 1 1 l h f\n");
  directory.write("broken.eps", plain_picture(3) + "(\n");
  fs::create_directory(directory.path() / "d");
  directory.write("d/endless.eps", plain_picture(4) + "{} loop\n");
  EXPECT_EQ(run("--time-limit 4 --report t.tsv missing.eps . --keep"), 1);
  const std::map<std::string, std::string> expected = {
      {"file", "result way"},        {"missing.eps", "FAILED "},
      {"./twins.eps", "FAILED -s2"}, {"./broken.eps", "WITHHELD -s2"},
      {"./good.eps", "written -s2"}, {"./d/endless.eps", "WITHHELD -s2"}};
  EXPECT_EQ(verdicts("t.tsv"), expected);
  expect_no_debris();

  // A limit of the system holds for the programs, too, whoever runs them.
  const std::string limited = "ulimit -f 2; trellion-batch --keep -f --no-verify good.eps";
  EXPECT_NE(shell(limited, directory).out.find("FAILED: trellion: cannot write 'good_r.eps'"),
            std::string::npos);
  EXPECT_EQ(run("--report good.eps good.eps"), 1);
  EXPECT_EQ(directory.read("good.eps"), plain_picture(2));
  EXPECT_EQ(run("--auto -s1 good.eps"), 2);
  EXPECT_EQ(run("-j0 good.eps"), 2);
  EXPECT_EQ(run(""), 2);
}

TEST_F(batches, never_take_a_result_for_an_input_or_an_input_for_a_result) {
  directory.write("a.eps", plain_picture(1));
  ASSERT_EQ(run("a.eps"), 0);
  directory.write("a_r.eps", plain_picture(2));
  EXPECT_EQ(run("-f --report t.tsv a_r.eps ./a.eps a.eps"), 0);
  EXPECT_EQ(verdicts("t.tsv").size(), 2U);  // with the headings
  EXPECT_FALSE(exists("a_r_r.eps"));
  EXPECT_EQ(run("--report a_r.eps a.eps"), 1);
  EXPECT_NE(directory.read("a_r.eps"), "");
}

TEST_F(batches, do_not_depend_on_how_programs_behave) {
  const auto fake_gs = [this](const std::string& script) {
    directory.write("gs", "#!/bin/sh\n" + script + "\n");
    fs::permissions(directory.path() / "gs", fs::perms::owner_all);
  };
  const auto run_with_fake = [this](const std::string& arguments) {
    shell("PATH=.:$PATH; trellion-batch --time-limit 2 --report t.tsv " + arguments, directory);
    return verdicts("t.tsv")["a.eps"];
  };
  directory.write("a.eps", plain_picture(1));
  fake_gs("exec >&- 2>&-; exec sleep 60");
  EXPECT_EQ(run_with_fake("a.eps"), "WITHHELD -s2");
  fake_gs("sleep 60; echo");
  EXPECT_EQ(run_with_fake("a.eps"), "WITHHELD -s2");
  fake_gs("yes | tr -d '\\n'");
  EXPECT_EQ(run_with_fake("a.eps"), "WITHHELD -s2");
  fake_gs("for a; do case $a in -sOutputFile=*) : >${a#*=};; esac; done");
  EXPECT_EQ(run_with_fake("a.eps"), "WITHHELD -s2");
  EXPECT_EQ(run_with_fake("--detour a.eps"), "FAILED detour -s1");
  EXPECT_EQ(run_with_fake("--no-verify a.eps"), "written -s2");
  expect_no_debris();
}

TEST_F(batches, interrupted_leaves_old_or_complete_results) {
  for (unsigned i = 0; i < 6; ++i) {
    directory.write("f" + std::to_string(i) + ".eps", plain_picture(i));
  }
  ASSERT_EQ(run("."), 0);
  std::map<std::string, std::string> complete;
  for (const auto& entry : fs::directory_iterator(directory.path())) {
    const std::string name = entry.path().filename();
    if (name.ends_with("_r.eps")) complete[name] = masked(directory.read(name));
  }
  EXPECT_EQ(complete.size(), 6U);
  for (const char* const delay : {"0.01", "0.1", "0.2", "0.3", "0.4", "0.6"}) {
    for (const auto& [name, text] : complete) directory.write(name, "old");
    shell(std::string("trellion-batch -f . & sleep ") + delay + "; kill $!; wait $!", directory);
    for (const auto& [name, text] : complete) {
      const std::string now = masked(directory.read(name));
      EXPECT_TRUE(now == "old" || now == text) << name << " after " << delay;
    }
    expect_no_debris();
  }
}

}  // namespace
}  // namespace trellion::testing
