#include "options.h"

#include <CLI/CLI.hpp>
#include <cstdio>
#include <thread>

#include "programs.h"

namespace trellion::batch {
namespace {

constexpr const char* description =
    "Repairs many EPS files with trellion, several at a time, and keeps a result only when it is\n"
    "smaller and shows the same picture. FILE_r.eps is written beside FILE.eps; no input is "
    "changed.";

constexpr const char* epilogue =
    "Exit status: 0 all good, 1 something failed or was withheld or there was nothing to work on,\n"
    "2 a mistake on the command line or a program is missing.";

void remark(const std::string& what) { std::fprintf(stderr, "trellion-batch: %s\n", what.c_str()); }

[[noreturn]] void refuse(const std::string& why) {
  remark(why);
  throw early_exit{2};
}

void find_programs(batch_options& options, const char* own_name) {
  const std::optional<std::string> trellion = find_program_beside("trellion", own_name);
  if (!trellion) refuse("trellion is neither beside this program nor in PATH");
  options.tools.trellion = *trellion;
  options.tools.gs = find_program("gs");
  options.tools.pdftops = find_program("pdftops");
  if (options.detour && !(options.tools.gs && options.tools.pdftops)) {
    refuse("--detour needs gs (Ghostscript) and pdftops (poppler-utils) in PATH");
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
                 "EPS files, and folders with EPS files at any depth")
      ->type_name("");
  const auto add_number = [&app](const char* name, auto& value, int least, int most,
                                 const char* unit, const char* text) {
    app.add_option(name, value, text)
        ->check(CLI::Range(least, most).description(""))
        ->type_name(unit);
  };
  bool no_verify = false;
  int seconds = static_cast<int>(options.time_limit.count());

  add_number("-m", options.merge_limit, 0, INT32_MAX, "J",
             "As in trellion: only polygons of J points or fewer");
  add_number("-s", options.min_separators, 1, INT32_MAX, "P",
             "As in trellion: P operators or more between polygons");
  app.add_flag("-r", options.remove_mesh, "As in trellion: close the hairlines between polygons");
  app.add_flag("--auto", options.auto_way, "Try -s2, then -s1, then the detour; keep what is good");
  app.add_flag("--detour", options.detour, "By way of PDF (Ghostscript, pdftops), then -s2 or -s1");
  app.add_flag("-f,--force", options.replace, "Replace existing results");
  app.add_flag("--keep", options.keep_larger,
               "Keep results not smaller, or with nothing joined, too");
  app.add_flag("--verify", options.verify, "Compare the pictures (default if gs is there)");
  app.add_flag("--no-verify", no_verify, "Do not compare the pictures");
  add_number("-j,--jobs", options.jobs, 1, 1024, "N", "Files at a time (default: all cores)");
  add_number("--time-limit", seconds, 1, 1'000'000, "SECONDS",
             "For each program that works on a file (default 300)");
  app.add_option("--report", options.report, "Write the table as tab-separated values, too")
      ->type_name("FILE");
  app.add_flag("-q,--quiet", options.quiet, "No progress");

  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& end) {
    if (end.get_exit_code() == 0) throw early_exit{app.exit(end)};  // help or version
    refuse(std::string(end.what()) + " (--help tells more)");
  }
  options.time_limit = std::chrono::seconds(seconds);
  if (options.inputs.empty()) refuse("no file and no folder is named (--help tells more)");

  if (options.auto_way && options.detour) refuse("--auto and --detour exclude each other");
  if (options.auto_way && options.min_separators) refuse("--auto and -s exclude each other");
  if (options.verify && no_verify) refuse("--verify and --no-verify exclude each other");
  find_programs(options, argv[0]);
  if (!no_verify && options.tools.gs) options.verify = true;
  if (!no_verify && !options.verify) remark("without gs (Ghostscript) pictures are not compared");
  if (options.auto_way && !(options.tools.gs && options.tools.pdftops)) {
    remark("without gs and pdftops --auto takes no detour");
  }
  if (options.verify && !options.tools.gs) refuse("--verify needs gs (Ghostscript) in PATH");
  return options;
}

}  // namespace trellion::batch
