#include <algorithm>
#include <optional>
#include <string>

#include "drawn_content.h"
#include "few_resources.h"
#include "fuzz_support.h"
#include "pdf/content_repair.h"
#include "random_content.h"

// A repair of a content stream: what it shows stays the same, and that of a second repair. The
// first two bytes choose the settings and what surrounds the content. The others are the content;
// or choices that one on a small grid is made by, in which more polygons meet than by chance.

namespace {

using namespace trellion::pdf;
using trellion::fuzzing::require;

const testing::few_resources resources;

content_settings settings_from(unsigned char byte) {
  content_settings settings;
  settings.reorder = (byte & 1) == 0;
  if ((byte & 2) != 0) settings.close = closing::under;
  if ((byte & 4) != 0) settings.close = closing::stroke;
  if ((byte & 16) != 0) settings.precision = 0.02;
  return settings;
}

content_surroundings surroundings_from(unsigned char byte) {
  content_surroundings surroundings{resources};
  surroundings.state_known = (byte & 1) == 0;
  surroundings.opaque = (byte & 2) == 0;
  if ((byte & 4) != 0) surroundings.scale = 30;
  if ((byte & 8) != 0) surroundings.scale = 0.02;
  return surroundings;
}

std::string made_by(std::string_view choices) {
  return testing::random_content([&](unsigned n) {
    if (choices.empty()) return 0U;
    const unsigned choice = static_cast<unsigned char>(choices[0]) % n;
    choices.remove_prefix(1);
    return choice;
  });
}

/// Nothing when that cannot be told.
std::optional<testing::drawn_content> drawn(std::string_view content,
                                            const content_surroundings& surroundings,
                                            const content_settings& settings) {
  try {
    return testing::drawn_content(content, surroundings, settings);
  } catch (const testing::not_understood&) {
    return std::nullopt;
  }
}

bool same_uses(const xobject_use& a, const xobject_use& b) {
  return a.name == b.name && a.scale == b.scale && a.opaque == b.opaque;
}

/// Repairs a content; nothing when nothing changes.
std::optional<std::string> repaired(std::string_view content,
                                    const content_surroundings& surroundings,
                                    const content_settings& settings) {
  content_summary summary;
  auto result = repair_content(content, surroundings, settings, summary);
  if (!result) {
    require(summary.polygons_left == summary.polygons_read,
            "nothing is joined where nothing changes");
    return std::nullopt;
  }
  require(settings.close != closing::none || result->size() < content.size(),
          "a repair makes shorter");
  const auto uses = xobjects_used(content, surroundings);
  const auto uses_now = xobjects_used(*result, surroundings);
  require(uses && uses_now && std::ranges::equal(*uses, *uses_now, same_uses),
          "the same objects are drawn in the same way");
  return result;
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 2) return 0;
  const content_settings settings = settings_from(data[0]);
  const content_surroundings surroundings = surroundings_from(data[1]);
  const bool is_made = (data[0] & 8) != 0;
  const std::string_view bytes = trellion::fuzzing::as_text(data + 2, size - 2);
  const std::string content = is_made ? made_by(bytes) : std::string(bytes);
  require(!is_made || xobjects_used(content, surroundings), "what is made is well-formed");

  const auto once = repaired(content, surroundings, settings);
  if (!once) return 0;
  const auto before = drawn(content, surroundings, settings);
  if (!before) return 0;
  const auto twice = repaired(*once, surroundings, settings);
  for (const auto& result : {once, twice}) {
    if (!result) continue;
    const auto after = drawn(*result, surroundings, settings);
    require(after.has_value(), "what comes out can be understood");
    const std::string difference = before->difference(*after);
    if (difference.empty()) continue;
    std::fprintf(stderr, "%s\nwas\n%s\nis\n%s\n", difference.c_str(), content.c_str(),
                 result->c_str());
    require(false, "the same is shown");
  }
  return 0;
}
