#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "pdf/content_reader.h"
#include "pdf/content_repair.h"
#include "pdf/texts.h"

namespace trellion::pdf {

// What every table of texts begins with.
inline constexpr text_id unknown_text = 0;  ///< nobody knows, so that it cannot be written either
inline constexpr text_id initial_text = 1;  ///< what a colour space begins with
inline constexpr text_id gray_text = 2;     ///< the spaces that come with an operator of their own
inline constexpr text_id rgb_text = 3;
inline constexpr text_id cmyk_text = 4;
text_table make_text_table();

/// How a solid line is written.
inline constexpr std::string_view solid_dash = "[] 0";

/// A colour: texts of its space (a name with its slash, or one of the above) and its components.
/// Equal colours have equal texts.
struct colour {
  text_id space = unknown_text;
  text_id components = unknown_text;

  [[nodiscard]] bool is_known() const { return space != unknown_text; }
  bool operator==(const colour&) const = default;
};

/// What shapes a stroke, as texts of the operands.
struct line_style {
  text_id width = unknown_text;
  text_id cap = unknown_text;
  text_id join = unknown_text;
  text_id miter = unknown_text;
  text_id dash = unknown_text;

  bool operator==(const line_style&) const = default;
};

/// The part of a matrix that turns and scales.
struct linear_map {
  double a = 1;
  double b = 0;
  double c = 0;
  double d = 1;

  bool operator==(const linear_map&) const = default;
};
/// By how much a map enlarges, in the direction where it does most, and least.
double largest_scale(const linear_map& map);
double smallest_scale(const linear_map& map);

/// The graphics state, as far as it matters for polygons.
struct graphics_state {
  colour fill;
  colour stroke;
  line_style line;
  text_id flatness = unknown_text;
  text_id intent = unknown_text;
  text_id parameters = unknown_text;  ///< the name that was set last
  linear_map matrix;
  bool opaque_fill = true;
  bool opaque_stroke = true;
  bool normal_blend = true;
  bool unmasked = true;
  bool no_overprint = true;

  [[nodiscard]] bool fills_opaquely() const {
    return opaque_fill && normal_blend && unmasked && no_overprint;
  }
  [[nodiscard]] bool strokes_opaquely() const {
    return opaque_stroke && normal_blend && unmasked && no_overprint;
  }
};

/// What an instruction does, seen from outside.
enum class effect : std::uint8_t {
  malformed,  ///< it cannot stand here
  quiet,      ///< changes nothing, or parts of the state that can be written again at any place
  path,       ///< goes on with a path
  paint,      ///< ends a path, with any of the operators that do
  other,      ///< anything else
};

/// Follows the graphics state through a content stream, and checks the order of its operators.
class state_tracker {
 public:
  /// All must outlive it.
  state_tracker(const content_surroundings& surroundings, text_table& texts);

  effect apply(const instruction& step);
  [[nodiscard]] const graphics_state& current() const { return now_; }
  /// How many q are open.
  [[nodiscard]] std::size_t depth() const { return saved_.size(); }
  /// Whether a stream may end here.
  [[nodiscard]] bool may_end() const { return saved_.empty() && where_ == place_in::page; }

 private:
  enum class place_in : std::uint8_t { page, path, text };

  effect apply_in_path(op code);
  effect apply_outside(const instruction& step);
  effect set_device_colour(colour& target, text_id space, std::span<const operand> components);
  effect set_space(colour& target, std::string_view name);
  effect set_components(colour& target, std::span<const operand> operands);
  effect set_line(text_id& target, const operand& value);
  effect set_quietly_if_same(text_id& target, const operand& value);
  effect set_dash(std::span<const operand> operands);
  effect set_parameters(std::string_view name);
  effect concatenate(std::span<const operand> operands);
  text_id text_of(std::span<const operand> operands);

  const content_surroundings& surroundings_;
  text_table& texts_;
  std::map<text_id, std::size_t> components_;  // of a colour, by its space
  graphics_state now_;
  std::vector<graphics_state> saved_;
  place_in where_ = place_in::page;
  std::string scratch_;
};

}  // namespace trellion::pdf
