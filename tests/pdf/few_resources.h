#pragma once

#include <optional>
#include <string_view>

#include "pdf/content_repair.h"

namespace trellion::pdf::testing {

/// What some names stand for in the contents of tests. /A sets what is set on a fresh page.
class few_resources : public named_resources {
 public:
  [[nodiscard]] std::optional<graphics_parameters> graphics_state(
      std::string_view name) const override {
    graphics_parameters result;
    result.only_these = name != "/Line";
    if (name == "/A" || name == "/Half") result.opaque_fill = name == "/A";
    if (name == "/Pale" || name == "/Paler") result.opaque_stroke = false;
    if (name == "/Blend") result.normal_blend = false;
    if (name == "/Mask") result.unmasked = false;
    if (name == "/Over") result.no_overprint = false;
    if (name == "/Plain") {
      result.opaque_fill = result.opaque_stroke = result.normal_blend = result.unmasked =
          result.no_overprint = true;
    }
    const bool is_known = name == "/Line" || result.opaque_fill || result.opaque_stroke ||
                          result.normal_blend || result.unmasked || result.no_overprint;
    return is_known ? std::optional(result) : std::nullopt;
  }
  [[nodiscard]] std::optional<std::size_t> components_of(std::string_view name) const override {
    if (name == "/S") return 1;
    return name == "/T" ? std::optional<std::size_t>(2) : std::nullopt;
  }
};

}  // namespace trellion::pdf::testing
