#include "repair_job.h"

#include <sys/stat.h>

#include <chrono>
#include <cstring>
#include <exception>
#include <fstream>
#include <new>
#include <optional>
#include <sstream>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include "detour.h"
#include "files.h"
#include "inputs.h"
#include "picture.h"
#include "placing.h"
#include "private_directory.h"
#include "trellion_console.h"

namespace trellion::batch {
namespace {

namespace fs = std::filesystem;

using line_handler = std::function<void(std::string_view line)>;

/// The mode of a file; that of nobody when it cannot be known.
mode_t mode_of(const fs::path& file) {
  struct stat status {};
  return ::stat(file.c_str(), &status) == 0 ? status.st_mode : 0600;
}

/// A way to a repaired file.
struct repair_way {
  std::int32_t min_separators;
  bool detour;

  [[nodiscard]] std::string name() const {
    return (detour ? "detour -s" : "-s") + std::to_string(min_separators);
  }
};

/// A way leads to no result that can be kept.
struct dead_end {
  verdict result;
  std::string reason;
};

std::vector<repair_way> ways_to_try(const batch_options& options) {
  if (options.detour && options.min_separators) return {{*options.min_separators, true}};
  if (options.detour) return {{2, true}, {1, true}};
  if (!options.auto_way) return {{options.min_separators.value_or(2), false}};
  std::vector<repair_way> ways = {{2, false}, {1, false}};
  if (options.tools.gs && options.tools.pdftops) ways.insert(ways.end(), {{2, true}, {1, true}});
  return ways;
}

std::string percent(std::int64_t part, std::int64_t whole) {
  const std::int64_t hundredths = part * 10'000 / whole;
  if (part > 0 && hundredths == 0) return "< 0.01 %";
  const std::string digits = std::to_string(hundredths % 100);
  return std::to_string(hundredths / 100) + '.' + std::string(2 - digits.size(), '0') + digits +
         " %";
}

/// What went wrong, without the names of functions and of our own files.
std::string in_plain_words(const std::exception& error) {
  if (const auto* of_files = dynamic_cast<const fs::filesystem_error*>(&error)) {
    return of_files->code().message();
  }
  return dynamic_cast<const std::bad_alloc*>(&error) != nullptr ? "not enough memory"
                                                                : error.what();
}

/// The work on one file. All steps but the last are made in a private directory, under fixed names.
class repair_job {
 public:
  repair_job(const fs::path& file, const batch_options& options, const process_runner& runner);

  /// Tries the ways until one leads to a result. Where none does, the gravest end is reported.
  file_report run();

 private:
  file_report try_way(const repair_way& way);
  std::string detour();
  std::string through_pdf(const std::vector<std::string>& more_options);
  [[nodiscard]] std::string read_file(const std::string& name) const;
  void write_file(const std::string& name, std::string_view text) const;
  trellion_console repair(const std::string& source, std::int32_t min_separators);
  void check_gain(const trellion_console& console, std::int64_t bytes_after) const;
  std::string compare(const std::string& result, bool detoured);
  std::string render(const std::string& name);
  std::string failure_of(const std::string& program, const std::vector<std::string>& arguments,
                         const line_handler& handle_line = nullptr);

