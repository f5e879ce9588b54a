#include "batch/inputs.h"

#include <gtest/gtest.h>

#include "batch/pdf_support.h"
#include "support.h"

namespace trellion::testing {
namespace {

using namespace batch;
namespace fs = std::filesystem;
using paths = std::vector<fs::path>;

paths files_of(const found_inputs& found) {
  paths files;
  for (const work_item& item : found.figures) files.push_back(item.file);
  return files;
}

TEST(inputs, are_figures_and_no_results_each_once) {
  const scratch_directory directory;
  const working_directory here(directory.path());
  fs::create_directories("d/e");
  fs::create_directory("d/.hidden");
  for (const auto* name :
       {"d/b.eps", "d/a.EPSI", "d/e/c.epsf", "d/lonely_r.eps", "d/x.txt", "d/.hidden/f.eps",
        "d/.g.eps", "n.ps", "d/e/p.Pdf", "d/author.eps", "d/author_r.eps"}) {
    directory.write(name, "%!\n");
  }
  directory.write("d/done.eps", "%!\n%%Processed by trellion version 3\nshowpage\n");
  directory.write("d/e/p_r.Pdf", "");
  directory.write("d/b_r.eps", "%%Processed by trellion version 3\n");
  fs::create_directory_symlink("..", "d/loop");
  fs::create_directory("elsewhere");
  directory.write("elsewhere/e.eps", "");
  fs::create_directory_symlink("../elsewhere", "d/link");
  // A file that is named is taken whatever its name, a folder by the names in it.
  paths expected = {"n.ps",    "d/a.EPSI",   "d/author.eps",  "d/author_r.eps",
                    "d/b.eps", "d/e/c.epsf", "d/lonely_r.eps"};
  if (has_pdf) expected.insert(expected.begin() + 6, "d/e/p.Pdf");
  EXPECT_EQ(files_of(find_inputs({"n.ps", "d", "d/../n.ps", "d/b.eps"})), expected);
  // The result of another is told; what only has such a name is taken.
  const found_inputs found = find_inputs({"d/b.eps", "d/b_r.eps", "d/author_r.eps"});
  EXPECT_EQ(files_of(found), (paths{"d/b.eps", "d/author_r.eps"}));
  EXPECT_EQ(found.results, (paths{"d/b_r.eps"}));
  EXPECT_TRUE(found.complete);

  // Results go where they are wanted.
  EXPECT_EQ(found.figures.front().result, "d/b_r.eps");
  const found_inputs moved = find_inputs({"d/e", "d/b.eps", "elsewhere/e.eps", "d/e/c.epsf"}, "o");
  EXPECT_EQ(moved.figures.front().result, "o/c.epsf");
  EXPECT_EQ(find_inputs({"d"}, "d/e").figures.back().file, "d/lonely_r.eps");
  directory.write("e.eps", "");
  for (const found_inputs& collision :
       {find_inputs({"e.eps"}, "d/.."), find_inputs({"elsewhere/e.eps", "e.eps"}, "o")}) {
    EXPECT_NE(collision.figures.back().refusal, "");
  }
  EXPECT_EQ(find_inputs({"elsewhere/e.eps", "e.eps"}, "o").figures.front().refusal, "");
  // What is refused, or a result that is skipped, takes no place away from a figure.
  for (const auto* there : {"%!\n", "%!\n%%Processed by trellion version 3\nshowpage\n"}) {
    directory.write("elsewhere/e.eps", there);
    EXPECT_EQ(find_inputs({"elsewhere/e.eps", "e.eps"}, "elsewhere").figures.back().refusal, "");
  }

  EXPECT_EQ(names_in("a\r\n\r\nb\nc"), (paths{"a", "b", "c"}));
  EXPECT_EQ(names_in(std::string("a\r\0b", 4)), (paths{"a\r", "b"}));
  EXPECT_EQ(result_path("d/a.b.eps"), "d/a.b_r.eps");
  EXPECT_TRUE(is_same_place("d/e/../b.eps", "./d/b.eps"));
  EXPECT_FALSE(is_same_place("d/b.eps", "d/a.EPSI"));
  fs::create_hard_link("n.ps", "other.ps");
  EXPECT_TRUE(is_same_place("n.ps", "other.ps"));
}

}  // namespace
}  // namespace trellion::testing
