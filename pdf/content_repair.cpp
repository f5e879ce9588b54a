#include "pdf/content_repair.h"

#include <utility>

#include "pdf/content_reader.h"
#include "pdf/graphics_state.h"
#include "pdf/numbers.h"
#include "pdf/path.h"
#include "pdf/run.h"
#include "pdf/stretch.h"
#include "pdf/texts.h"

namespace trellion::pdf {
namespace {

/// Goes through a content stream once. What follows one another and is understood is gathered in a
/// run; whatever else comes ends it, and stays as it is.
class repairer {
 public:
  repairer(std::string_view content, const content_surroundings& surroundings,
           const content_settings& settings)
      : content_(content),
        surroundings_(surroundings),
        settings_(settings),
        texts_(make_text_table()),
        reader_(content),
        state_(surroundings, texts_),
        run_(surroundings.scale, texts_) {}

  /// Whether the content is well-formed.
  bool repair_all();
  [[nodiscard]] const content_summary& summary() const { return summary_; }
  [[nodiscard]] bool has_changed() const { return copied_to_ != 0; }
  std::string result();

 private:
  /// A q inside of the run that is still open.
  struct open_save {
    std::size_t begin;
    std::size_t end;
    std::uint32_t n_polygons;  ///< before it
    graphics_state state;
  };

  bool handle(const instruction& step);
  void handle_outside(const instruction& step, effect what);
  void begin_run(std::size_t at);
  void end_run(std::size_t at, const graphics_state& after, bool after_matters);
  void repair(const stretch& where, std::uint32_t begin, std::uint32_t end);

  std::string_view content_;
  const content_surroundings& surroundings_;
  const content_settings& settings_;
  text_table texts_;
  content_reader reader_;
  state_tracker state_;
  path path_;
  bool in_path_ = false;

  run run_;
  bool may_round_ = true;  // numbers, in this run
  std::size_t run_begin_ = 0;
  graphics_state run_state_;  // where it begins
  std::vector<open_save> open_saves_;

  content_summary summary_;
  std::string result_;
  std::size_t copied_to_ = 0;  // what comes before is in the result
};

bool repairer::repair_all() {
  begin_run(0);
  while (true) {
    switch (reader_.next()) {
      case content_reader::outcome::malformed: return false;
      case content_reader::outcome::at_end:
        if (!state_.may_end()) return false;
        end_run(content_.size(), state_.current(), true);
        return true;
      case content_reader::outcome::read:
        if (!handle(reader_.current())) return false;
    }
  }
}

bool repairer::handle(const instruction& step) {
  if (in_path_ || step.code == op::move || step.code == op::rectangle) {
    switch (state_.apply(step)) {
      case effect::path:
        if (in_path_) {
          path_.add(step);
        } else {
          path_.begin(step, run_.gathered().digits, may_round_);
        }
        in_path_ = true;
        return true;
      case effect::paint:
        in_path_ = false;
        path_.end();
        if (!run_.take(path_, step.code, state_.current())) {
          end_run(path_.source_begin(), state_.current(), true);
          begin_run(step.end);
        }
        return true;
      default: return false;
    }
  }
  const graphics_state before = state_.current();
  const effect what = state_.apply(step);
  if (what == effect::malformed) return false;
  if (what == effect::quiet) return true;
  if (step.code == op::save) {
    open_saves_.push_back({step.begin, step.end, run_.size(), before});
    run_.separate();
    return true;
  }
  if (step.code == op::restore && !open_saves_.empty()) {
    open_saves_.pop_back();
    return true;
  }
  end_run(step.begin, before, step.code != op::restore);
  begin_run(step.end);
  return true;
}

void repairer::begin_run(std::size_t at) {
  run_begin_ = at;
  run_state_ = state_.current();
  const double scale = largest_scale(run_state_.matrix) * surroundings_.scale;
  const std::optional<int> digits = digits_for(settings_.precision, scale);
  may_round_ = digits.has_value();
  run_.begin(digits.value_or(most_digits), surroundings_.opaque);
}

/// The run is cut at each q that is open in it, since the Q comes behind what ends it.
void repairer::end_run(std::size_t at, const graphics_state& after, bool after_matters) {
  const std::uint32_t n_polygons = run_.size();
  const std::int64_t n_filled = count_filled(run_.gathered(), 0, n_polygons);
  summary_.polygons_read += n_filled;
  if (n_filled < 2) {
    summary_.polygons_left += n_filled;
    open_saves_.clear();
    return;
  }
  stretch where;
  where.content = content_;
  where.begin = run_begin_;
  where.before = run_state_;
  std::uint32_t begin = 0;
  for (const open_save& each : open_saves_) {
    where.end = each.begin;
    where.after = each.state;
    repair(where, begin, each.n_polygons);
    where.begin = each.end;
    where.before = each.state;
    begin = each.n_polygons;
  }
  open_saves_.clear();
  where.end = at;
  where.after = after;
  where.after_matters = after_matters;
  repair(where, begin, n_polygons);
}

void repairer::repair(const stretch& where, std::uint32_t begin, std::uint32_t end) {
  const auto repair_mesh = [&](const painted_mesh& mesh) {
    return repair_stretch(mesh, where, settings_, surroundings_.scale, texts_);
  };
  const std::int64_t n_filled = count_filled(run_.gathered(), begin, end);
  std::optional<stretch_text> repaired;
  if (n_filled >= 2) {
    repaired = begin == 0 && end == run_.size() ? repair_mesh(run_.gathered())
                                                : repair_mesh(part_of(run_.gathered(), begin, end));
  }
  if (!repaired) {
    summary_.polygons_left += n_filled;
    return;
  }
  summary_.polygons_left += repaired->polygons;
  const std::string_view unchanged = content_.substr(copied_to_, where.begin - copied_to_);
  if (result_.empty()) {
    // The text can be nearly all, and then there should not be two of it.
    result_ = std::move(repaired->text.insert(0, unchanged));
  } else {
    (result_ += unchanged) += repaired->text;
  }
  copied_to_ = where.end;
}

std::string repairer::result() {
  result_ += content_.substr(copied_to_);
  return std::move(result_);
}

}  // namespace

std::optional<std::string> repair_content(std::string_view content,
                                          const content_surroundings& surroundings,
                                          const content_settings& settings,
                                          content_summary& summary) {
  repairer work(content, surroundings, settings);
  const bool is_well_formed = work.repair_all();
  summary = work.summary();
  if (!is_well_formed) {
    summary.polygons_left = summary.polygons_read;
    return std::nullopt;
  }
  if (!work.has_changed()) return std::nullopt;
  return work.result();
}

std::optional<std::vector<xobject_use>> xobjects_used(std::string_view content,
                                                      const content_surroundings& surroundings) {
  text_table texts = make_text_table();
  content_reader reader(content);
  state_tracker state(surroundings, texts);
  std::vector<xobject_use> uses;
  while (true) {
    switch (reader.next()) {
      case content_reader::outcome::malformed: return std::nullopt;
      case content_reader::outcome::at_end:
        if (!state.may_end()) return std::nullopt;
        return uses;
      case content_reader::outcome::read: break;
    }
    const instruction& step = reader.current();
    if (state.apply(step) == effect::malformed) return std::nullopt;
    if (step.code != op::draw_object) continue;
    const graphics_state& now = state.current();
    uses.push_back({plain_name(step.operands[0].text), largest_scale(now.matrix),
                    surroundings.opaque && now.fills_opaquely() && now.strokes_opaquely()});
  }
}

}  // namespace trellion::pdf