  const fs::path file_;
  const batch_options& options_;
  const process_runner& runner_;
  const std::int64_t bytes_before_;
  const private_directory directory_;
  // Made once for all ways: why there is none, empty when there is one.
  std::optional<std::string> detour_failure_;
  std::optional<std::string> picture_failure_;
};

repair_job::repair_job(const fs::path& file, const batch_options& options,
                       const process_runner& runner)
    : file_(file),
      options_(options),
      runner_(runner),
      bytes_before_(static_cast<std::int64_t>(fs::file_size(file))),
      directory_(directory_of(file)) {
  // A link beside which the repaired file is made; where the file system has none, a copy.
  std::error_code no_links;
  fs::create_symlink(fs::absolute(file_), directory_ / "input.eps", no_links);
  if (no_links) fs::copy_file(file_, directory_ / "input.eps");
}

file_report repair_job::run() {
  const std::vector<repair_way> ways = ways_to_try(options_);
  file_report gravest;
  for (const repair_way& way : ways) {
    file_report report = try_way(way);
    const bool at_end = report.result <= verdict::exists || report.result == verdict::interrupted;
    if (at_end) return report;
    if (gravest.way.empty() || report.result >= gravest.result) gravest = std::move(report);
  }
  if (ways.size() > 1) gravest.reason += "; no other way was better";
  return gravest;
}

file_report repair_job::try_way(const repair_way& way) {
  file_report report;
  report.way = way.name();
  try {
    const std::string source = way.detour ? detour() : "input";
    const trellion_console console = repair(source, way.min_separators);
    report.polygons_before = console.polygons_before();
    report.polygons_after = console.polygons_after();
    const std::string result = source + "_r";
    report.bytes_after = static_cast<std::int64_t>(fs::file_size(directory_ / (result + ".eps")));
    check_gain(console, report.bytes_after);
    if (options_.verify) report.picture = compare(result, way.detour);
    const bool placed = place(directory_ / (result + ".eps"), result_path(file_), mode_of(file_),
                              options_.replace ? existing_file::replace : existing_file::keep);
    report.result = placed ? verdict::written : verdict::exists;
  } catch (const dead_end& end) {
    report.result = end.result;
    report.reason = end.reason;
  } catch (const std::exception& error) {
    report.result = verdict::failed;
    report.reason = in_plain_words(error);
  }
  return report;
}

/// Makes a file of the input by way of PDF, which draws the same with other operators. Returns its
/// name without the extension.
std::string repair_job::detour() {
  if (!detour_failure_) {
    std::string text = through_pdf({});
    if (detour_failure_->empty() && has_calibrated_colours_only(text)) {
      text = through_pdf({"-sColorConversionStrategy=RGB"});
    }
    if (detour_failure_->empty()) write_file("detour.eps", without_unused_definitions(text));
  }
  if (!detour_failure_->empty()) throw dead_end{verdict::failed, *detour_failure_};
  return "detour";
}

/// Converts the input to PDF, with more options for that, and back; returns what came of it.
std::string repair_job::through_pdf(const std::vector<std::string>& more_options) {
  std::vector<std::string> arguments = {"-q",
                                        "-dSAFER",
                                        "-dBATCH",
                                        "-dNOPAUSE",
                                        "-dEPSCrop",
                                        "-sDEVICE=pdfwrite",
                                        "-sOutputFile=detour.pdf"};
  arguments.insert(arguments.end(), more_options.begin(), more_options.end());
  arguments.emplace_back("input.eps");
  detour_failure_ = failure_of(*options_.tools.gs, arguments);
  if (detour_failure_->empty()) {
    detour_failure_ = failure_of(*options_.tools.pdftops, {"-eps", "detour.pdf", "detour.eps"});
  }
  return detour_failure_->empty() ? read_file("detour.eps") : "";
}

std::string repair_job::read_file(const std::string& name) const {
  std::ifstream file(directory_ / name, std::ios::binary);
  std::ostringstream text;
  text << file.rdbuf();
  if (!file) throw run_error("cannot read '" + name + "'");
  return std::move(text).str();
}

void repair_job::write_file(const std::string& name, std::string_view text) const {
  output_file file(directory_ / name, output_file::mode::replace);
  file.write(text);
  file.close();
}

trellion_console repair_job::repair(const std::string& source, std::int32_t min_separators) {
  std::vector<std::string> arguments = {source + ".eps", "-s" + std::to_string(min_separators)};
  if (options_.merge_limit) arguments.push_back("-m" + std::to_string(*options_.merge_limit));
  if (options_.remove_mesh) arguments.emplace_back("-r");
  trellion_console console;
  std::string failure = failure_of(options_.tools.trellion, arguments,
                                   [&console](std::string_view line) { console.read_line(line); });
  if (console.nothing_found()) throw dead_end{verdict::nothing_to_join, "no polygons found"};
  if (failure.empty()) failure = console.failure();
  if (failure.empty() && !console.finished()) failure = "trellion: ended early";
  if (!failure.empty()) throw dead_end{verdict::failed, failure};
  return console;
}

/// Where nothing was joined nothing is gained, and lines that are no polygons may have been taken
/// for some: they have no area and vanish.
void repair_job::check_gain(const trellion_console& console, std::int64_t bytes_after) const {
  if (options_.keep_larger) return;
  if (!console.joined()) {
    throw dead_end{verdict::nothing_to_join, "no polygons share an edge"};
  }
  if (bytes_after >= bytes_before_ && !options_.remove_mesh) {
    throw dead_end{verdict::not_smaller, "the result is not smaller"};
  }
}

/// Holds the result's picture against the input's; returns what to say of them when they count as
/// the same. Along the outlines of joined polygons the renderer may decide otherwise about single
/// pixels; with the mesh closed it fills those between them, so that their number says nothing. A
/// pixel amid others that differ belongs to an area of another colour.
std::string repair_job::compare(const std::string& result, bool detoured) {
  // On the detour colours are rounded, which moves them by up to three levels of 255.
  const int tolerance = detoured ? 4 : 0;
  if (!picture_failure_) picture_failure_ = render("input");
  if (!picture_failure_->empty()) {
    throw dead_end{verdict::withheld, "the input does not render: " + *picture_failure_};
  }
  const std::string failure = render(result);
  if (!failure.empty()) throw dead_end{verdict::withheld, "the result does not render: " + failure};

  const std::optional<picture_difference> difference =
      compare_pictures(directory_ / "input.ppm", directory_ / (result + ".ppm"), tolerance);
  if (difference && difference->pixels == 0) throw dead_end{verdict::withheld, "there is no page"};
  if (!difference) throw dead_end{verdict::withheld, "the picture has another size"};
  const std::string share = percent(difference->differing, difference->pixels);
  const bool too_many = !options_.remove_mesh && difference->differing * 1000 > difference->pixels;
  if (difference->surrounded > 0 || too_many) {
    throw dead_end{verdict::withheld, "the picture changed: " + share + " of the pixels differ"};
  }
  return difference->differing == 0 ? "same" : "same but " + share;
}

/// Draws a file without anti-aliasing; returns why that failed.
std::string repair_job::render(const std::string& name) {
  std::string failure = failure_of(
      *options_.tools.gs, {"-q", "-dSAFER", "-dBATCH", "-dNOPAUSE", "-dEPSCrop", "-sDEVICE=ppmraw",
                           "-r144", "-dTextAlphaBits=1", "-dGraphicsAlphaBits=1",
                           "-sOutputFile=" + name + ".ppm", name + ".eps"});
  if (failure.empty() && !fs::exists(directory_ / (name + ".ppm"))) failure = "it has no page";
  return failure;
}

/// Runs a program in the private directory; returns why that failed, beginning with its name.
std::string repair_job::failure_of(const std::string& program,
                                   const std::vector<std::string>& arguments,
                                   const line_handler& handle_line) {
  std::vector<std::string> command = {program};
  command.insert(command.end(), arguments.begin(), arguments.end());
  std::string line;
  std::string gs_error;  // on standard output: what is on standard error is less telling
  const child_result result = runner_.run(command, directory_.path(), [&](std::string_view bytes) {
    for (const char c : bytes) {
      if (c != '\n') {
        if (line.size() < 8192) line += c;
        continue;
      }
      if (line.starts_with("Error: ") && gs_error.empty()) gs_error = line;
      if (handle_line) handle_line(line);
      line.clear();
    }
    return true;
  });
  if (result.how == child_result::ending::interrupted) throw dead_end{verdict::interrupted, {}};
  if (result.succeeded()) return {};
  const std::string name = fs::path(program).filename();
  std::string reason = gs_error.empty() ? result.reason() : gs_error;
  for (const auto& [ours, theirs] :
       {std::pair("'input.eps'", file_), {"'input_r.eps'", result_path(file_)}}) {
    const std::size_t at = reason.find(ours);
    if (at != std::string::npos) reason.replace(at, std::strlen(ours), "'" + theirs.string() + "'");
  }
  return reason.starts_with(name + ": ") ? reason : name + ": " + reason;
}

}  // namespace

file_report repair_file(const fs::path& file, const batch_options& options,
                        const process_runner& runner) {
  const auto start = std::chrono::steady_clock::now();
  file_report report;
  std::int64_t bytes_before = -1;
  try {
    const fs::file_status status = fs::status(file);
    if (!fs::exists(status)) throw run_error("there is no such file");
    if (!fs::is_regular_file(status)) throw run_error("it is no regular file");
    const input_file readable(file);
    bytes_before = static_cast<std::int64_t>(fs::file_size(file));
    std::error_code ignored;
    if (!options.replace && fs::exists(fs::symlink_status(result_path(file), ignored))) {
      report.result = verdict::exists;
    } else {
      report = repair_job(file, options, runner).run();
    }
  } catch (const std::exception& error) {
    report.result = verdict::failed;
    report.reason = in_plain_words(error);
  }
  if (report.result == verdict::exists) report.reason = "-f replaces it";
  report.file = file;
  report.bytes_before = bytes_before;
  report.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  return report;
}

}  // namespace trellion::batch
