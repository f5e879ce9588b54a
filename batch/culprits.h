#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "settings.h"

namespace trellion::batch {

/// Whether the picture changes when just these groups are joined.
using change_test = std::function<bool(const group_range& joined)>;

/// Which of the groups, numbered from 1 (two at least), change the picture when they are joined, in
/// order, given that all together do. A few among many are found by halving. Empty when it would
/// take more than so many tests.
std::vector<group_range> find_culprits(std::int64_t n_groups, const change_test& changes,
                                       int most_tests);

/// The groups from 1 to n that are not in a range.
std::vector<group_range> all_but(const group_range& range, std::int64_t n_groups);

}  // namespace trellion::batch
