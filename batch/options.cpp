#include "batch/options.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <cctype>
#include <cstdio>
#include <string_view>
#include <thread>

#include "batch/programs.h"
#include "batch/text.h"

namespace trellion::batch {
namespace {

constexpr const char* description =
    "Repairs many EPS and PDF files, several at a time, and keeps a result only when it is "
    "smaller\n"
    "and shows the same picture. FILE_r.eps is written beside FILE.eps, FILE_r.pdf beside "
    "FILE.pdf;\nno input is changed.";

/// What follows a mistake.
constexpr const char* hint =
    " (for example: trellion-batch --auto FOLDER, or -m6 -s1 FILE.eps; --help tells more)";

constexpr const char* epilogue =
    "Exit status: 0 all good, 1 something failed or was withheld or there was nothing to work on,\n"
    "2 a mistake on the command line or a program is missing.";

[[noreturn]] void refuse(const std::string& why) {
  complain(why);
  throw early_exit{2};
}

constexpr const char* ghostscript = "gs (package ghostscript)";

/// The programs that a detour lacks, with the packages that have them.
std::string missing_for_detours(const programs& tools) {
  std::string names;
  if (!tools.gs) names = ghostscript;
  if (!tools.gs && !tools.pdftops) names += " and ";
  if (!tools.pdftops) names += "pdftops (package poppler-utils)";
  return names;
}

void find_programs(batch_options& options) {
  options.tools = {find_program("gs"), find_program("pdftops"), find_program("pdftocairo")};
  if (options.detour && !options.tools.can_take_detours()) {
    refuse("--detour needs " + missing_for_detours(options.tools) + " in PATH");
  }
}

/// A report is not to take the place of a figure whose name stands where the report's is missing.
void check_report_name(const std::filesystem::path& report) {
  if (report.empty()) return;
  std::string extension = report.extension();
  std::ranges::transform(extension, extension.begin(),
                         [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  constexpr std::array<std::string_view, 5> figures = {".eps", ".epsf", ".epsi", ".ps", ".pdf"};
  if (std::ranges::find(figures, extension) == figures.end()) return;
  refuse("--report '" + report.string() + "' is the name of a figure: name a file for the report");
}

/// "-" stands for one figure that comes and goes by itself.
void check_filter(const batch_options& options) {
  if (std::ranges::find(options.inputs, "-") == options.inputs.end()) return;
  if (options.inputs.size() > 1 || !options.files_from.empty()) refuse("- goes with no other file");
  if (options.dry_run || !options.output_directory.empty()) {
    refuse("- is written to standard output: --dry-run and --output-dir mean nothing");
  }
}

}  // namespace

batch_options parse_options(int argc, const char* const* argv) {
  batch_options options;
  options.jobs = std::max(1U, std::thread::hardware_concurrency());

  CLI::App app(description, "trellion-batch");
  app.footer(epilogue);
  app.get_formatter()->column_width(24);
  app.set_version_flag("--version", "trellion-batch " TRELLION_VERSION);
  app.add_option("FILE|FOLDER", options.inputs,
                 "EPS and PDF files, and folders with such files at any depth; - alone repairs "
                 "standard input to standard output")
      ->type_name("");
  const auto add_number = [&app](const char* name, auto& value, int least, int most,
                                 const char* unit, const char* text) {
    app.add_option(name, value, text)
        ->check(CLI::Range(least, most).description(""))
        ->type_name(unit);
  };
  bool no_verify = false;
  int seconds = static_cast<int>(options.time_limit.count());
  int megabytes = static_cast<int>(options.memory_limit >> 20);

  add_number("-m", options.merge_limit, 0, INT32_MAX, "J",
             "As in trellion: only polygons of J points or fewer, as in -m6");
  add_number("-s", options.min_separators, 1, INT32_MAX, "P",
             "As in trellion: P operators or more between polygons, as in -s1");
  app.add_flag("-r", options.remove_mesh, "As in trellion: close the hairlines between polygons");
  app.add_flag("--auto", options.auto_way, "Try -s2, -s1 and the detour, keep the best result");
  app.add_flag("--detour", options.detour,
               "By way of PDF (Ghostscript, pdftops), joining there or then");
  app.add_flag("-f,--force", options.replace, "Replace existing results of ours");
  app.add_flag("--keep", options.keep_all, "Keep results not smaller, or with nothing joined, too");
  app.add_flag("--verify", options.verify, "Compare the pictures (default if gs is there)");
  app.add_flag("--no-verify", no_verify, "Do not compare the pictures");
  add_number("-j,--jobs", options.jobs, 1, 1024, "N", "Files at a time (default: all cores)");
  add_number("--time-limit", seconds, 1, 1'000'000, "SECONDS",
             "For each program that works on a file (default 300)");
  add_number("--memory-limit", megabytes, 64, 1'000'000, "MB",
             "For each program that works on a file (default 4096)");
  app.add_option("--report", options.report, "Write the table as tab-separated values, too")
      ->type_name("FILE");
  app.add_flag("--hairlines", options.show_hairlines,
               "Show the pixels of hairlines before and after in the table");
  app.add_option("--output-dir", options.output_directory,
                 "Write the results there, under the names of their figures")
      ->type_name("FOLDER");
  app.add_option("--files-from", options.files_from,
                 "Take the files that are named there, one in a line or with NUL after each; - is "
                 "standard input")
      ->type_name("FILE");
  app.add_flag("-n,--dry-run", options.dry_run,
               "Do all the work, but write no result: the table tells what would be");
  app.add_flag("-q,--quiet", options.quiet, "No progress");

  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& end) {
    if (end.get_exit_code() == 0) throw early_exit{app.exit(end)};  // help or version
    refuse(end.what() + std::string(hint));
  }
  options.time_limit = std::chrono::seconds(seconds);
  options.memory_limit = static_cast<std::uint64_t>(megabytes) << 20;
  if (options.inputs.empty() && options.files_from.empty())
    refuse(std::string("no file and no folder is named") + hint);

  if (options.auto_way && options.detour) refuse("--auto and --detour exclude each other");
  if (options.auto_way && options.min_separators) refuse("--auto and -s exclude each other");
  if (options.verify && no_verify) refuse("--verify and --no-verify exclude each other");
  check_report_name(options.report);
  check_filter(options);
  find_programs(options);
  if (!no_verify && options.tools.gs) options.verify = true;
  if (!no_verify && !options.verify) {
    complain(std::string("without ") + ghostscript + " pictures are not compared");
  }
  if (options.auto_way && !options.tools.can_take_detours()) {
    complain("without " + missing_for_detours(options.tools) + " --auto takes no detour");
  }
  if (options.verify && !options.tools.gs) {
    refuse(std::string("--verify needs ") + ghostscript + " in PATH");
  }
  return options;
}

}  // namespace trellion::batch
