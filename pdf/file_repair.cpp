#include "pdf/file_repair.h"

#include <sys/stat.h>

#include <string>
#include <system_error>

#include "batch/earlier_result.h"
#include "batch/inputs.h"
#include "batch/placing.h"
#include "pdf/page_check.h"
#include "pdf/refusals.h"
#include "pdf/workplace.h"

namespace trellion::pdf {
namespace {

namespace fs = std::filesystem;

/// What tells that a file is still the same.
struct file_state {
  std::uintmax_t size;
  fs::file_time_type written;

  bool operator==(const file_state&) const = default;
};

file_state state_of(const fs::path& file) {
  return {fs::file_size(file), fs::last_write_time(file)};
}

[[noreturn]] void refuse_to_replace(const fs::path& result) {
  throw run_error("'" + result.string() + "' exists already (-f replaces it)");
}

/// Whether what stands in the place of a result is to give way. Throws run_error when it stays.
bool gives_way(const fs::path& result, const fs::path& input, const pdf_options& options) {
  std::error_code ignored;
  if (!fs::exists(fs::symlink_status(result, ignored))) return false;
  // A name that was chosen for the result says that whatever is there may go.
  const bool is_chosen = !options.output.empty();
  const batch::earlier_result earlier =
      is_chosen ? batch::earlier_result::complete : batch::look_for_result(result, input);
  if (earlier == batch::earlier_result::not_ours) {
    throw run_error("'" + result.string() +
                    "' is no result of ours, and stays (-f with -o replaces it)");
  }
  if (earlier == batch::earlier_result::complete && !options.replace) refuse_to_replace(result);
  return true;
}

fs::file_status looked_at(const fs::path& input) {
  const fs::file_status status = fs::status(input);
  if (!fs::exists(status)) throw run_error("there is no such file");
  if (!fs::is_regular_file(status)) throw run_error("it is no regular file");
  return status;
}

}  // namespace

document_summary repair_file(const fs::path& input, const fs::path& result,
                             const pdf_options& options, const batch::interruption& interrupted,
                             const batch::process_runner& runner) {
  const fs::file_status status = looked_at(input);
  check_kind(input);
  const file_state state = state_of(input);
  if (batch::is_same_place(input, result))
    throw run_error("its result would take its place; it has not been touched");
  const bool replaces = gives_way(result, input, options) || options.replace;

  const fs::path parent = batch::directory_of(result);
  batch::remove_abandoned_directories(parent);
  const workplace place(parent, interrupted);
  const fs::path made = place.path() / "result.pdf";
  const document_summary summary = repair_document(input, made, options.contents);
  if (!options.pdftocairo.empty() && summary.streams_changed > 0) {
    check_pages(input, made, options.pdftocairo, place.path(), runner);
  }
  if (state_of(input) != state) throw run_error("it was changed while it was repaired");
  const bool is_placed =
      batch::place(made, result, static_cast<mode_t>(status.permissions()),
                   replaces ? batch::existing_file::replace : batch::existing_file::keep);
  if (!is_placed) refuse_to_replace(result);
  return summary;
}

}  // namespace trellion::pdf
