#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace trellion::pdf {

/// How the hairlines between different colours are closed.
enum class closing : std::uint8_t {
  none,
  under,   ///< a colour is painted under its neighbours too
  stroke,  ///< outlines are stroked in their own colour
};

struct content_settings {
  double precision = 0.001;  ///< points on the page that a coordinate may be moved by, about
  bool reorder = true;       ///< same colours come together
  closing close = closing::none;
  double close_width = 0.3;  ///< points, of the stroke
};

/// What an ExtGState dictionary sets, as far as it matters here. What it leaves alone has no value.
struct graphics_parameters {
  std::optional<bool> opaque_fill;    ///< ca is 1
  std::optional<bool> opaque_stroke;  ///< CA is 1
  std::optional<bool> normal_blend;   ///< BM is Normal or Compatible
  std::optional<bool> unmasked;       ///< SMask is None
  std::optional<bool> no_overprint;   ///< neither op nor OP is on
  bool only_these = false;            ///< no key of another meaning is in it (Type aside)
};

/// What the names in a content stream stand for.
class named_resources {
 public:
  virtual ~named_resources() = default;
  /// Nothing when the name stands for nothing that can be understood.
  [[nodiscard]] virtual std::optional<graphics_parameters> graphics_state(
      std::string_view name) const = 0;
  /// How many numbers make a colour of a space. Nothing when it has others than plain ones, which
  /// cover what is below: patterns, say.
  [[nodiscard]] virtual std::optional<std::size_t> components_of(std::string_view name) const = 0;
};

/// How a content stream comes to be drawn.
struct content_surroundings {
  const named_resources& resources;
  double scale = 1;         ///< points on the page per unit of its space, the largest anywhere
  bool opaque = true;       ///< nothing it is drawn under makes it transparent
  bool state_known = true;  ///< it begins with the state of a fresh page
};

struct content_summary {
  std::int64_t polygons_read = 0;
  std::int64_t polygons_left = 0;
};

/// A use of an XObject by `Do`.
struct xobject_use {
  std::string name;
  double scale = 1;  ///< by which the matrix at that place enlarges, at most
  bool opaque = true;
};

/// The uses in a content stream, and nothing when the stream is malformed (then nobody knows).
std::optional<std::vector<xobject_use>> xobjects_used(std::string_view content,
                                                      const content_surroundings& surroundings);

/// Repairs a content stream. Nothing when there is nothing to gain, or it is malformed (a bad
/// number, unbalanced q and Q, operands that do not fit): it is to stay byte for byte. The summary
/// counts polygons in either case.
std::optional<std::string> repair_content(std::string_view content,
                                          const content_surroundings& surroundings,
                                          const content_settings& settings,
                                          content_summary& summary);

}  // namespace trellion::pdf
