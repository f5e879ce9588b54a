#pragma once

#include <functional>
#include <string>

namespace trellion::pdf::testing {

/// A content stream on a small grid, made by choices: each call gives a number below `n`, which is
/// at most 256.
std::string random_content(const std::function<unsigned(unsigned n)>& choose);

}  // namespace trellion::pdf::testing
