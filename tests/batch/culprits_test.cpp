#include "batch/culprits.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <functional>
#include <random>
#include <set>

namespace trellion::testing {
namespace {

using batch::all_but;
using batch::find_culprits;

/// A figure in which some groups change the picture whenever they are joined.
class suspicious_figure {
 public:
  explicit suspicious_figure(const std::set<std::int64_t>& guilty) : guilty_(guilty) {}

  bool operator()(const group_range& joined) {
    ++n_tests;
    const auto next = guilty_.lower_bound(joined.first);
    return next != guilty_.end() && *next <= joined.last;
  }

  int n_tests = 0;

 private:
  std::set<std::int64_t> guilty_;
};

TEST(culprits, are_found_among_many_in_a_few_tests) {
  std::mt19937 random(1);
  for (int round = 0; round < 200; ++round) {
    const auto n_groups = static_cast<std::int64_t>(1 + random() % 1000);
    std::set<std::int64_t> guilty;
    while (guilty.size() < 1 + random() % 3) {
      guilty.insert(static_cast<std::int64_t>(1 + random() % static_cast<unsigned>(n_groups)));
      if (std::ssize(guilty) == n_groups) break;
    }
    suspicious_figure figure(guilty);
    const auto found = find_culprits(n_groups, std::ref(figure), 100);
    EXPECT_TRUE(std::ranges::equal(found, guilty, [](const group_range& range, std::int64_t group) {
      return range == group_range{group, group};
    }));
    // Two for each time that a thousand can be halved.
    EXPECT_LE(figure.n_tests, 20 * std::ssize(guilty));
  }
}

TEST(culprits, that_are_too_many_or_only_act_together_are_left_at_large_or_taken_together) {
  std::set<std::int64_t> all;
  for (std::int64_t group = 1; group <= 1000; ++group) all.insert(group);
  for (const int most : {0, 1, 7, 48}) {
    suspicious_figure figure(all);
    EXPECT_TRUE(find_culprits(1000, std::ref(figure), most).empty());
    EXPECT_LE(figure.n_tests, most);
  }
  const auto third_and_sixth = [](const group_range& joined) {
    return joined.first <= 3 && joined.last >= 6;
  };
  const auto found = find_culprits(8, third_and_sixth, 48);
  ASSERT_EQ(found.size(), 1U);
  EXPECT_TRUE(third_and_sixth(found.front()));
}

TEST(culprits, are_joined_alone_by_leaving_all_others) {
  for (const group_range range : {group_range{1, 5}, {1, 1}, {2, 4}, {5, 5}}) {
    std::vector<int> times(5, 0);
    const auto count = [&](const group_range& part) {
      for (std::int64_t n = part.first; n <= part.last; ++n)
        ++times[static_cast<std::size_t>(n - 1)];
    };
    count(range);
    for (const group_range& part : all_but(range, 5)) count(part);
    EXPECT_EQ(times, std::vector<int>(5, 1));
  }
}

}  // namespace
}  // namespace trellion::testing
