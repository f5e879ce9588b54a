#pragma once

#include <filesystem>
#include <string_view>

namespace trellion::batch {

/// What stands in the place of a figure's result.
enum class earlier_result {
  none,
  unfinished,  ///< ours, of a run that ended early, or an empty file: as good as none
  complete,
  not_ours,  ///< it is never replaced, nor believed
};

/// Looks at what stands in the place of a result. What is no regular file that can be read is not
/// ours. Throws run_error when the original cannot be read.
earlier_result look_for_result(const std::filesystem::path& place,
                               const std::filesystem::path& original);

/// The same of texts. A result of ours has one processing line more than its original, or is PDF
/// with our mark, or just its original. One is unfinished that ends before anything is drawn, or
/// lacks the last line of its original.
earlier_result judge_result(std::string_view result, std::string_view original);

/// Whether a text is a result of ours, of whatever figure: it has a processing line and goes on
/// behind it, or is PDF with our mark.
bool is_marked(std::string_view text);

/// Whether a file is. It is read as far as its first comments go. What cannot be read is none.
bool is_marked_file(const std::filesystem::path& file);

}  // namespace trellion::batch
