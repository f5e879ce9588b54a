#include "batch/choice.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <exception>
#include <fstream>
#include <iterator>
#include <optional>
#include <utility>
#include <vector>

#include "batch/culprits.h"
#include "batch/judge.h"
#include "batch/ways.h"

namespace trellion::batch {
namespace {

namespace fs = std::filesystem;

bool have_same_bytes(const fs::path& a, const fs::path& b) {
  std::ifstream bytes_of_a(a, std::ios::binary);
  std::ifstream bytes_of_b(b, std::ios::binary);
  using at = std::istreambuf_iterator<char>;
  return std::equal(at(bytes_of_a), at(), at(bytes_of_b), at());
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

judging_rule rule_for(const repair_way& way) {
  // On the detour colours are rounded, which moves them by up to three levels of 255.
  constexpr int detour_tolerance = 4;
  return {way.detour ? detour_tolerance : 0, way.remove_mesh, way.pdf && !way.detour};
}

dead_end wrong_result(std::string reason) {
  return {verdict::withheld, std::move(reason), std::nullopt, true};
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
class choice {
 public:
  choice(workshop& shop, const batch_options& options) : options_(options), workshop_(shop) {}

  file_report run(const result_taker& take);

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
  std::optional<file_report> right_without_gain();
  std::string next_step();
  [[nodiscard]] std::string other_ways() const;
  void compare(const candidate& made, file_report& report);
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
  workshop& workshop_;
  std::vector<candidate> candidates_;  // the smallest first
  std::vector<near_miss> near_misses_;
  std::vector<candidate> larger_;       // than the figure, and not looked at
  std::optional<file_report> no_gain_;  // shows the same picture, and is not better
  int tests_left_ = 64;                 // of the search for culprits: each repairs and draws
  std::optional<std::chrono::steady_clock::time_point> compares_since_;
  std::optional<file_report> gravest_;
  bool is_of_way_ = false;  // the gravest: another way may end otherwise
};

file_report choice::run(const result_taker& take) {
  repair_all_ways();
  std::optional<finding> best = best_result();
  if (!best && !interrupted()) best = best_without_culprits();
  if (best && reach(best->report, [&] { best->report.result = take(best->made.file); })) {
    return best->report;
  }
  if (gravest_->result == verdict::withheld && options_.verify) {
    if (const std::optional<file_report> no_gain = right_without_gain()) return *no_gain;
  }
  const file_kind kind = workshop_.input().kind;
  if (kind == file_kind::pdf || interrupted()) return *gravest_;
  if (ways_to_try(options_, kind).size() > 1) gravest_->reason += "; no other way was better";
  if (gravest_->result == verdict::nothing_to_join) gravest_->reason += next_step();
  if (gravest_->result == verdict::withheld && is_of_way_) gravest_->reason += other_ways();
  return *gravest_;
}

/// Takes a step. When it leads to a dead end the report says so, and is kept if none says more.
template <class Step>
bool choice::reach(file_report& report, Step step) {
  const auto note = [&](const dead_end& end) {
    report.result = end.result;
    report.reason = end.reason;
    if (gravest_ && !says_more(report, *gravest_)) return false;
    gravest_ = report;
    is_of_way_ = end.is_of_way;
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
void choice::repair_all_ways() {
  for (const repair_way& way : ways_to_try(options_, workshop_.input().kind)) {
    repair_in(way, 0);
    if (interrupted()) {
      candidates_.clear();
      return;
    }
  }
}

/// Adds what a way leads to, unless it is known, to those that are not among the first few.
void choice::repair_in(const repair_way& way, std::ptrdiff_t n_first) {
  file_report report;
  report.way = way.name();
  reach(report, [&] {
    candidate made = workshop_.repair(way);
    report = report_of(made);
    try {
      check_gain(made);
    } catch (const dead_end& end) {
      if (end.result == verdict::not_kept) larger_.push_back(made);
      throw;
    }
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
std::optional<choice::finding> choice::best_result() {
  std::optional<finding> best;
  for (std::size_t n = 0; n < candidates_.size(); ++n) {
    const candidate made = candidates_[n];
    finding found{made, report_of(made)};
    if (!reach(found.report, [&] { compare(made, found.report); })) {
      if (interrupted()) return std::nullopt;
      if (found.report.result == verdict::not_kept) no_gain_ = found.report;
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
std::optional<choice::finding> choice::best_without_culprits() {
  std::vector<near_miss> misses = std::exchange(near_misses_, {});
  // What closes the mesh, where that is asked for, is worth more than what is small.
  std::stable_partition(misses.begin(), misses.end(),
                        [](const near_miss& m) { return m.made.way.remove_mesh; });
  for (const near_miss& miss : misses) {
    finding found{miss.made, report_of(miss.made)};
    const bool mended = reach(found.report, [&] {
      std::optional<candidate> spared = without_culprits(miss);
      if (!spared) {
        throw wrong_result("the picture changed, and no few groups are to blame");
      }
      found = {*spared, report_of(*spared)};
      if (spared->summary.mergers == 0) {
        throw wrong_result("the picture changed wherever polygons were joined");
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
std::optional<candidate> choice::without_culprits(const near_miss& miss) {
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

void choice::check_gain(const candidate& made) const {
  if (made.summary.area_lost) {
    throw wrong_result("the outlines cover less than the polygons did");
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

/// Where what is smaller is wrong: a result that shows the same picture but is no gain. With that
/// all is good, and the figure may stay as it is.
std::optional<file_report> choice::right_without_gain() {
  if (no_gain_) return no_gain_;
  for (const candidate& made : larger_) {
    file_report report = report_of(made);
    report.result = verdict::not_kept;
    report.reason = "the result is not smaller; what another way led to is withheld";
    try {
      compare(made, report);
      return report;
    } catch (const dead_end& end) {
      if (end.result == verdict::not_kept) return report;
      if (end.result != verdict::interrupted) continue;
      report.result = end.result;
      report.reason = end.reason;
      gravest_ = report;
      break;
    } catch (const std::exception&) {
      continue;
    }
  }
  return std::nullopt;
}

/// What else may find polygons to join where one way of reading the text found none; empty where
/// nothing does.
std::string choice::next_step() {
  if (options_.auto_way || options_.detour) return "";
  if (options_.min_separators.value_or(2) > 1) {
    try {
      if (workshop_.repair({1, false}).is_gain)
        return "; -s1 finds some to join, --auto tries more";
    } catch (const std::exception&) {
      // It is no step then.
    } catch (const dead_end&) {
    }
  }
  return other_ways();
}

/// What else there is where one way alone was tried; empty where it is nothing.
std::string choice::other_ways() const {
  const bool has_more = !options_.auto_way && !options_.detour && options_.tools.can_take_detours();
  return has_more ? "; --auto tries other ways" : "";
}

void choice::compare(const candidate& made, file_report& report) {
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

}  // namespace

file_report choose_result(workshop& shop, const batch_options& options, const result_taker& take) {
  return choice(shop, options).run(take);
}

}  // namespace trellion::batch
