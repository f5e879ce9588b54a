#include "batch/repair_job.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <exception>
#include <fstream>
#include <iterator>
#include <optional>
#include <system_error>
#include <utility>
#include <vector>

#include "batch/culprits.h"
#include "batch/earlier_result.h"
#include "batch/inputs.h"
#include "batch/judge.h"
#include "batch/placing.h"
#include "batch/workshop.h"

namespace trellion::batch {
namespace {

namespace fs = std::filesystem;

bool have_same_bytes(const fs::path& a, const fs::path& b) {
  std::ifstream bytes_of_a(a, std::ios::binary);
  std::ifstream bytes_of_b(b, std::ios::binary);
  using at = std::istreambuf_iterator<char>;
  return std::equal(at(bytes_of_a), at(), at(bytes_of_b), at());
}

/// Whether a result is to be made, given what is in its place.
bool is_to_be_made(earlier_result earlier, const fs::path& place, const batch_options& options) {
  if (earlier == earlier_result::not_ours) {
    throw dead_end{verdict::failed,
                   "'" + place.filename().string() +
                       "' is no result of ours, and stays (--output-dir gets past it)"};
  }
  return earlier != earlier_result::complete || options.replace;
}

bool is_older(const fs::path& result, const fs::path& input) {
  std::error_code error;
  const auto written = fs::last_write_time(result, error);
  if (error) return false;
  const auto drawn = fs::last_write_time(input, error);
  return !error && written < drawn;
}

/// Of two ends of one kind the one that found more polygons says more.
bool says_more(const file_report& report, const file_report& other) {
  if (report.result != other.result) return is_graver(report.result, other.result);
  return report.polygons_before.value_or(0) > other.polygons_before.value_or(0);
}

/// Why nothing was joined. Where the polygons that were found are next to nothing of the file, its
/// mesh is drawn in another form, which is another matter than polygons without common edges.
std::string why_nothing_was_joined(const candidate& made, std::uint64_t n_bytes) {
  const repair_summary& summary = made.summary;
  if (summary.polygons_read == 0) return "no polygons found";
  const std::int64_t with_area = summary.polygons_read - summary.without_area;
  if (with_area == 0) return "no polygons found, only lines";
  const std::string count = std::to_string(with_area);
  if (made.way.pdf) return "nothing is gained by joining any of " + count + " polygons";
  if (static_cast<std::uint64_t>(summary.group_bytes) < n_bytes / 10) {
    return "no mesh recognised: the " + count + " polygons found are less than 10 % of the file";
  }
  return "no two of " + count + " polygons share an edge";
}

file_report report_of(const candidate& made) {
  file_report report;
  report.way = made.way.name();
  report.polygons_before = made.summary.polygons_read;
  report.polygons_after = made.summary.polygons_left;
  report.bytes_after = made.n_bytes;
  return report;
}

/// Numbers of what was thrown away mean nothing to anybody.
void forget_attempt(file_report& report) {
  file_report left;
  left.result = report.result;
  left.reason = std::move(report.reason);
  report = std::move(left);
}

judging_rule rule_for(const repair_way& way) {
  // On the detour colours are rounded, which moves them by up to three levels of 255.
  constexpr int detour_tolerance = 4;
  return {way.detour ? detour_tolerance : 0, way.remove_mesh, way.pdf && !way.detour};
}

/// In time limits of a single program: so long may the pages of all results be compared.
constexpr int patience = 4;

void add(const agreement& of_page, agreement& sum_of_all) {
  sum_of_all.pixels += of_page.pixels;
  sum_of_all.differing += of_page.differing;
}

void add(const hairline_counts& of_page, hairline_counts& sum_of_all) {
  for (const auto count : {&hairline_counts::ghostscript, &hairline_counts::cairo}) {
    if (of_page.*count) sum_of_all.*count = (sum_of_all.*count).value_or(0) + *(of_page.*count);
  }
}

/// The choice among the results for one figure.
class repair_job {
 public:
  repair_job(figure input, fs::path result, const batch_options& options,
             const process_runner& runner)
      : options_(options), workshop_(std::move(input), std::move(result), options, runner) {}

  /// Tries all ways and puts the best result in its place. Where there is none the gravest end is
  /// reported.
  file_report run();

 private:
  /// A result that can be kept, and what is to be said of it.
  struct finding {
    candidate made;
    file_report report;
  };

  /// A result that changes the picture at few places.
  struct near_miss {
    candidate made;
    page_part place;
  };

  void repair_all_ways();
  void repair_in(const repair_way& way, std::ptrdiff_t n_first);
  std::optional<finding> best_result();
  std::optional<finding> best_without_culprits();
  std::optional<candidate> without_culprits(const near_miss& miss);
  void check_gain(const candidate& made) const;
  void compare(const candidate& made, file_report& report);
  [[nodiscard]] verdict put_in_place(const candidate& best) const;
  [[nodiscard]] bool interrupted() const {
    return gravest_ && gravest_->result == verdict::interrupted;
  }
  [[nodiscard]] bool lost_patience() const {
    return compares_since_ &&
           std::chrono::steady_clock::now() - *compares_since_ > patience * options_.time_limit;
  }
  template <class Step>
  bool reach(file_report& report, Step step);

