#include "pdf/graphics_state.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <utility>

#include "pdf/numbers.h"

namespace trellion::pdf {
namespace {

/// The state of a fresh page.
graphics_state fresh_state(text_table& texts) {
  graphics_state result;
  result.fill = result.stroke = {gray_text, texts.id_of("0")};
  result.line = {texts.id_of("1"), texts.id_of("0"), texts.id_of("0"), texts.id_of("10"),
                 texts.id_of(solid_dash)};
  result.flatness = texts.id_of("0");
  result.intent = texts.id_of("/RelativeColorimetric");
  return result;
}

linear_map product(const linear_map& first, const linear_map& then) {
  return {first.a * then.a + first.b * then.c, first.a * then.b + first.b * then.d,
          first.c * then.a + first.d * then.c, first.c * then.b + first.d * then.d};
}

}  // namespace

text_table make_text_table() {
  text_table result;
  for (const std::string_view text : {"?", "", "g", "rg", "k"}) result.id_of(text);
  return result;
}

double largest_scale(const linear_map& map) {
  const double squares = map.a * map.a + map.b * map.b + map.c * map.c + map.d * map.d;
  const double difference = map.a * map.a + map.b * map.b - map.c * map.c - map.d * map.d;
  return std::sqrt((squares + std::hypot(difference, 2 * (map.a * map.c + map.b * map.d))) / 2);
}

double smallest_scale(const linear_map& map) {
  const double largest = largest_scale(map);
  return largest > 0 ? std::abs(map.a * map.d - map.b * map.c) / largest : 0;
}

state_tracker::state_tracker(const content_surroundings& surroundings, text_table& texts)
    : surroundings_(surroundings), texts_(texts) {
  if (surroundings.state_known) now_ = fresh_state(texts);
}

effect state_tracker::apply(const instruction& step) {
  if (where_ == place_in::path) return apply_in_path(step.code);
  switch (step.code) {
    case op::move:
    case op::rectangle:
      if (where_ == place_in::text) return effect::malformed;
      where_ = place_in::path;
      return effect::path;
    case op::line:
    case op::curve:
    case op::close:
    case op::clip: return effect::malformed;
    case op::end_path: return where_ == place_in::page ? effect::quiet : effect::malformed;
    case op::begin_text:
      if (where_ == place_in::text) return effect::malformed;
      where_ = place_in::text;
      return effect::other;
    case op::end_text:
      if (where_ != place_in::text) return effect::malformed;
      where_ = place_in::page;
      return effect::other;
    case op::save:
      if (where_ != place_in::page) return effect::malformed;
      saved_.push_back(now_);
      return effect::other;
    case op::restore:
      if (where_ != place_in::page || saved_.empty()) return effect::malformed;
      now_ = saved_.back();
      saved_.pop_back();
      return effect::other;
    default: return apply_outside(step);
  }
}

effect state_tracker::apply_in_path(op code) {
  switch (code) {
    case op::move:
    case op::line:
    case op::curve:
    case op::close:
    case op::rectangle:
    case op::clip:
    case op::comment: return effect::path;
    case op::end_path:
    case op::fill:
    case op::fill_even_odd:
    case op::stroke:
    case op::close_stroke:
    case op::both:
    case op::both_even_odd:
    case op::close_both:
    case op::close_both_even_odd: where_ = place_in::page; return effect::paint;
    default: return effect::malformed;
  }
}

effect state_tracker::apply_outside(const instruction& step) {
  const std::span<const operand> operands = step.operands;
  switch (step.code) {
    case op::matrix: return concatenate(operands);
    case op::fill_gray: return set_device_colour(now_.fill, gray_text, operands);
    case op::fill_rgb: return set_device_colour(now_.fill, rgb_text, operands);
    case op::fill_cmyk: return set_device_colour(now_.fill, cmyk_text, operands);
    case op::fill_space: return set_space(now_.fill, operands[0].text);
    case op::fill_colour: return set_components(now_.fill, operands);
    case op::stroke_gray: return set_device_colour(now_.stroke, gray_text, operands);
    case op::stroke_rgb: return set_device_colour(now_.stroke, rgb_text, operands);
    case op::stroke_cmyk: return set_device_colour(now_.stroke, cmyk_text, operands);
    case op::stroke_space: return set_space(now_.stroke, operands[0].text);
    case op::stroke_colour: return set_components(now_.stroke, operands);
    case op::line_width: return set_line(now_.line.width, operands[0]);
    case op::line_cap: return set_line(now_.line.cap, operands[0]);
    case op::line_join: return set_line(now_.line.join, operands[0]);
    case op::miter_limit: return set_line(now_.line.miter, operands[0]);
    case op::dash: return set_dash(operands);
    case op::flatness: return set_quietly_if_same(now_.flatness, operands[0]);
    case op::intent: return set_quietly_if_same(now_.intent, operands[0]);
    case op::parameters: return set_parameters(operands[0].text);
    default: return effect::other;
  }
}

text_id state_tracker::text_of(std::span<const operand> operands) {
  scratch_.clear();
  for (const operand& each : operands) {
    if (!scratch_.empty()) scratch_ += ' ';
    if (each.kind == operand_kind::number) {
      append_shortest(each.text, scratch_);
    } else {
      scratch_ += each.text;
    }
  }
  return texts_.id_of(scratch_);
}

effect state_tracker::set_device_colour(colour& target, text_id space,
                                        std::span<const operand> components) {
  target = {space, text_of(components)};
  return effect::quiet;
}

effect state_tracker::set_space(colour& target, std::string_view name) {
  if (name == "/DeviceGray") {
    target = {gray_text, texts_.id_of("0")};
  } else if (name == "/DeviceRGB") {
    target = {rgb_text, texts_.id_of("0 0 0")};
  } else if (name == "/DeviceCMYK") {
    target = {cmyk_text, texts_.id_of("0 0 0 1")};
  } else {
    const std::optional<std::size_t> components =
        name == "/Pattern" ? std::nullopt : surroundings_.resources.components_of(plain_name(name));
    if (!components) {
      target = {};
      return effect::other;
    }
    target = {texts_.id_of(name), initial_text};
    components_[target.space] = *components;
  }
  return effect::quiet;
}

effect state_tracker::set_components(colour& target, std::span<const operand> operands) {
  if (!target.is_known() || operands.back().kind == operand_kind::name) {
    // A pattern, or it may be one. The space stays what it is, but nothing is known of it.
    target = {};
    return effect::other;
  }
  const std::size_t n_components = target.space == gray_text   ? 1
                                   : target.space == rgb_text  ? 3
                                   : target.space == cmyk_text ? 4
                                                               : components_.at(target.space);
  if (operands.size() != n_components) return effect::malformed;
  target.components = text_of(operands);
  return effect::quiet;
}

effect state_tracker::set_line(text_id& target, const operand& value) {
  target = text_of({&value, 1});
  return effect::quiet;
}

effect state_tracker::set_quietly_if_same(text_id& target, const operand& value) {
  const text_id before = target;
  target = text_of({&value, 1});
  return before == target ? effect::quiet : effect::other;
}

effect state_tracker::set_dash(std::span<const operand> operands) {
  constexpr std::string_view between(" \t\r\n\f\0[]", 8);
  std::string_view lengths = operands[0].text;
  scratch_ = "[";
  while (true) {
    lengths.remove_prefix(std::min(lengths.find_first_not_of(between), lengths.size()));
    if (lengths.empty()) break;
    const std::string_view length = lengths.substr(0, lengths.find_first_of(between));
    if (!scaled_number(length, 0)) return effect::malformed;
    if (scratch_.size() > 1) scratch_ += ' ';
    append_shortest(length, scratch_);
    lengths.remove_prefix(length.size());
  }
  if (scratch_.size() == 1) {
    scratch_ = solid_dash;  // which has no phase
  } else {
    scratch_ += "] ";
    append_shortest(operands[1].text, scratch_);
  }
  now_.line.dash = texts_.id_of(scratch_);
  return effect::quiet;
}

effect state_tracker::set_parameters(std::string_view name) {
  const auto parameters = surroundings_.resources.graphics_state(plain_name(name));
  const text_id set_before = std::exchange(now_.parameters, texts_.id_of(name));
  if (!parameters) {
    now_.opaque_fill = now_.opaque_stroke = false;
    now_.normal_blend = now_.unmasked = now_.no_overprint = false;
  }
  bool is_quiet = parameters && parameters->only_these;
  if (!is_quiet) {
    now_.line = {};
    now_.flatness = now_.intent = unknown_text;
  }
  if (!parameters) return effect::other;
  const auto set = [&](bool& target, const std::optional<bool>& value) {
    if (!value || *value == target) return;
    target = *value;
    is_quiet = false;
  };
  set(now_.opaque_fill, parameters->opaque_fill);
  set(now_.opaque_stroke, parameters->opaque_stroke);
  set(now_.normal_blend, parameters->normal_blend);
  set(now_.unmasked, parameters->unmasked);
  set(now_.no_overprint, parameters->no_overprint);
  // Less than opaque can be another degree of it than before.
  if (now_.parameters != set_before &&
      (parameters->opaque_fill == false || parameters->opaque_stroke == false ||
       parameters->no_overprint == false))
    is_quiet = false;
  // A new mask, or another mode, may be another one of the kind that is not understood.
  if (!now_.unmasked || !now_.normal_blend) is_quiet = false;
  return is_quiet ? effect::quiet : effect::other;
}

effect state_tracker::concatenate(std::span<const operand> operands) {
  const linear_map map = {to_double(operands[0].text), to_double(operands[1].text),
                          to_double(operands[2].text), to_double(operands[3].text)};
  now_.matrix = product(map, now_.matrix);
  const bool is_identity =
      map == linear_map() && to_double(operands[4].text) == 0 && to_double(operands[5].text) == 0;
  return is_identity ? effect::quiet : effect::other;
}

}  // namespace trellion::pdf
