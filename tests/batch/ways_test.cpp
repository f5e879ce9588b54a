#include "batch/ways.h"

#include <gtest/gtest.h>

#include "batch/pdf_support.h"

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
  const std::string in_pdf = has_pdf ? "[detour pdf]" : "";
  EXPECT_EQ(names(options), "[detour -s2][detour -s1]" + in_pdf);

  options.detour = false;
  options.auto_way = true;
  EXPECT_EQ(names(options), "[-s2][-s1]");
  options.tools.gs = "/gs";
  EXPECT_EQ(names(options), "[-s2][-s1]");
  options.tools.pdftops = "/pdftops";
  EXPECT_EQ(names(options), "[-s2][-s1][detour -s2][detour -s1]" + in_pdf);
  EXPECT_EQ(names(options, file_kind::dos_eps), "[detour -s2][detour -s1]" + in_pdf);
  options.merge_limit = 4;
  EXPECT_EQ(names(options), "[-s2][-s1][detour -s2][detour -s1]");
  EXPECT_EQ(names(options, file_kind::pdf), "[pdf]");
}

TEST(ways, come_without_closing_the_mesh_too_where_the_pictures_can_tell) {
  batch_options options;
  options.remove_mesh = true;
  EXPECT_EQ(names(options), "[-s2 -r]");
  options.verify = true;
  EXPECT_EQ(names(options), "[-s2 -r][-s2]");
  EXPECT_EQ(names(options, file_kind::pdf), "[pdf --close][pdf]");
  const repair_way closing = ways_to_try(options, file_kind::pdf).front();
  EXPECT_EQ(closing.more_careful()->name(), "pdf --no-reorder --close");
  EXPECT_FALSE(closing.more_careful()->more_careful());
}

}  // namespace
}  // namespace trellion::testing
