#include <gtest/gtest.h>

#include "support.h"

namespace trellion::testing {
namespace {

TEST(frames, are_numbered_pictures_with_a_script) {
  const scratch_directory directory;
  std::filesystem::create_directories(directory.path() / "out/intermediate");
  directory.write("out/intermediate/script", "left over from an earlier run\n");
  // A box of -500, -499, 20499 and 8500 thousandths: halves go away from zero.
  directory.write("two.eps",
                  "-.5 0.499 m 7 1 l 0.5 8.5 l h f 7 1 m 20.499 -0.499 l 0.5 8.5 l h f\n");
  ASSERT_EQ(shell("trellion-frames two.eps out", directory).status, 0);
  EXPECT_EQ(directory.read("out/intermediate/script"),
            "epstopdf frame00001.eps\nrm frame00001.eps\nepstopdf frame00002.eps\n"
            "rm frame00002.eps\n");
  // The cursors are on the second points, as cleaning leaves them.
  EXPECT_EQ(directory.read("out/intermediate/frame00001.eps"),
            "%!PS-Adobe-3.0 EPSF-1.2\n%%BoundingBox:       -1        0       20        9 \n"
            "0 setlinewidth\n7 1 moveto\n0.5 8.5 lineto -.5 0.499 lineto \nclosepath stroke\n"
            "20.499 -0.499 moveto\n0.5 8.5 lineto 7 1 lineto \nclosepath stroke\n%EOF\n");
  const std::string joined = directory.read("out/intermediate/frame00002.eps");
  EXPECT_NE(joined.find("stroke"), std::string::npos);
  EXPECT_EQ(joined.find("stroke"), joined.rfind("stroke")) << "of one outline";
  EXPECT_EQ(shell("trellion-frames two.eps", directory).status, 2);
}

}  // namespace
}  // namespace trellion::testing
