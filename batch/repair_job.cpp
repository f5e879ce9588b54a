#include "batch/repair_job.h"

#include <chrono>
#include <cstdint>
#include <exception>
#include <filesystem>
#include <optional>
#include <system_error>
#include <utility>

#include "batch/choice.h"
#include "batch/earlier_result.h"
#include "batch/placing.h"
#include "batch/workshop.h"

namespace trellion::batch {
namespace {

namespace fs = std::filesystem;

/// Whether a result is to be made, given what is in its place.
bool is_to_be_made(earlier_result earlier, const fs::path& place, const batch_options& options) {
  if (earlier == earlier_result::not_ours) {
    const bool is_beside = options.output_directory.empty();
    throw dead_end{verdict::failed, "'" + place.string() + "' is no result of ours, and stays" +
                                        (is_beside ? " (--output-dir gets past it)" : "")};
  }
  return earlier != earlier_result::complete || options.replace;
}

bool is_older(const fs::path& result, const fs::path& input) {
  std::error_code error;
  const auto written = fs::last_write_time(result, error);
  if (error) return false;
  const auto drawn = fs::last_write_time(input, error);
  return !error && written < drawn;
}

/// Numbers of what was thrown away mean nothing to anybody.
void forget_attempt(file_report& report) {
  file_report left;
  left.result = report.result;
  left.reason = std::move(report.reason);
  report = std::move(left);
}

verdict put_in_place(const fs::path& best, const workshop& shop, const batch_options& options) {
  if (!is_unchanged(shop.input())) {
    throw dead_end{verdict::failed, "the figure was changed while it was repaired"};
  }
  if (options.dry_run) return verdict::possible;
  const fs::path& result = shop.result();
  const earlier_result earlier = look_for_result(result, shop.input().file);
  const bool may_replace = is_to_be_made(earlier, result, options);
  if (!may_replace) return verdict::exists;
  const bool placed =
      place(best, result, shop.input().mode,
            earlier == earlier_result::none ? existing_file::keep : existing_file::replace);
  return placed ? verdict::written : verdict::exists;
}

}  // namespace

file_report repair_file(const work_item& item, const batch_options& options,
                        const process_runner& runner) {
  const auto start = std::chrono::steady_clock::now();
  file_report report;
  std::optional<std::int64_t> n_bytes;
  earlier_result earlier = earlier_result::none;
  const auto end_with = [&report](const dead_end& end) {
    report.result = end.result;
    report.reason = end.reason;
  };
  try {
    figure input = look_at(item.file);
    if (input.is_marked) throw dead_end{verdict::skipped, "it is a result of trellion already"};
    if (!item.refusal.empty()) throw dead_end{verdict::failed, item.refusal};
    n_bytes = static_cast<std::int64_t>(input.n_bytes);
    earlier = look_for_result(item.result, item.file);
    if (is_to_be_made(earlier, item.result, options)) {
      workshop shop(std::move(input), item.result, options, runner);
      report = choose_result(
          shop, options, [&](const fs::path& best) { return put_in_place(best, shop, options); });
    } else {
      report.result = verdict::exists;
    }
  } catch (const dead_end& end) {
    end_with(end);
  } catch (const std::exception& error) {
    end_with(dead_end_of(error));
  }
  if (report.result == verdict::exists) {
    report.is_stale = is_older(item.result, item.file);
    report.reason = report.is_stale ? "older than the figure; -f replaces it" : "-f replaces it";
    report.bytes_after = static_cast<std::int64_t>(file_size(item.result));
  }
  if (report.result == verdict::nothing_to_join) forget_attempt(report);
  if (earlier == earlier_result::unfinished && report.result != verdict::written) {
    const std::string there = '\'' + item.result.string() + '\'';
    report.reason += report.result == verdict::possible
                         ? "in place of " + there + ", which is unfinished"
                         : "; " + there + " is unfinished: remove it";
  }
  const bool is_gone = report.result == verdict::written || report.result == verdict::possible;
  if (earlier == earlier_result::complete && options.replace && !is_gone) {
    report.reason += "; '" + item.result.string() + "' is of an earlier run";
  }
  report.file = item.file;
  report.bytes_before = n_bytes;
  report.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  return report;
}

}  // namespace trellion::batch
