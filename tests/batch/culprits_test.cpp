#include "batch/culprits.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace trellion::testing {
namespace {

using namespace batch;
using ranges = std::vector<std::pair<std::int64_t, std::int64_t>>;

ranges plain(const std::vector<group_range>& all) {
  ranges result;
  for (const group_range& range : all) result.emplace_back(range.first, range.last);
  return result;
}

TEST(culprits, are_found_by_halving) {
  // Some change the picture by themselves; 7 and 12 do only together.
  const auto found = [](const std::vector<std::int64_t>& guilty, int most_tests) {
    const auto changes = [&](const group_range& joined) {
      const auto has = [&](std::int64_t n) { return joined.first <= n && n <= joined.last; };
      return std::ranges::any_of(guilty, has) || (has(7) && has(12));
    };
    return plain(find_culprits(16, changes, most_tests));
  };
  EXPECT_EQ(found({3}, 8), (ranges{{3, 3}}));
  EXPECT_EQ(found({3}, 7), ranges());
  EXPECT_EQ(found({16, 1}, 14), (ranges{{1, 1}, {16, 16}}));
  EXPECT_EQ(found({}, 8), (ranges{{1, 16}}));
}

TEST(culprits, are_alone_where_all_others_are_left) {
  EXPECT_EQ(plain(all_but({1, 2}, 9)), (ranges{{3, 9}}));
  EXPECT_EQ(plain(all_but({4, 5}, 9)), (ranges{{1, 3}, {6, 9}}));
  EXPECT_EQ(plain(all_but({9, 9}, 9)), (ranges{{1, 8}}));
}

}  // namespace
}  // namespace trellion::testing
