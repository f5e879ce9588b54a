#pragma once

#include <string_view>

namespace trellion::pdf {

/// The comment in the header of every result that is no copy. It tells results from the documents
/// of others; readers skip it.
inline constexpr std::string_view result_mark = "%Processed by trellion-pdf";

}  // namespace trellion::pdf