  const batch_options& options_;
  workshop workshop_;
  std::vector<candidate> candidates_;  // the smallest first
  std::vector<near_miss> near_misses_;
  int tests_left_ = 64;  // of the search for culprits: each repairs and draws
  std::optional<std::chrono::steady_clock::time_point> compares_since_;
  std::optional<file_report> gravest_;
};

file_report repair_job::run() {
  repair_all_ways();
  std::optional<finding> best = best_result();
  if (!best && !interrupted()) best = best_without_culprits();
  if (best && reach(best->report, [&] { best->report.result = put_in_place(best->made); })) {
    return best->report;
  }
  const file_kind kind = workshop_.input().kind;
  if (kind != file_kind::pdf && ways_to_try(options_, kind).size() > 1 && !interrupted()) {
    gravest_->reason += "; no other way was better";
  }
  return *gravest_;
}

/// Takes a step. When it leads to a dead end the report says so, and is kept if none says more.
template <class Step>
bool repair_job::reach(file_report& report, Step step) {
  const auto note = [&](const dead_end& end) {
    report.result = end.result;
    report.reason = end.reason;
    if (!gravest_ || says_more(report, *gravest_)) gravest_ = report;
    return false;
  };
  try {
    step();
    return true;
  } catch (const dead_end& end) {
    return note(end);
  } catch (const std::exception& error) {
    return note(dead_end_of(error));
  }
}

/// Gathers what the ways lead to.
void repair_job::repair_all_ways() {
  for (const repair_way& way : ways_to_try(options_, workshop_.input().kind)) {
    repair_in(way, 0);
    if (interrupted()) {
      candidates_.clear();
      return;
    }
  }
}

/// Adds what a way leads to, unless it is known, to those that are not among the first few.
void repair_job::repair_in(const repair_way& way, std::ptrdiff_t n_first) {
  file_report report;
  report.way = way.name();
  reach(report, [&] {
    candidate made = workshop_.repair(way);
    report = report_of(made);
    check_gain(made);
    const bool is_known = std::ranges::any_of(candidates_, [&](const candidate& other) {
      return other.n_bytes == made.n_bytes && have_same_bytes(other.file, made.file);
    });
    if (is_known) return;
    const auto larger = std::upper_bound(
        candidates_.begin() + n_first, candidates_.end(), made.n_bytes,
        [](std::uint64_t size, const candidate& other) { return size < other.n_bytes; });
    candidates_.insert(larger, std::move(made));
  });
}

/// The smallest of the results that show the same picture; where the mesh is to be closed the one
/// with the fewest hairlines.
std::optional<repair_job::finding> repair_job::best_result() {
  std::optional<finding> best;
  for (std::size_t n = 0; n < candidates_.size(); ++n) {
    const candidate made = candidates_[n];
    finding found{made, report_of(made)};
    if (!reach(found.report, [&] { compare(made, found.report); })) {
      if (interrupted()) return std::nullopt;
      const std::optional<repair_way> more_careful = made.way.more_careful();
      if (found.report.result == verdict::withheld && more_careful && !lost_patience()) {
        repair_in(*more_careful, static_cast<std::ptrdiff_t>(n) + 1);
        if (interrupted()) return std::nullopt;
      }
      continue;
    }
    if (!options_.remove_mesh || !options_.verify) return found;
    if (!best || sum(found.report.hairlines_after) < sum(best->report.hairlines_after)) {
      best = std::move(found);
    }
  }
  return best;
}

/// The first of those that change the picture at few places that does not when the groups that do
/// it are left alone.
std::optional<repair_job::finding> repair_job::best_without_culprits() {
  std::vector<near_miss> misses = std::exchange(near_misses_, {});
  // What closes the mesh, where that is asked for, is worth more than what is small.
  std::stable_partition(misses.begin(), misses.end(),
                        [](const near_miss& m) { return m.made.way.remove_mesh; });
  for (const near_miss& miss : misses) {
    finding found{miss.made, report_of(miss.made)};
    const bool mended = reach(found.report, [&] {
      std::optional<candidate> spared = without_culprits(miss);
      if (!spared) {
        throw dead_end{verdict::withheld, "the picture changed, and no few groups are to blame"};
      }
      found = {*spared, report_of(*spared)};
      if (spared->summary.mergers == 0) {
        throw dead_end{verdict::withheld, "the picture changed wherever polygons were joined"};
      }
      check_gain(*spared);
      compare(*spared, found.report);
    });
    if (mended) return found;
    if (interrupted()) return std::nullopt;
  }
  return std::nullopt;
}

/// The same repair without the groups that change the picture; nothing when they are too many.
std::optional<candidate> repair_job::without_culprits(const near_miss& miss) {
  const repair_way& way = miss.made.way;
  const std::int64_t n_groups = miss.made.summary.groups;
  appearance input = workshop_.input_appearance(miss.place);
  const auto changes = [&](const group_range& joined) {
    --tests_left_;
    const candidate part = workshop_.repair(way, all_but(joined, n_groups));
    appearance look = workshop_.appearance_of(part, miss.place);
    return !shows_the_same(input, look, rule_for(way));
  };
  constexpr group_range none{1, 0};
  if (changes(none)) return std::nullopt;  // it was the detour
  const std::vector<group_range> culprits = find_culprits(n_groups, changes, tests_left_);
  if (culprits.empty()) return std::nullopt;
  return workshop_.repair(way, culprits);
}

void repair_job::check_gain(const candidate& made) const {
  if (made.summary.area_lost) {
    throw dead_end{verdict::withheld, "the outlines cover less than the polygons did"};
  }
  if (options_.keep_all) return;
  const std::uint64_t n_bytes = workshop_.input().n_bytes;
  if (!made.is_gain) {
    throw dead_end{verdict::nothing_to_join, why_nothing_was_joined(made, n_bytes)};
  }
  // Whether closing the mesh is worth its bytes the hairlines tell.
  if (made.n_bytes >= n_bytes && !made.way.remove_mesh) {
    throw dead_end{verdict::not_kept, "the result is not smaller"};
  }
}

void repair_job::compare(const candidate& made, file_report& report) {
  if (!options_.verify) return;
  if (!compares_since_) compares_since_ = std::chrono::steady_clock::now();
  const std::vector<page_view> pages = workshop_.pages_of(made);
  if (pages.empty() && made.is_gain) {
    throw dead_end{verdict::withheld, "what changed cannot be found"};
  }
  agreement found;
  for (const page_view& page : pages) {
    if (lost_patience()) {
      throw dead_end{verdict::withheld,
                     "to compare " + std::to_string(pages.size()) +
                         " pages takes too long (--time-limit SECONDS allows more)"};
    }
    appearance& input = workshop_.input_appearance(page);
    appearance result = workshop_.appearance_of(made, page);
    try {
      add(judge(input, result, rule_for(made.way)), found);
    } catch (dead_end& end) {
      if (end.place && made.summary.groups > 1) near_misses_.push_back({made, *end.place});
      if (pages.size() > 1 && end.result != verdict::interrupted) {
        end.reason = "page " + std::to_string(page.number) + ": " + end.reason;
      }
      throw;
    }
    add(input.hairlines(), report.hairlines_before);
    add(result.hairlines(), report.hairlines_after);
  }
  report.picture = in_words(found);
  const bool fewer = sum(report.hairlines_after) < sum(report.hairlines_before);
  if (!fewer && made.n_bytes >= workshop_.input().n_bytes && !options_.keep_all) {
    throw dead_end{verdict::not_kept, "the result is not smaller, and closes no hairlines"};
  }
}

verdict repair_job::put_in_place(const candidate& best) const {
  if (!is_unchanged(workshop_.input())) {
    throw dead_end{verdict::failed, "the figure was changed while it was repaired"};
  }
  if (options_.dry_run) return verdict::possible;
  const fs::path& result = workshop_.result();
  const earlier_result earlier = look_for_result(result, workshop_.input().file);
  const bool may_replace = is_to_be_made(earlier, result, options_);
  if (!may_replace) return verdict::exists;
  const bool placed =
      place(best.file, result, workshop_.input().mode,
            earlier == earlier_result::none ? existing_file::keep : existing_file::replace);
  return placed ? verdict::written : verdict::exists;
}

}  // namespace

file_report repair_file(const work_item& item, const batch_options& options,
                        const process_runner& runner) {
  const auto start = std::chrono::steady_clock::now();
  file_report report;
  std::optional<std::int64_t> n_bytes;
  earlier_result earlier = earlier_result::none;
  const auto end_with = [&report](const dead_end& end) {
    report.result = end.result;
    report.reason = end.reason;
  };
  try {
    if (!item.refusal.empty()) throw dead_end{verdict::failed, item.refusal};
    figure input = look_at(item.file);
    n_bytes = static_cast<std::int64_t>(input.n_bytes);
    earlier = look_for_result(item.result, item.file);
    if (is_to_be_made(earlier, item.result, options)) {
      report = repair_job(std::move(input), item.result, options, runner).run();
    } else {
      report.result = verdict::exists;
    }
  } catch (const dead_end& end) {
    end_with(end);
  } catch (const std::exception& error) {
    end_with(dead_end_of(error));
  }
  if (report.result == verdict::exists) {
    report.reason = is_older(item.result, item.file) ? "older than the figure; -f replaces it"
                                                     : "-f replaces it";
    report.bytes_after = static_cast<std::int64_t>(file_size(item.result));
  }
  if (report.result == verdict::nothing_to_join) forget_attempt(report);
  if (earlier == earlier_result::unfinished && report.result != verdict::written) {
    report.reason += "; '" + item.result.filename().string() + "' is unfinished: remove it";
  }
  report.file = item.file;
  report.bytes_before = n_bytes;
  report.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  return report;
}

}  // namespace trellion::batch
