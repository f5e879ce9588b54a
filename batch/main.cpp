// Repairs many files with trellion, in child processes, and keeps what is good.

#include <algorithm>
#include <atomic>
#include <csignal>
#include <cstdio>
#include <exception>
#include <memory>
#include <numeric>
#include <set>
#include <span>
#include <string>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include "batch/descriptors.h"
#include "batch/filter.h"
#include "batch/inputs.h"
#include "batch/options.h"
#include "batch/private_directory.h"
#include "batch/process.h"
#include "batch/progress.h"
#include "batch/repair_job.h"
#include "batch/report_file.h"
#include "batch/standard_input.h"
#include "batch/supervisor.h"
#include "batch/table.h"
#include "batch/text.h"
#include "batch/whole_file.h"
#include "batch/worker.h"
#include "files.h"

namespace {

using namespace trellion;
using namespace trellion::batch;
namespace fs = std::filesystem;

/// The order to work in: large files first, so that at the end no core waits for one.
std::vector<std::size_t> largest_first(const std::vector<work_item>& figures) {
  std::vector<std::uintmax_t> sizes;
  for (const work_item& item : figures) {
    std::error_code error;
    const std::uintmax_t size = fs::file_size(item.file, error);
    sizes.push_back(error ? 0 : size);
  }
  std::vector<std::size_t> order(figures.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::stable_sort(order.begin(), order.end(),
                   [&sizes](std::size_t a, std::size_t b) { return sizes[a] > sizes[b]; });
  return order;
}

/// Repairs all files, several at a time. The reports are in the order of the files; those that an
/// interruption left undone say so.
std::vector<file_report> repair_all(const std::vector<work_item>& figures,
                                    const batch_options& options, const process_runner& runner,
                                    const interruption& interrupted) {
  const std::vector<std::size_t> order = largest_first(figures);
  std::vector<file_report> reports(figures.size());
  for (std::size_t i = 0; i < figures.size(); ++i) reports[i].file = figures[i].file;

  progress told(figures.size(), options.quiet);
  std::atomic<std::size_t> next = 0;
  const auto work = [&] {
    for (std::size_t n; !interrupted.requested() && (n = next++) < order.size();) {
      file_report& report = reports[order[n]];
      report = repair_file(figures[order[n]], options, runner);
      told.tell(report);
    }
  };
  {
    std::vector<std::jthread> helpers;
    try {
      while (helpers.size() + 1 < std::min<std::size_t>(options.jobs, figures.size())) {
        helpers.emplace_back(work);
      }
    } catch (const std::system_error&) {
      // The system allows no more threads: those that there are do it.
    }
    work();
  }
  told.end();
  return reports;
}

std::vector<fs::path> names_of(const batch_options& options, const interruption& interrupted) {
  std::vector<fs::path> names = options.inputs;
  if (!options.files_from.empty()) {
    const std::string list = options.files_from == "-" ? read_standard_input(interrupted)
                                                       : read_whole(options.files_from);
    for (fs::path& name : names_in(list)) names.push_back(std::move(name));
  }
  return names;
}

/// Makes the folders in the output directory, and clears away what earlier runs left that were
/// killed.
void prepare_directories(const std::vector<work_item>& figures, bool may_create) {
  std::set<fs::path> directories;
  for (const work_item& item : figures) directories.insert(directory_of(item.result));
  for (const fs::path& directory : directories) {
    std::error_code error;
    if (may_create) fs::create_directories(directory, error);
    if (error) throw system_failure("create", directory, error.value());
    remove_abandoned_directories(directory);
  }
}

/// Adds the files that were named and need no work.
void add_skipped(const std::vector<fs::path>& results, std::vector<file_report>& reports) {
  for (const fs::path& file : results) {
    file_report& report = reports.emplace_back();
    report.file = file;
    report.result = verdict::skipped;
    report.reason = "it is the result of another figure";
  }
}

/// Hours of work are not to end without the table on the console: what goes wrong with the report
/// is told. False then.
bool try_to_report(const std::vector<file_report>& reports, const report_file& file) {
  try {
    write_report(reports, file);
    return true;
  } catch (const run_error& error) {
    complain(error.what());
    return false;
  }
}

int run(const batch_options& options, const interruption& interrupted) {
  const process_runner runner(interrupted, {options.time_limit, options.memory_limit, 0},
                              raise_file_limit());
  if (options.is_filter()) return run_filter(options, runner, interrupted);
  const found_inputs found = find_inputs(names_of(options, interrupted), options.output_directory);
  const std::vector<work_item>& figures = found.figures;
  if (figures.empty()) throw run_error("there are no figures to repair");
  const std::unique_ptr<report_file> report = open_report(options.report, figures);

  if (!options.dry_run) prepare_directories(figures, !options.output_directory.empty());
  std::vector<file_report> reports = repair_all(figures, options, runner, interrupted);
  add_skipped(found.results, reports);
  if (report) take_over(*report, reports);

  bool complete = found.complete;
  if (report && !try_to_report(reports, *report)) complete = false;
  console_output standard_output;
  text_writer console(standard_output);
  write_table(reports, options.show_hairlines, console);
  console.flush();
  const bool all_good =
      std::ranges::all_of(reports, [](const file_report& each) { return is_good(each.result); });
  return complete && all_good ? 0 : 1;
}

}  // namespace

int main(int argc, char* argv[]) {
  supervise_if_asked(argc, argv);
  open_standard_streams();
  // Writing to a closed pipe, or past the file size limit, is to fail, not to kill. How children
  // end is to be known, even when we were started by someone who does not care.
  std::signal(SIGPIPE, SIG_IGN);
  std::signal(SIGXFSZ, SIG_IGN);
  std::signal(SIGCHLD, SIG_DFL);
  const std::span<char* const> arguments(argv + std::min(argc, 1), argv + argc);
  if (is_worker(arguments)) return run_worker(arguments);
  try {
    const batch_options options = parse_options(argc, argv);
    const interruption interrupted;
    int status = 1;
    try {
      status = run(options, interrupted);
    } catch (const std::exception& error) {
      complain(error.what());
    }
    interrupted.end_by_signal();
    return status;
  } catch (const early_exit& end) {
    return end.status;
  } catch (const std::exception& error) {
    complain(error.what());
    return 1;
  }
}
