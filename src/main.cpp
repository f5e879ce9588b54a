#include <algorithm>
#include <csignal>
#include <cstdio>
#include <iostream>
#include <new>
#include <span>
#include <string>

#include "files.h"
#include "param.h"
#include "postscript_path_queue.h"
#include "repair.h"
#include "report.h"
#include "settings.h"

namespace {

using namespace trellion;

constexpr int failure_status = 2;

/// Sets the settings as soon as they are known.
void run(std::span<const char* const> arguments, run_settings& settings,
         console_output& standard_output, text_writer& console) {
  write_banner(console);
  settings = obtain_settings(arguments, std::cin, console);
  settings.compare_areas = false;  // nobody asks

  input_file input(settings.filename);
  output_file repaired_file(settings.repaired_filename, input);
  const std::int32_t start_clock = milliseconds_of_day();
  text_writer repaired(repaired_file);
  standard_output.keep_going();
  try {
    repair(settings, input, input.expected_size(), console, repaired);
  } catch (...) {
    repaired.flush();  // what there is of the result stands
    throw;
  }
  repaired.flush();
  repaired_file.close();

  console.put(nl).put("Repaired filename is '").put(settings.repaired_filename).put('\'').put(nl);
  report_time(start_clock, milliseconds_of_day(), console);
  report_reduction(file_size(settings.filename), file_size(settings.repaired_filename), console);
}

}  // namespace

int main(int argc, char* argv[]) {
  // Writing to a closed pipe, or past the file size limit, is to fail, not to kill.
  std::signal(SIGPIPE, SIG_IGN);
  std::signal(SIGXFSZ, SIG_IGN);

  console_output standard_output;
  text_writer console(standard_output);
  run_settings settings;
  std::string complaint;
  int status = 0;
  const auto fail = [&](const std::string& text) {
    complaint = text;
    status = failure_status;
  };
  try {
    run({argv + std::min(argc, 1), argv + argc}, settings, standard_output, console);
  } catch (const early_end&) {
    // What there is to say is on the console, and the status of what is said there is 0.
  } catch (const read_failure& error) {
    complaint = error.what();  // on the console, too, but without the file's name
  } catch (const coordinate_error& error) {
    fail("'" + settings.filename + "': " + error.what());
  } catch (const std::bad_alloc&) {
    fail("'" + settings.filename + "': not enough memory");
  } catch (const std::exception& error) {
    fail(error.what());
  }
  standard_output.keep_going();
  console.flush();
  if (standard_output.failure() != 0) {
    status = failure_status;
    if (complaint.empty()) {
      complaint = system_failure("write", "standard output", standard_output.failure()).what();
    }
  }
  if (!complaint.empty()) std::fprintf(stderr, "trellion: %s\n", complaint.c_str());
  return status;
}
