#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
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
  std::filesystem::path file;
  std::uint64_t n_bytes = 0;
  repair_summary summary;
};

/// Makes what is needed for the work on one figure, in a private directory beside it. What fails
/// throws dead_end or run_error.
class workshop {
 public:
  /// Options and runner must outlive it.
  workshop(figure input, const batch_options& options, const process_runner& runner);

  [[nodiscard]] const figure& input() const { return input_; }

  /// Repairs the figure in a way. Some groups can be left as they stand.
  candidate repair(const repair_way& way, const std::vector<group_range>& left_alone = {});
  /// How the input looks: made once.
  appearance& input_appearance();
  /// How a candidate looks, on the same page.
  appearance appearance_of(const candidate& made);
  /// How both look around a part of the page.
  appearance input_appearance(const page_part& part);
  appearance appearance_of(const candidate& made, const page_part& part);

 private:
  const std::filesystem::path& source_of(const repair_way& way);
  const std::filesystem::path& detour();
  const page_frame& frame();
  appearance framed(const std::filesystem::path& source, const std::filesystem::path& eps,
                    const page_frame& part);

  figure input_;
  const batch_options& options_;
  const process_runner& runner_;
  private_directory directory_;
  drawing_programs programs_;
  int n_repairs_ = 0;
  std::optional<page_frame> frame_;
  std::optional<appearance> appearance_;
  /// Made once for all ways, however it ends.
  std::optional<std::variant<std::filesystem::path, dead_end>> detour_;
};

/// What went wrong, without the names of functions and of our own files.
dead_end dead_end_of(const std::exception& error);

}  // namespace trellion::batch
