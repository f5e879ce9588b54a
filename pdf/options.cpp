#include "pdf/options.h"

#include <CLI/CLI.hpp>
#include <charconv>
#include <cstdio>
#include <optional>

#include "batch/programs.h"
#include "batch/text.h"

namespace trellion::pdf {
namespace {

constexpr const char* description =
    "Joins the polygons of figures in PDF files. FILE_r.pdf is written beside FILE.pdf; no input "
    "is\n"
    "changed, and everything but the drawn polygons stays as it is.";

constexpr const char* epilogue =
    "Exit status: 0 all results are written, 1 one is not, 2 a mistake on the command line or a\n"
    "program is missing.";

constexpr const char* without_width = "true";  // as a flag has it
constexpr double max_close_width = 2;

[[noreturn]] void refuse(const std::string& why) {
  complain(why);
  throw early_exit{2};
}

/// All of the text as a number.
std::optional<double> number_in(const std::string& text) {
  double value = 0;
  const char* const end = text.data() + text.size();
  const auto [rest, error] = std::from_chars(text.data(), end, value);
  return error == std::errc() && rest == end ? std::optional(value) : std::nullopt;
}

void set_closing(const std::string& value, content_settings& settings) {
  if (value == without_width) {
    settings.close = closing::under;
    return;
  }
  const std::optional<double> width = number_in(value);
  if (!width || !(*width > 0) || *width > max_close_width) {
    refuse("--close: '" + value + "' is no width in points, above 0 and at most 2");
  }
  settings.close = closing::stroke;
  settings.close_width = *width;
}

void set_precision(const std::string& value, content_settings& settings) {
  constexpr double least = 1e-8;  // more than nine decimals are kept of no number
  const std::optional<double> precision = number_in(value);
  if (!precision || !(*precision >= least) || *precision > 1) {
    refuse("--precision: '" + value + "' is no number of points from 0.00000001 to 1");
  }
  settings.precision = *precision;
}

}  // namespace

pdf_options parse_options(int argc, const char* const* argv) {
  pdf_options options;
  CLI::App app(description, "trellion-pdf");
  app.footer(epilogue);
  app.get_formatter()->column_width(24);
  app.set_version_flag("--version", "trellion-pdf " TRELLION_VERSION);
  app.add_option("FILE", options.inputs, "PDF files")->type_name("");
  app.add_option("-o", options.output, "The result of the one input")->type_name("FILE");
  std::string close;
  // A flag: what follows it is a file, not its width.
  app.add_flag("--close", close,
               "Close the hairlines between colours, too; with =WIDTH by strokes of so many points")
      ->type_name("[=WIDTH]");
  bool no_reorder = false;
  app.add_flag("--no-reorder", no_reorder, "Keep all polygons in their order");
  std::string precision;
  app.add_option("--precision", precision,
                 "Points by which coordinates may be rounded, 1e-8 to 1 (default 0.001)")
      ->type_name("POINTS");
  bool strict = false;
  app.add_flag("--strict", strict,
               "Draw each page that changed before and after, and compare the pictures");
  app.add_flag("-f,--force", options.replace,
               "Replace existing results of ours; with -o whatever is there");

  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& end) {
    if (end.get_exit_code() == 0) throw early_exit{app.exit(end)};  // help or version
    refuse(std::string(end.what()) + " (--help tells more)");
  }
  if (options.inputs.empty()) refuse("no file is named (--help tells more)");
  if (!options.output.empty() && options.inputs.size() > 1) {
    refuse("-o names the result of one file, not of several (a width is given as --close=WIDTH)");
  }
  if (!precision.empty()) set_precision(precision, options.contents);
  if (!close.empty()) set_closing(close, options.contents);
  options.contents.reorder = !no_reorder;
  if (strict) options.pdftocairo = batch::find_program("pdftocairo").value_or("");
  if (strict && options.pdftocairo.empty()) {
    refuse("--strict needs pdftocairo (package poppler-utils) in PATH");
  }
  return options;
}

void complain(const std::string& what) {
  std::fprintf(stderr, "trellion-pdf: %s\n", batch::printable(what).c_str());
}

}  // namespace trellion::pdf
