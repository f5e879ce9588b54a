#include "batch/inputs.h"

#include <gtest/gtest.h>

#include "batch/pdf_support.h"
#include "support.h"

namespace trellion::testing {
namespace {

using namespace batch;
namespace fs = std::filesystem;
using paths = std::vector<fs::path>;

TEST(inputs, are_figures_and_no_results_each_once) {
  const scratch_directory directory;
  const working_directory here(directory.path());
  fs::create_directories("d/e");
  fs::create_directory("d/.hidden");
  for (const auto* name :
       {"d/b.eps", "d/b_r.eps", "d/a.EPSI", "d/e/c.epsf", "d/lonely_r.eps", "d/x.txt",
        "d/.hidden/f.eps", "d/.g.eps", "n.ps", "d/e/p.Pdf", "d/e/p_r.Pdf"}) {
    directory.write(name, "");
  }
  fs::create_directory_symlink("..", "d/loop");
  fs::create_directory("elsewhere");
  directory.write("elsewhere/e.eps", "");
  fs::create_directory_symlink("../elsewhere", "d/link");
  bool complete = true;
  // A file that is named is taken whatever its name, a folder by the names in it.
  paths expected = {"n.ps", "d/a.EPSI", "d/b.eps", "d/e/c.epsf", "d/lonely_r.eps"};
  if (has_pdf) expected.insert(expected.begin() + 4, "d/e/p.Pdf");
  EXPECT_EQ(find_inputs({"n.ps", "d", "d/../n.ps", "d/b.eps"}, complete), expected);
  EXPECT_EQ(find_inputs({"d/b.eps", "d/b_r.eps"}, complete), (paths{"d/b.eps"}));
  EXPECT_TRUE(complete);

  EXPECT_EQ(result_path("d/a.b.eps"), "d/a.b_r.eps");
  EXPECT_TRUE(is_same_place("d/e/../b.eps", "./d/b.eps"));
  EXPECT_FALSE(is_same_place("d/b.eps", "d/a.EPSI"));
  fs::create_hard_link("n.ps", "other.ps");
  EXPECT_TRUE(is_same_place("n.ps", "other.ps"));
}

}  // namespace
}  // namespace trellion::testing
