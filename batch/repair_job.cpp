#include "batch/repair_job.h"

#include <algorithm>
#include <chrono>
#include <exception>
#include <fstream>
#include <iterator>
#include <new>
#include <optional>
#include <system_error>
#include <utility>
#include <variant>
#include <vector>

#include "batch/drawing.h"
#include "batch/figure.h"
#include "batch/inputs.h"
#include "batch/judge.h"
#include "batch/placing.h"
#include "batch/private_directory.h"
#include "batch/ways.h"
#include "batch/worker.h"
#include "files.h"

namespace trellion::batch {
namespace {

namespace fs = std::filesystem;

/// What went wrong, without the names of functions and of our own files.
std::string in_plain_words(const std::exception& error) {
  if (const auto* of_files = dynamic_cast<const fs::filesystem_error*>(&error)) {
    return of_files->code().message();
  }
  return dynamic_cast<const std::bad_alloc*>(&error) != nullptr ? "not enough memory"
                                                                : error.what();
}

/// A repaired file that may be kept.
struct candidate {
  repair_way way;
  fs::path file;
  std::uint64_t n_bytes = 0;
  repair_summary summary;
};

dead_end dead_end_of(const early_end& ended) {
  switch (ended.reason) {
    case end_reason::no_operators: return {verdict::nothing_to_join, "no polygons found"};
    case end_reason::no_safe_name:
      return {verdict::failed, "the file has used up the names for the macro that closes the mesh"};
    case end_reason::collapsed_path: return {verdict::failed, "two polygons cancel each other out"};
    default: return {verdict::failed, "the repair ended early"};
  }
}

bool have_same_bytes(const fs::path& a, const fs::path& b) {
  std::ifstream bytes_of_a(a, std::ios::binary);
  std::ifstream bytes_of_b(b, std::ios::binary);
  using at = std::istreambuf_iterator<char>;
  return std::equal(at(bytes_of_a), at(), at(bytes_of_b), at());
}

std::int64_t sum(const hairline_counts& counts) {
  return counts.ghostscript.value_or(0) + counts.cairo.value_or(0);
}

bool is_there(const fs::path& file) {
  std::error_code ignored;
  return fs::exists(fs::symlink_status(file, ignored));
}

bool is_older(const fs::path& result, const fs::path& input) {
  std::error_code error;
  const auto written = fs::last_write_time(result, error);
  if (error) return false;
  const auto drawn = fs::last_write_time(input, error);
  return !error && written < drawn;
}

/// Of two ends of one kind the one that found more polygons.
bool says_more(const file_report& report, const file_report& other) {
  if (report.result != other.result) return is_graver(report.result, other.result);
  return report.polygons_before.value_or(0) > other.polygons_before.value_or(0);
}

/// Why nothing was joined. Where the polygons that were found are next to nothing of the file, its
/// mesh is drawn in another form, which is another matter than polygons without common edges.
std::string why_nothing_was_joined(const repair_summary& summary, std::uint64_t n_bytes) {
  if (summary.polygons_read == 0) return "no polygons found";
  const std::int64_t with_area = summary.polygons_read - summary.without_area;
  if (with_area == 0) return "no polygons found, only lines";
  const std::string count = std::to_string(with_area);
  if (static_cast<std::uint64_t>(summary.group_bytes) < n_bytes / 10) {
    return "no mesh recognised: the " + count + " polygons found are less than 10 % of the file";
  }
  return "no two of " + count + " polygons share an edge";
}

/// This program, to be run again as a worker.
constexpr const char* own_program = "/proc/self/exe";

/// Ghostscript's rounding moves the colours of a detour by up to three levels of 255.
constexpr int detour_tolerance = 4;

/// What is no EPS file is told by its name; what has no name may be a text that works all the same.
void refuse_other_kinds(file_kind kind) {
  switch (kind) {
    case file_kind::pdf: throw dead_end{verdict::failed, "it is a PDF file (try pdftops -eps)"};
    case file_kind::gzip: throw dead_end{verdict::failed, "it is compressed (gunzip it)"};
    case file_kind::empty: throw dead_end{verdict::failed, "it is empty"};
    default: return;
  }
}

/// The work on one file. All steps but the last are made in a private directory.
class repair_job {
 public:
  repair_job(figure input, const batch_options& options, const process_runner& runner)
      : input_(std::move(input)),
        options_(options),
        runner_(runner),
        directory_(directory_of(input_.file)),
        programs_(options.tools, runner, {options.time_limit, options.memory_limit, 0},
                  directory_.path()) {}

  /// Tries all ways and puts the best result in its place. Where there is none the gravest end is
  /// reported.
  file_report run();

 private:
  /// A result that can be kept, and what is to be said of it.
  struct finding {
    candidate made;
    file_report report;
  };

