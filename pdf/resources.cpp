#include "pdf/resources.h"

#include <algorithm>
#include <array>
#include <utility>

namespace trellion::pdf {
namespace {

bool is_one(QPDFObjectHandle number) { return number.isNumber() && number.getNumericValue() == 1; }

/// The first name of a list is taken by whoever knows it, and all know this one.
bool is_normal(QPDFObjectHandle blend_mode) {
  if (blend_mode.isArray() && blend_mode.getArrayNItems() > 0) {
    blend_mode = blend_mode.getArrayItem(0);
  }
  return blend_mode.isNameAndEquals("/Normal") || blend_mode.isNameAndEquals("/Compatible");
}

bool is_on(QPDFObjectHandle flag) { return !flag.isBool() || flag.getBoolValue(); }

/// OP alone sets both kinds of overprint, op but one: off, it says nothing of the other.
std::optional<bool> without_overprint(QPDFObjectHandle dictionary) {
  const bool has_both = dictionary.hasKey("/OP");
  const bool has_fill = dictionary.hasKey("/op");
  if (has_both && is_on(dictionary.getKey("/OP"))) return false;
  if (has_fill && is_on(dictionary.getKey("/op"))) return false;
  return has_both ? std::optional(true) : std::nullopt;
}

graphics_parameters parameters_of(QPDFObjectHandle dictionary) {
  constexpr std::array<std::string_view, 7> understood = {"/Type",  "/ca", "/CA", "/BM",
                                                          "/SMask", "/op", "/OP"};
  graphics_parameters result;
  if (dictionary.hasKey("/ca")) result.opaque_fill = is_one(dictionary.getKey("/ca"));
  if (dictionary.hasKey("/CA")) result.opaque_stroke = is_one(dictionary.getKey("/CA"));
  if (dictionary.hasKey("/BM")) result.normal_blend = is_normal(dictionary.getKey("/BM"));
  if (dictionary.hasKey("/SMask")) {
    result.unmasked = dictionary.getKey("/SMask").isNameAndEquals("/None");
  }
  result.no_overprint = without_overprint(dictionary);
  const std::set<std::string> keys = dictionary.getKeys();
  result.only_these = std::all_of(keys.begin(), keys.end(), [&](const std::string& key) {
    return std::find(understood.begin(), understood.end(), key) != understood.end();
  });
  return result;
}

std::string as_key(std::string_view name) {
  return !name.empty() && name.front() == '/' ? std::string(name) : '/' + std::string(name);
}

bool is_none(QPDFObjectHandle colorant) { return colorant.isNameAndEquals("/None"); }

std::optional<std::size_t> components_of_device(std::string_view name) {
  if (name == "/DeviceGray") return 1;
  if (name == "/DeviceRGB") return 3;
  if (name == "/DeviceCMYK") return 4;
  return std::nullopt;
}

std::optional<std::size_t> components_of_profile(QPDFObjectHandle profile) {
  if (!profile.isStream()) return std::nullopt;
  QPDFObjectHandle count = profile.getDict().getKey("/N");
  if (!count.isInteger() || count.getIntValue() < 1) return std::nullopt;
  return static_cast<std::size_t>(count.getIntValue());
}

/// How many numbers make a colour of a space; nothing when what is painted in it does not cover
/// what is below. A colorant "None" paints nothing.
std::optional<std::size_t> components_of_space(QPDFObjectHandle space) {
  if (space.isName()) return components_of_device(space.getName());
  if (!space.isArray() || space.getArrayNItems() < 2) return std::nullopt;
  const std::string kind = space.getArrayItem(0).isName() ? space.getArrayItem(0).getName() : "";
  QPDFObjectHandle details = space.getArrayItem(1);
  if (kind == "/CalGray") return 1;
  if (kind == "/CalRGB" || kind == "/Lab") return 3;
  if (kind == "/ICCBased") return components_of_profile(details);
  if (kind == "/Separation" && details.isName() && !is_none(details)) return 1;
  if (kind == "/DeviceN" && details.isArray()) {
    const std::vector<QPDFObjectHandle> names = details.getArrayAsVector();
    if (std::none_of(names.begin(), names.end(), is_none)) return names.size();
  }
  return std::nullopt;
}

/// An index stands for a colour of another space, which has none itself.
std::optional<std::size_t> components_of_any(QPDFObjectHandle space) {
  if (!space.isArray() || space.getArrayNItems() < 2 ||
      !space.getArrayItem(0).isNameAndEquals("/Indexed")) {
    return components_of_space(space);
  }
  return components_of_space(space.getArrayItem(1)) ? std::optional<std::size_t>(1) : std::nullopt;
}

}  // namespace

QPDFObjectHandle resource_dictionary::look_up(const char* kind, std::string_view name) const {
  if (!resources_.isDictionary()) return QPDFObjectHandle::newNull();
  return resources_.getKey(kind).getKeyIfDict(as_key(name));
}

std::optional<graphics_parameters> resource_dictionary::graphics_state(
    std::string_view name) const {
  const auto known = known_states_.find(name);
  if (known != known_states_.end()) return known->second;
  QPDFObjectHandle dictionary = look_up("/ExtGState", name);
  std::optional<graphics_parameters> found;
  if (dictionary.isDictionary()) found = parameters_of(dictionary);
  known_states_.emplace(name, found);
  return found;
}

std::optional<std::size_t> resource_dictionary::components_of(std::string_view name) const {
  const std::optional<std::size_t> of_device = components_of_device(as_key(name));
  return of_device ? of_device : components_of_any(look_up("/ColorSpace", name));
}

std::optional<QPDFObjectHandle> resource_dictionary::form(std::string_view name) const {
  QPDFObjectHandle found = look_up("/XObject", name);
  return is_form(found) ? std::optional(found) : std::nullopt;
}

bool is_form(QPDFObjectHandle xobject) {
  return xobject.isStream() && xobject.getDict().getKey("/Subtype").isNameAndEquals("/Form");
}

}  // namespace trellion::pdf
