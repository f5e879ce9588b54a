#include "batch/ways.h"

#include <gtest/gtest.h>

namespace trellion::testing {
namespace {

using namespace batch;

std::string names(const batch_options& options, file_kind kind = file_kind::eps) {
  std::string all;
  for (const repair_way& way : ways_to_try(options, kind)) all += '[' + way.name() + ']';
  return all;
}

TEST(ways, are_those_that_the_options_ask_for) {
  batch_options options;
  EXPECT_EQ(names(options), "[-s2]");
  options.min_separators = 3;
  EXPECT_EQ(names(options), "[-s3]");
  options.detour = true;
  EXPECT_EQ(names(options), "[detour -s3]");
  options.min_separators.reset();
  EXPECT_EQ(names(options), "[detour -s2][detour -s1]");

  options.detour = false;
  options.auto_way = true;
  EXPECT_EQ(names(options), "[-s2][-s1]");
  options.tools.gs = "/gs";
  EXPECT_EQ(names(options), "[-s2][-s1]");
  options.tools.pdftops = "/pdftops";
  EXPECT_EQ(names(options), "[-s2][-s1][detour -s2][detour -s1]");
  EXPECT_EQ(names(options, file_kind::dos_eps), "[detour -s2][detour -s1]");
}

TEST(ways, come_without_closing_the_mesh_too_where_the_pictures_can_tell) {
  batch_options options;
  options.remove_mesh = true;
  EXPECT_EQ(names(options), "[-s2 -r]");
  options.verify = true;
  EXPECT_EQ(names(options), "[-s2 -r][-s2]");
}

}  // namespace
}  // namespace trellion::testing