  std::vector<candidate> repair_all_ways();
  candidate repair(const repair_way& way);
  const fs::path& source_of(const repair_way& way);
  const fs::path& detour();
  const page_frame& frame();
  const fs::path& framed_input();
  void check_gain(const candidate& made) const;
  std::optional<finding> best_of(const std::vector<candidate>& candidates);
  void compare(const candidate& made, file_report& report);
  verdict put_in_place(const candidate& best) const;

  file_report report_of(const candidate& made) const;
  template <class Step>
  bool reach(file_report& report, Step step);

  figure input_;
  const batch_options& options_;
  const process_runner& runner_;
  const private_directory directory_;
  const drawing_programs programs_;
  std::optional<page_frame> frame_;
  std::optional<fs::path> framed_;
  /// Made once for all ways, however it ends.
  std::optional<std::variant<fs::path, dead_end>> detour_;
  std::optional<appearance> appearance_;
  std::optional<file_report> gravest_;
};

file_report repair_job::run() {
  refuse_other_kinds(input_.kind);
  const std::vector<candidate> candidates = repair_all_ways();
  if (std::optional<finding> best = best_of(candidates)) {
    if (reach(best->report, [&] { best->report.result = put_in_place(best->made); })) return best->report;
  }
  const bool several = ways_to_try(options_).size() > 1;
  if (several && gravest_->result != verdict::interrupted) {
    gravest_->reason += "; no other way was better";
  }
  return *gravest_;
}

/// Takes a step. When it leads to a dead end the report says so, and is kept if no graver one is.
template <class Step>
bool repair_job::reach(file_report& report, Step step) {
  try {
    step();
    return true;
  } catch (const dead_end& end) {
    report.result = end.result;
    report.reason = end.reason;
  } catch (const std::exception& error) {
    report.result = verdict::failed;
    report.reason = in_plain_words(error);
  }
  if (!gravest_ || says_more(report, *gravest_)) gravest_ = report;
  return false;
}

/// What the ways lead to, the smallest first, each once.
std::vector<candidate> repair_job::repair_all_ways() {
  std::vector<candidate> candidates;
  for (const repair_way& way : ways_to_try(options_)) {
    file_report report;
    report.way = way.name();
    reach(report, [&] {
      const candidate made = repair(way);
      report = report_of(made);
      check_gain(made);
      const bool known = std::ranges::any_of(candidates, [&](const candidate& other) {
        return other.n_bytes == made.n_bytes && have_same_bytes(other.file, made.file);
      });
      if (!known) candidates.push_back(made);
    });
    if (report.result == verdict::interrupted && gravest_ &&
        gravest_->result == verdict::interrupted) {
      return {};
    }
  }
  std::ranges::stable_sort(candidates, {}, &candidate::n_bytes);
  return candidates;
}

candidate repair_job::repair(const repair_way& way) {
  const fs::path& source = source_of(way);
  // A name of its own for each, in a folder of its own: it is what messages tell.
  std::string folder = way.name();
  std::ranges::replace(folder, ' ', '_');
  fs::create_directory(directory_ / folder);
  const fs::path name = result_path(input_.file).filename();

  std::vector<std::string> command = {own_program};
  const std::vector<std::string> arguments =
      worker_arguments({source, name, options_.merge_limit.value_or(0), way.min_separators,
                        way.remove_mesh});
  command.insert(command.end(), arguments.begin(), arguments.end());
  std::string said;
  const std::uint64_t most_bytes = (std::uint64_t{64} << 20) + 4 * fs::file_size(source);
  const child_result ended = runner_.run(
      command, directory_ / folder,
      [&said](std::string_view bytes) {
        constexpr std::size_t enough = 4096;
        said += bytes;
        return said.size() < enough;
      },
      {options_.time_limit, options_.memory_limit, most_bytes});
  if (ended.how == child_result::ending::interrupted) throw dead_end{verdict::interrupted, {}};
  const std::optional<repair_outcome> outcome = read_outcome(said);
  if (!ended.succeeded() || !outcome) throw dead_end{verdict::failed, ended.reason()};
  if (const auto* early = std::get_if<early_end>(&*outcome)) throw dead_end_of(*early);

  const fs::path file = directory_ / folder / name;
  return {way, file, fs::file_size(file), std::get<repair_summary>(*outcome)};
}

const fs::path& repair_job::source_of(const repair_way& way) {
  if (way.detour) return detour();
  if (input_.kind == file_kind::dos_eps) {
    throw dead_end{verdict::withheld, "it has a DOS preview header; --auto and --detour do without"};
  }
  return input_.file;
}

const fs::path& repair_job::detour() {
  if (!detour_) {
    try {
      const fs::path eps = directory_ / "detour" / input_.file.filename();
      fs::create_directory(eps.parent_path());
      take_detour(input_, framed_input(), frame(), programs_, directory_ / "detour.pdf", eps);
      detour_ = eps;
    } catch (const dead_end& end) {
      detour_ = end;
    } catch (const std::exception& error) {
      detour_ = dead_end{verdict::failed, in_plain_words(error)};
    }
  }
  if (const auto* end = std::get_if<dead_end>(&*detour_)) throw dead_end(*end);
  return std::get<fs::path>(*detour_);
}

/// The frame of the figure's box. A file without one is drawn to see where it would be.
const page_frame& repair_job::frame() {
  if (frame_) return *frame_;
  if (!input_.page.box) {
    const eps_page drawn = read_page(programs_.box_comments_of(input_.file));
    if (!drawn.box) throw dead_end{verdict::withheld, "it has no BoundingBox, and draws nothing"};
    input_.page.box = drawn.box;
    input_.page.box_lines = drawn.box_lines;
  }
  return frame_.emplace(frame_of(*input_.page.box));
}

const fs::path& repair_job::framed_input() {
  if (!framed_) {
    const fs::path framed = directory_ / "input.eps";
    write_framed(input_.file, frame(), framed);
    framed_ = framed;
  }
  return *framed_;
}

void repair_job::check_gain(const candidate& made) const {
  if (made.summary.area_lost) {
    throw dead_end{verdict::withheld, "the outlines cover less than the polygons did"};
  }
  if (options_.keep_all) return;
  if (made.summary.mergers == 0) {
    throw dead_end{verdict::nothing_to_join, why_nothing_was_joined(made.summary, input_.n_bytes)};
  }
  // Whether closing the mesh is worth its bytes the hairlines tell.
  if (made.n_bytes >= input_.n_bytes && !made.way.remove_mesh) {
    throw dead_end{verdict::not_kept, "the result is not smaller"};
  }
}

/// The smallest of the results that show the same picture; where the mesh is to be closed the one
/// with the fewest hairlines.
std::optional<repair_job::finding> repair_job::best_of(const std::vector<candidate>& candidates) {
  std::optional<finding> best;
  for (const candidate& made : candidates) {
    finding found{made, report_of(made)};
    if (!reach(found.report, [&] { compare(made, found.report); })) {
      if (found.report.result == verdict::interrupted) return std::nullopt;
      continue;
    }
    if (!options_.remove_mesh || !options_.verify) return found;
    if (!best || sum(found.report.hairlines_after) < sum(best->report.hairlines_after)) {
      best = std::move(found);
    }
  }
  return best;
}

void repair_job::compare(const candidate& made, file_report& report) {
  if (!options_.verify) return;
  if (!appearance_) appearance_.emplace(programs_, framed_input(), frame());
  const fs::path framed = fs::path(made.file).replace_extension(".framed.eps");
  write_framed(made.file, frame(), framed);
  appearance result(programs_, framed, frame());
  report.picture = judge(*appearance_, result,
                         {made.way.detour ? detour_tolerance : 0, made.way.remove_mesh});
  report.hairlines_before = appearance_->hairlines();
  report.hairlines_after = result.hairlines();
  const bool fewer = sum(report.hairlines_after) < sum(report.hairlines_before);
  if (!fewer && made.n_bytes >= input_.n_bytes && !options_.keep_all) {
    throw dead_end{verdict::not_kept, "the result is not smaller, and closes no hairlines"};
  }
}

verdict repair_job::put_in_place(const candidate& best) const {
  const bool placed = place(best.file, result_path(input_.file), input_.mode,
                            options_.replace ? existing_file::replace : existing_file::keep);
  return placed ? verdict::written : verdict::exists;
}

file_report repair_job::report_of(const candidate& made) const {
  file_report report;
  report.way = made.way.name();
  report.polygons_before = made.summary.polygons_read;
  report.polygons_after = made.summary.polygons_left;
  report.bytes_after = made.n_bytes;
  return report;
}

}  // namespace

file_report repair_file(const fs::path& file, const batch_options& options,
                        const process_runner& runner) {
  const auto start = std::chrono::steady_clock::now();
  file_report report;
  std::optional<std::int64_t> n_bytes;
  try {
    figure input = look_at(file);
    n_bytes = static_cast<std::int64_t>(input.n_bytes);
    if (!options.replace && is_there(result_path(file))) {
      report.result = verdict::exists;
    } else {
      report = repair_job(std::move(input), options, runner).run();
    }
  } catch (const dead_end& end) {
    report.result = end.result;
    report.reason = end.reason;
  } catch (const std::exception& error) {
    report.result = verdict::failed;
    report.reason = in_plain_words(error);
  }
  if (report.result == verdict::exists) {
    report.reason = is_older(result_path(file), file) ? "older than the figure; -f replaces it"
                                                      : "-f replaces it";
  }
  report.file = file;
  report.bytes_before = n_bytes;
  report.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  return report;
}

}  // namespace trellion::batch
