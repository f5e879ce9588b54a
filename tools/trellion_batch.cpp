// Repairs many files with trellion, each in a child process, and keeps what is good.

#include <algorithm>
#include <atomic>
#include <csignal>
#include <cstdio>
#include <exception>
#include <memory>
#include <numeric>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "batch/inputs.h"
#include "batch/options.h"
#include "batch/private_directory.h"
#include "batch/process.h"
#include "batch/progress.h"
#include "batch/repair_job.h"
#include "batch/table.h"
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
  const process_runner runner(interrupted, options.time_limit);
  const std::vector<std::size_t> order = largest_first(files);
  std::vector<file_report> reports(files.size());
  for (std::size_t i = 0; i < files.size(); ++i) reports[i].file = files[i];

  progress told(files.size(), options.quiet);
  std::atomic<std::size_t> next = 0;
  {
    std::vector<std::jthread> workers;
    for (std::size_t i = 0; i < std::min<std::size_t>(options.jobs, files.size()); ++i) {
      workers.emplace_back([&] {
        for (std::size_t n; !interrupted.requested() && (n = next++) < order.size();) {
          file_report& report = reports[order[n]];
          report = repair_file(files[order[n]], options, runner);
          told.tell(report);
        }
      });
    }
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

/// Opens the report before the work, so that a wrong name does not show after hours.
std::unique_ptr<output_file> open_report(const fs::path& name,
                                         const std::vector<fs::path>& inputs) {
  if (name.empty()) return nullptr;
  for (const fs::path& input : inputs) {
    std::error_code ignored;
    if (fs::equivalent(name, input, ignored)) {
      throw run_error("cannot write the report to '" + name.string() + "': it is an input");
    }
  }
  return std::make_unique<output_file>(name, output_file::mode::replace);
}

int run(const batch_options& options, const interruption& interrupted) {
  bool complete = true;
  const std::vector<fs::path> files = find_inputs(options.inputs, complete);
  if (files.empty()) throw run_error("no EPS files there");
  const std::unique_ptr<output_file> report_file = open_report(options.report, files);

  clean_up_after_others(files);
  const std::vector<file_report> reports = repair_all(files, options, interrupted);

  console_output standard_output;
  text_writer console(standard_output);
  write_table(reports, console);
  console.flush();
  if (report_file) {
    text_writer report(*report_file);
    write_tsv(reports, report);
    report.flush();
    report_file->close();
  }
  const bool all_good = std::ranges::all_of(
      reports, [](const file_report& report) { return is_good(report.result); });
  return complete && all_good ? 0 : 1;
}

}  // namespace

int main(int argc, char* argv[]) {
  std::signal(SIGPIPE, SIG_IGN);
  try {
    const batch_options options = parse_options(argc, argv);
    const interruption interrupted;
    const int status = run(options, interrupted);
    interrupted.end_by_signal();
    return status;
  } catch (const early_exit& end) {
    return end.status;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "trellion-batch: %s\n", error.what());
    return 1;
  }
}
