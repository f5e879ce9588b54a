#include "batch/culprits.h"

#include <algorithm>
#include <cassert>

namespace trellion::batch {

std::vector<group_range> find_culprits(std::int64_t n_groups, const change_test& changes,
                                       int most_tests) {
  assert(n_groups > 1);
  std::vector<group_range> suspects = {{1, n_groups}};  // all of them change the picture
  std::vector<group_range> culprits;
  while (!suspects.empty()) {
    const group_range suspect = suspects.back();
    suspects.pop_back();
    if (suspect.first == suspect.last) {
      culprits.push_back(suspect);
      continue;
    }
    const std::int64_t middle = suspect.first + (suspect.last - suspect.first) / 2;
    const group_range left{suspect.first, middle};
    const group_range right{middle + 1, suspect.last};
    most_tests -= 2;
    if (most_tests < 0) return {};
    const bool left_changes = changes(left);
    // Where the left half does not, the right one must, unless it takes both.
    const bool right_changes = changes(right);
    if (left_changes) suspects.push_back(left);
    if (right_changes) suspects.push_back(right);
    if (!left_changes && !right_changes) culprits.push_back(suspect);
  }
  std::ranges::sort(culprits, {}, &group_range::first);
  return culprits;
}

std::vector<group_range> all_but(const group_range& range, std::int64_t n_groups) {
  std::vector<group_range> others;
  if (range.first > 1) others.push_back({1, range.first - 1});
  if (range.last < n_groups) others.push_back({range.last + 1, n_groups});
  return others;
}

}  // namespace trellion::batch
