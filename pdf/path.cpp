#include "pdf/path.h"

#include <algorithm>
#include <cstdlib>

#include "pdf/numbers.h"

namespace trellion::pdf {
namespace {

/// The far side of a rectangle: both numbers are added before they are rounded, so that rectangles
/// side by side meet.
std::optional<std::int64_t> scaled_sum(std::string_view a, std::string_view b, int digits) {
  for (int more = std::min(digits + 3, most_digits); more >= digits; --more) {
    const auto first = scaled_number(a, more);
    const auto second = scaled_number(b, more);
    if (!first || !second) continue;
    std::int64_t unit = 1;
    for (int i = digits; i < more; ++i) unit *= 10;
    const std::int64_t sum = *first + *second;
    const std::int64_t rounded = (std::abs(sum) + unit / 2) / unit;
    if (rounded > max_coordinate) return std::nullopt;
    return sum < 0 ? -rounded : rounded;
  }
  return std::nullopt;
}

}  // namespace

void path::begin(const instruction& first, int digits, bool may_round) {
  corners_.clear();
  subpaths_.clear();
  digits_ = digits;
  may_round_ = may_round;
  open_ = 0;
  is_under_way_ = has_curves_ = is_odd_ = false;
  source_begin_ = first.begin;
  add(first);
}

void path::add(const instruction& step) {
  const std::span<const operand> operands = step.operands;
  source_end_ = step.end;
  if (!may_round_ && std::ranges::any_of(operands, [&](const operand& each) {
        return is_finer(each.text, digits_);
      })) {
    is_odd_ = true;
  }
  switch (step.code) {
    case op::move:
      finish_subpath();
      if (take(operands[0], operands[1])) {
        start_ = corners_.back();
        is_under_way_ = true;
      }
      break;
    case op::line:
    case op::curve:
      if (!is_under_way_) move_to(start_);
      has_curves_ = has_curves_ || step.code == op::curve;
      for (std::size_t i = 0; i + 1 < operands.size(); i += 2) take(operands[i], operands[i + 1]);
      break;
    case op::close:
      if (!is_under_way_) break;
      // The mark tells a closed point, which is drawn, from an open one.
      subpaths_.push_back({open_, static_cast<std::uint32_t>(corners_.size()), true});
      open_ = subpaths_.back().end;
      is_under_way_ = false;
      break;
    case op::rectangle:
      finish_subpath();
      add_rectangle(operands);
      break;
    default: is_odd_ = true;
  }
}

void path::move_to(const place& to) {
  start_ = to;
  corners_.push_back(to);
  is_under_way_ = true;
}

void path::finish_subpath() {
  if (!is_under_way_) return;
  is_under_way_ = false;
  if (corners_.size() - open_ == 1) {
    corners_.pop_back();
    return;
  }
  const bool returns = corners_[open_] == corners_.back();
  subpaths_.push_back({open_, static_cast<std::uint32_t>(corners_.size()), returns, true});
  open_ = subpaths_.back().end;
}

void path::end() {
  ended_with_point_ = is_under_way_ && corners_.size() - open_ == 1;
  finish_subpath();
  for (subpath& part : subpaths_)
    while (part.end - part.begin > 1 && corners_[part.begin] == corners_[part.end - 1]) --part.end;
}

bool path::take(const operand& x, const operand& y) {
  const auto scaled_x = scaled_number(x.text, digits_);
  const auto scaled_y = scaled_number(y.text, digits_);
  if (!scaled_x || !scaled_y) {
    is_odd_ = true;
    return false;
  }
  corners_.push_back({*scaled_x, *scaled_y});
  return true;
}

void path::add_rectangle(std::span<const operand> operands) {
  const auto left = scaled_number(operands[0].text, digits_);
  const auto bottom = scaled_number(operands[1].text, digits_);
  const auto right = scaled_sum(operands[0].text, operands[2].text, digits_);
  const auto top = scaled_sum(operands[1].text, operands[3].text, digits_);
  if (!left || !bottom || !right || !top) {
    is_odd_ = true;
    return;
  }
  start_ = {*left, *bottom};
  for (const place& corner :
       {start_, place{*right, *bottom}, place{*right, *top}, place{*left, *top}})
    corners_.push_back(corner);
  subpaths_.push_back({open_, static_cast<std::uint32_t>(corners_.size()), true});
  open_ = subpaths_.back().end;
}

bool path::is_closed() const {
  return std::ranges::all_of(subpaths_, [](const subpath& part) { return part.is_closed; });
}

}  // namespace trellion::pdf
