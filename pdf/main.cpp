// Repairs PDF files, one after the other.

#include <array>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <exception>
#include <new>
#include <string>
#include <system_error>
#include <vector>

#include "batch/descriptors.h"
#include "batch/inputs.h"
#include "batch/interruption.h"
#include "batch/process.h"
#include "batch/supervisor.h"
#include "batch/text.h"
#include "files.h"
#include "pdf/file_repair.h"
#include "pdf/options.h"

namespace {

using namespace trellion;
using namespace trellion::pdf;
namespace fs = std::filesystem;

/// What a program that draws a page may use.
constexpr batch::child_limits drawing_limits{std::chrono::minutes(5), std::uint64_t{4} << 30,
                                             std::uint64_t{512} << 20};

std::string reason_of(const std::exception& error) {
  const auto* of_system = dynamic_cast<const std::system_error*>(&error);
  if (of_system != nullptr) return of_system->code().message();
  if (dynamic_cast<const std::bad_alloc*>(&error) != nullptr) return "not enough memory";
  return error.what();
}

/// The line that tells of a result.
std::string line_for(const fs::path& input, const fs::path& result, const document_summary& summary,
                     double seconds) {
  constexpr double kilo = 1000;
  std::array<char, 160> numbers{};
  std::snprintf(
      numbers.data(), numbers.size(), ": %lld -> %lld polygons, %.1f -> %.1f kB, %.2f s, ",
      static_cast<long long>(summary.polygons_read), static_cast<long long>(summary.polygons_left),
      static_cast<double>(summary.bytes_read) / kilo,
      static_cast<double>(summary.bytes_written) / kilo, seconds);
  const bool is_copy = summary.streams_changed == 0;
  return batch::printable(input.string()) + numbers.data() + batch::printable(result.string()) +
         (is_copy ? " (a copy: nothing to gain)\n" : "\n");
}

/// The files to repair. Folders are none, and the result of another is left out.
std::vector<fs::path> files_of(const pdf_options& options, bool& complete) {
  std::vector<fs::path> names;
  for (const fs::path& name : options.inputs) {
    std::error_code ignored;
    if (fs::is_directory(name, ignored)) {
      complain("'" + name.string() + "': it is a folder");
      complete = false;
    } else {
      names.push_back(name);
    }
  }
  std::vector<fs::path> files;
  for (const batch::work_item& item : batch::find_inputs(names).figures) files.push_back(item.file);
  return files;
}

int run(const pdf_options& options, const batch::interruption& interrupted) {
  bool complete = true;
  const batch::process_runner runner(interrupted, drawing_limits);
  console_output console;
  console.keep_going();
  for (const fs::path& input : files_of(options, complete)) {
    if (interrupted.requested()) return 1;
    const fs::path result = options.output.empty() ? batch::result_path(input) : options.output;
    const auto start = std::chrono::steady_clock::now();
    try {
      const document_summary summary = repair_file(input, result, options, interrupted, runner);
      const std::chrono::duration<double> spent = std::chrono::steady_clock::now() - start;
      console.write(line_for(input, result, summary, spent.count()));
    } catch (const std::exception& error) {
      complain("'" + input.string() + "': " + reason_of(error));
      complete = false;
    }
  }
  if (console.failure() != 0) {
    complain(system_failure("write", "standard output", console.failure()).what());
    complete = false;
  }
  return complete ? 0 : 1;
}

}  // namespace

int main(int argc, char* argv[]) {
  batch::supervise_if_asked(argc, argv);
  batch::open_standard_streams();
  // Writing to a closed pipe, or past the file size limit, is to fail, not to kill. How children
  // end is to be known, even when we were started by someone who does not care.
  std::signal(SIGPIPE, SIG_IGN);
  std::signal(SIGXFSZ, SIG_IGN);
  std::signal(SIGCHLD, SIG_DFL);
  try {
    const pdf_options options = parse_options(argc, argv);
    const batch::interruption interrupted;
    const int status = run(options, interrupted);
    interrupted.end_by_signal();
    return status;
  } catch (const early_exit& end) {
    return end.status;
  } catch (const std::exception& error) {
    complain(error.what());
    return 1;
  }
}
