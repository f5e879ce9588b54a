#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "batch/drawing.h"
#include "batch/figure.h"
#include "batch/file_report.h"
#include "batch/options.h"
#include "batch/private_directory.h"
#include "batch/process.h"
#include "batch/ways.h"
#include "repair.h"

namespace trellion::batch {

/// A repaired file that may be kept.
struct candidate {
  repair_way way;
  std::filesystem::path file;  ///< not there where a detour was no gain, unless all is kept
  std::uint64_t n_bytes = 0;
  repair_summary summary;        ///< in PDF there are no groups
  bool is_gain = false;          ///< polygons were joined, or PDF made shorter
  std::vector<page_view> pages;  ///< of a PDF file: those that may look different now
};

/// What a detour leads to.
struct detour_files {
  std::filesystem::path pdf;
  std::filesystem::path eps;
};

/// Makes what is needed for the work on one figure, in a private directory. What fails
/// throws dead_end or run_error.
class workshop {
 public:
  /// The result is to go to that place in the end; the private directory is beside it, or where
  /// temporary files are when nothing is to be written. Options and runner must outlive it.
  workshop(figure input, std::filesystem::path result, const batch_options& options,
           const process_runner& runner);

  [[nodiscard]] const figure& input() const { return input_; }
  [[nodiscard]] const std::filesystem::path& result() const { return result_; }

  /// Repairs the figure in a way. Some groups can be left as they stand.
  candidate repair(const repair_way& way, const std::vector<group_range>& left_alone = {});
  /// The pages to look at before a candidate is kept.
  std::vector<page_view> pages_of(const candidate& made);
  /// How the input looks on one of them: made once, as long as it is the same.
  appearance& input_appearance(const page_view& page);
  /// How a candidate looks there.
  appearance appearance_of(const candidate& made, const page_view& page);
  /// How both look around a part of the page.
  appearance input_appearance(const page_part& part);
  appearance appearance_of(const candidate& made, const page_part& part);

 private:
  candidate repair_text(const repair_way& way, const std::filesystem::path& folder,
                        const std::vector<group_range>& left_alone);
  candidate repair_pdf(const repair_way& way, const std::filesystem::path& folder);
  std::string work_on(const std::filesystem::path& source, const std::filesystem::path& folder,
                      std::vector<std::string> arguments);
  const std::filesystem::path& text_source(const repair_way& way);
  const detour_files& detour();
  const page_frame& frame();
  appearance view(const std::filesystem::path& source, std::filesystem::path copy,
                  const page_view& page);
  appearance framed(const std::filesystem::path& source, const std::filesystem::path& eps,
                    const page_frame& part);

  figure input_;
  std::filesystem::path result_;
  const batch_options& options_;
  const process_runner& runner_;
  private_directory directory_;
  drawing_programs programs_;
  int n_repairs_ = 0;
  std::optional<page_frame> frame_;
  std::optional<std::pair<page_view, appearance>> appearance_;
  /// Made once for all ways, however it ends.
  std::optional<std::variant<detour_files, dead_end>> detour_;
};

/// What went wrong, without the names of functions and of our own files.
dead_end dead_end_of(const std::exception& error);

}  // namespace trellion::batch
