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
#include <vector>

#include "batch/descriptors.h"
#include "batch/inputs.h"
#include "batch/options.h"
#include "batch/private_directory.h"
#include "batch/process.h"
#include "batch/progress.h"
#include "batch/repair_job.h"
#include "batch/report_file.h"
#include "batch/supervisor.h"
#include "batch/table.h"
#include "batch/text.h"
#include "batch/worker.h"
#include "files.h"

namespace {

using namespace trellion;
using namespace trellion::batch;
namespace fs = std::filesystem;

/// The order to work in: large files first, so that at the end no core waits for one.
std::vector<std::size_t> largest_first(const std::vector<fs::path>& files) {
  std::vector<std::uintmax_t> sizes;
  for (const fs::path& file : files) {
    std::error_code error;
    const std::uintmax_t size = fs::file_size(file, error);
    sizes.push_back(error ? 0 : size);
  }
  std::vector<std::size_t> order(files.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::stable_sort(order.begin(), order.end(),
                   [&sizes](std::size_t a, std::size_t b) { return sizes[a] > sizes[b]; });
  return order;
}

/// Repairs all files, several at a time. The reports are in the order of the files; those that an
/// interruption left undone say so.
std::vector<file_report> repair_all(const std::vector<fs::path>& files,
                                    const batch_options& options, const interruption& interrupted) {
  const process_runner runner(interrupted, {options.time_limit, options.memory_limit, 0},
                              raise_file_limit());
  const std::vector<std::size_t> order = largest_first(files);
  std::vector<file_report> reports(files.size());
  for (std::size_t i = 0; i < files.size(); ++i) reports[i].file = files[i];

  progress told(files.size(), options.quiet);
  std::atomic<std::size_t> next = 0;
  const auto work = [&] {
    for (std::size_t n; !interrupted.requested() && (n = next++) < order.size();) {
      file_report& report = reports[order[n]];
      report = repair_file(files[order[n]], options, runner);
      told.tell(report);
    }
  };
  {
    std::vector<std::jthread> helpers;
    try {
      while (helpers.size() + 1 < std::min<std::size_t>(options.jobs, files.size())) {
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

/// Clears away what earlier runs left that were killed.
void clean_up_after_others(const std::vector<fs::path>& files) {
  std::set<fs::path> directories;
  for (const fs::path& file : files) directories.insert(directory_of(file));
  for (const fs::path& directory : directories) remove_abandoned_directories(directory);
}

/// Hours of work are not to end without the table on the console: what goes wrong with the report
/// is told. False then.
bool try_to_report(const std::vector<file_report>& reports, output_file& file) {
  try {
    write_report(reports, file);
    return true;
  } catch (const run_error& error) {
    complain(error.what());
    return false;
  }
}

int run(const batch_options& options, const interruption& interrupted) {
  bool complete = true;
  const std::vector<fs::path> files = find_inputs(options.inputs, complete);
  if (files.empty()) throw run_error("there are no figures to repair");
  const std::unique_ptr<output_file> report_file = open_report(options.report, files);

  clean_up_after_others(files);
  const std::vector<file_report> reports = repair_all(files, options, interrupted);

  if (report_file && !try_to_report(reports, *report_file)) complete = false;
  console_output standard_output;
  text_writer console(standard_output);
  write_table(reports, options.show_hairlines, console);
  console.flush();
  const bool all_good = std::ranges::all_of(
      reports, [](const file_report& report) { return is_good(report.result); });
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
