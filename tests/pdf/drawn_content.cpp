#include "drawn_content.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <functional>
#include <utility>

#include "content_words.h"
#include "meshes.h"

namespace trellion::pdf::testing {
namespace {

constexpr int decimals = 6;
constexpr std::int64_t unit = 1000000;
constexpr std::int64_t largest = std::int64_t{1} << 60;

constexpr std::int64_t raster_size = 30;
constexpr std::int64_t raster_step = 311017;
constexpr place raster_offset = {-313009, -277013};

constexpr std::string_view painters[] = {"f", "F", "f*", "B", "B*", "b", "b*", "S", "s", "n"};

std::int64_t to_units(const std::string& word) {
  const auto result = scaled(word, decimals);
  if (!result) throw not_understood();
  return *result;
}

/// The distance of a place from the straight way from a to b, or infinity beyond a limit.
double distance(const place& a, const place& b, const place& at, double limit) {
  const auto beyond = [limit](std::int64_t c, std::int64_t d, std::int64_t x) {
    return static_cast<double>(std::max(std::min(c, d) - x, x - std::max(c, d))) > limit;
  };
  if (beyond(a.x, b.x, at.x) || beyond(a.y, b.y, at.y)) return INFINITY;
  const auto x = static_cast<long double>(b.x - a.x);
  const auto y = static_cast<long double>(b.y - a.y);
  const auto to_x = static_cast<long double>(at.x - a.x);
  const auto to_y = static_cast<long double>(at.y - a.y);
  const long double length = x * x + y * y;
  const long double along =
      length > 0 ? std::clamp((to_x * x + to_y * y) / length, 0.0L, 1.0L) : 0.0L;
  return static_cast<double>(std::hypot(to_x - along * x, to_y - along * y));
}

bool is_flat(const std::vector<place>& corners) {
  const place& a = corners.front();
  const auto b = std::ranges::find_if(corners, [&](const place& at) { return at != a; });
  return b == corners.end() ||
         std::ranges::all_of(corners, [&](const place& c) { return turn(a, *b, c) == 0; });
}

std::uint64_t mixed(std::uint64_t a, std::uint64_t b) {
  const std::uint64_t spread = (a ^ (b + 0x9e3779b97f4a7c15U)) * 0xff51afd7ed558ccdU;
  return spread ^ spread >> 29U;
}

}  // namespace

drawn_content::drawn_content(std::string_view content, const content_surroundings& surroundings,
                             const content_settings& settings)
    : surroundings_(surroundings),
      settings_(settings),
      seen_(raster_size * raster_size),
      unsure_(seen_.size()) {
  begin_state(surroundings.state_known);
  set_points();
  content_words words(content);
  for (std::string word = words.next(); !word.empty(); word = words.next()) {
    if (is_number(word) || std::string_view("/[<(").find(word[0]) != std::string_view::npos ||
        word == "true" || word == "false" || word == "null") {
      if (word.find('#') != std::string::npos) throw not_understood();
      operands_.push_back(word);
    } else if (word == "BI") {
      const std::string image = words.text_up_to("EI");
      if (image.empty()) throw not_understood();
      show_all(image);
    } else {
      perform(word);
      operands_.clear();
    }
  }
  show_all("the end");
}

void drawn_content::begin_state(bool is_known) {
  now_.shown.assign(seen_.size(), true);
  now_.values = {{"g", "/DeviceGray"},
                 {"g=", "0"},
                 {"G", "/DeviceGray"},
                 {"G=", "0"},
                 {"w", "1"},
                 {"j", "0"},
                 {"J", "0"},
                 {"M", "10"},
                 {"d", "[] 0"},
                 {"i", "0"},
                 {"ri", "/RelativeColorimetric"}};
  if (!is_known) {
    for (auto& [key, value] : now_.values) value = "?";
  }
}

const std::string& drawn_content::operand(std::size_t index) const {
  if (index >= operands_.size()) throw not_understood();
  return operands_[index];
}

std::string drawn_content::operands() const {
  std::string result;
  for (const std::string& each : operands_) result += (result.empty() ? "" : " ") + each;
  return result;
}

place drawn_content::place_at(std::size_t index) const {
  return {to_units(operand(index)), to_units(operand(index + 1))};
}

void drawn_content::perform(const std::string& name) {
  if (add_to_path(name) || set_state(name)) return;
  if (std::ranges::find(painters, name) != std::end(painters)) {
    paint_path(name);
  } else {
    show_all(name);
  }
}

bool drawn_content::add_to_path(const std::string& name) {
  if (name == "m") {
    path_.push_back({{place_at(0)}});
  } else if (name == "re") {
    const place a = place_at(0);
    const place size = place_at(2);
    const place b = {a.x + size.x, a.y + size.y};
    path_.push_back({{a, {b.x, a.y}, b, {a.x, b.y}}, true});
  } else if (name == "W" || name == "W*") {
    clip_rule_ = name;
  } else if (name == "l" || name == "c" || name == "v" || name == "y" || name == "h") {
    if (path_.empty()) throw not_understood();
    if (name == "h") {
      path_.back().is_closed = true;
      return true;
    }
    if (path_.back().is_closed) path_.push_back({{path_.back().corners.front()}});
    if (name == "l") {
      path_.back().corners.push_back(place_at(0));
    } else {
      add_curve(name);
    }
  } else {
    return false;
  }
  return true;
}

void drawn_content::add_curve(const std::string& name) {
  std::vector<place>& corners = path_.back().corners;
  const place a = corners.back();
  const place b = name == "v" ? a : place_at(0);
  const place c = place_at(name == "c" ? 2 : name == "v" ? 0 : 2);
  const place d = place_at(name == "c" ? 4 : 2);
  constexpr int n_parts = 6;
  for (int i = 1; i <= n_parts; ++i) {
    const double t = static_cast<double>(i) / n_parts;
    const auto at = [&](std::int64_t place::*x) {
      const double s = 1 - t;
      return std::llround(
          s * s * s * static_cast<double>(a.*x) + 3 * s * s * t * static_cast<double>(b.*x) +
          3 * s * t * t * static_cast<double>(c.*x) + t * t * t * static_cast<double>(d.*x));
    };
    corners.push_back({at(&place::x), at(&place::y)});
  }
}

bool drawn_content::set_state(const std::string& name) {
  constexpr std::string_view simple[] = {"w",  "j",  "J",  "M",  "i",  "ri", "Tc",
                                         "Tw", "Tz", "TL", "Tf", "Tr", "Ts"};
  if (name == "q") {
    saved_.push_back(now_);
  } else if (name == "Q") {
    if (saved_.empty()) throw not_understood();
    const bool is_elsewhere = now_.matrix != saved_.back().matrix;
    now_ = std::move(saved_.back());
    saved_.pop_back();
    if (is_elsewhere) set_points();
  } else if (name == "cm") {
    concatenate();
  } else if (name == "g" || name == "G") {
    set_colour(name, "/DeviceGray");
  } else if (name == "rg" || name == "RG") {
    set_colour(name == "rg" ? "g" : "G", "/DeviceRGB");
  } else if (name == "k" || name == "K") {
    set_colour(name == "k" ? "g" : "G", "/DeviceCMYK");
  } else if (name == "cs" || name == "CS") {
    set_space(name == "cs" ? "g" : "G", operand(0));
  } else if (name == "sc" || name == "scn" || name == "SC" || name == "SCN") {
    const std::string key = name[0] == 's' ? "g" : "G";
    set_colour(key, now_.values[key]);
  } else if (name == "gs") {
    set_parameters(operand(0));
  } else if (name == "d") {
    now_.values[name] = operand(0) == "[]" ? "[] 0" : operands();  // a solid line has no phase
  } else if (std::ranges::find(simple, name) != std::end(simple)) {
    now_.values[name] = operands();
  } else {
    return false;
  }
  return true;
}

void drawn_content::set_colour(const std::string& key, const std::string& space) {
  now_.values[key + '='] = operands();
  now_.values[key] = space;
}

void drawn_content::set_space(const std::string& key, const std::string& space) {
  now_.values[key] = space;
  now_.values[key + '='] = space == "/DeviceGray"   ? "0"
                           : space == "/DeviceRGB"  ? "0 0 0"
                           : space == "/DeviceCMYK" ? "0 0 0 1"
                                                    : "first";
}

void drawn_content::set_parameters(const std::string& name) {
  const auto set = [&](const char* key, const std::optional<bool>& is_plain) {
    if (is_plain) now_.values[key] = *is_plain ? "" : name;
  };
  const auto parameters = surroundings_.resources.graphics_state(name);
  if (!parameters || !parameters->only_these) {
    for (auto& [key, value] : now_.values) {
      if (key[0] != 'g' && key[0] != 'G' && key[0] != '/') value = '?' + name;
    }
  }
  const graphics_parameters all =
      parameters.value_or(graphics_parameters{false, false, false, false, false, false});
  set("/ca", all.opaque_fill);
  set("/CA", all.opaque_stroke);
  set("/BM", all.normal_blend);
  set("/SMask", all.unmasked);
  set("/OP", all.no_overprint);
}

void drawn_content::concatenate() {
  std::array<double, 6> m{};
  for (std::size_t i = 0; i < m.size(); ++i) m[i] = to_number(operand(i));
  const std::array<double, 6> n = now_.matrix;
  now_.matrix = {m[0] * n[0] + m[1] * n[2],        m[0] * n[1] + m[1] * n[3],
                 m[2] * n[0] + m[3] * n[2],        m[2] * n[1] + m[3] * n[3],
                 m[4] * n[0] + m[5] * n[2] + n[4], m[4] * n[1] + m[5] * n[3] + n[5]};
  set_points();
}

/// It is the places of the raster that go to user space: those of paths stay exact.
void drawn_content::set_points() {
  const auto& [a, b, c, d, e, f] = now_.matrix;
  const double area = a * d - b * c;
  const double scale = surroundings_.scale;
  // Both coordinates of a corner may be moved by the precision and a little more, then a side by
  // the precision; and all that twice.
  constexpr double moves = 5.5;
  slack_ = moves * settings_.precision / scale / std::sqrt(std::abs(area)) * unit + 2;
  thin_ = 0.3 * unit / scale / std::sqrt(a * a + b * b + c * c + d * d);
  if (!(slack_ < static_cast<double>(largest))) throw not_understood();
  points_.clear();
  for (std::size_t i = 0; i < seen_.size(); ++i) {
    const auto n = static_cast<std::int64_t>(i);
    const place at = {n % raster_size * raster_step + raster_offset.x,
                      n / raster_size * raster_step + raster_offset.y};
    const double x = static_cast<double>(at.x) - e * unit;
    const double y = static_cast<double>(at.y) - f * unit;
    const double user_x = (d * x - c * y) / area;
    const double user_y = (a * y - b * x) / area;
    if (!(std::max(std::abs(user_x), std::abs(user_y)) < static_cast<double>(largest)))
      throw not_understood();
    points_.push_back({std::llround(user_x), std::llround(user_y)});
  }
}

void drawn_content::paint_path(const std::string& name) {
  std::erase_if(path_, [](const outline& o) { return o.corners.size() == 1 && !o.is_closed; });
  if ((name[0] == 'b' || name == "s") && !path_.empty()) path_.back().is_closed = true;
  const bool fills = name[0] != 'S' && name[0] != 's' && name != "n";
  const bool strokes = name != "n" && name[0] != 'f' && name[0] != 'F';
  auto& values = now_.values;
  const bool is_even_odd = name.ends_with('*');
  if (fills && !path_.empty()) {
    const bool is_thin =
        std::ranges::all_of(path_, [](const outline& o) { return is_flat(o.corners); });
    paint(values["g"] + ' ' + values["g="], "/ca", {true, is_even_odd, is_thin ? thin_ : 0});
  }
  if (strokes && !path_.empty() && settings_.close != closing::stroke) {
    const double half = to_number(values["w"]) * unit / 2;
    const double mitre = half * std::max(1.0, to_number(values["M"]));
    const bool is_mitred = values["j"] == "0" && mitre > 5 * thin_;
    const bool has_gaps = is_mitred || values["d"] != "[] 0";
    paint(
        values["G"] + ' ' + values["G="], "/CA",
        {false, false, std::max(half, thin_), has_gaps ? std::hash<std::string>()(corners()) : 0});
  }
  if (!clip_rule_.empty()) clip();
  path_.clear();
}

std::string drawn_content::corners() const {
  std::string result;
  for (const outline& each : path_) {
    result += each.is_closed ? " closed" : " open";
    for (const place& at : each.corners)
      result += ' ' + std::to_string(at.x) + ' ' + std::to_string(at.y);
  }
  return result;
}

void drawn_content::clip() {
  for (std::size_t i = 0; i < seen_.size(); ++i) {
    if (!is_inside(points_[i], clip_rule_ == "W*")) now_.shown[i] = false;
  }
  clip_rule_.clear();
}

bool drawn_content::is_inside(const place& at, bool is_even_odd) const {
  int sum = 0;
  for (const outline& each : path_) sum += winding(each.corners, at);
  return is_even_odd ? sum % 2 != 0 : sum != 0;
}

drawn_content::covering drawn_content::covers(const place& at, const region& by) const {
  double nearest = INFINITY;
  double nearest_side = INFINITY;
  for (const outline& each : path_) {
    place before = each.corners.back();
    bool is_drawn = each.is_closed;
    for (const place& corner : each.corners) {
      const double its = distance(before, corner, at, by.half + slack_);
      if (is_drawn) nearest = std::min(nearest, its);
      nearest_side = std::min(nearest_side, its);
      before = corner;
      is_drawn = true;
    }
  }
  const bool is_gap = by.gaps != 0 && mixed(mixed(by.gaps, std::bit_cast<std::uint64_t>(at.x)),
                                            std::bit_cast<std::uint64_t>(at.y)) %
                                              2 ==
                                          0;
  if (by.half > 0 && nearest <= by.half - slack_ && !is_gap) return covering::yes;
  if (by.fills && nearest_side > slack_ && is_inside(at, by.is_even_odd)) return covering::yes;
  if (by.half > 0 && nearest <= by.half + slack_ && !is_gap) return covering::unsure;
  return by.fills && nearest_side <= slack_ ? covering::unsure : covering::no;
}

void drawn_content::paint(const std::string& colour, const char* alpha, const region& by) {
  std::string with = colour;
  for (const char* key : {alpha, "/BM", "/SMask", "/OP"}) with += now_.values[key];
  const bool is_opaque = with == colour && surroundings_.opaque;
  box reach = {path_[0].corners[0], path_[0].corners[0]};
  for (const outline& each : path_) {
    for (const place& c : each.corners) {
      reach.low = {std::min(reach.low.x, c.x), std::min(reach.low.y, c.y)};
      reach.high = {std::max(reach.high.x, c.x), std::max(reach.high.y, c.y)};
    }
  }
  names_.push_back(with);
  const std::uint64_t key = std::hash<std::string>()(with);
  const double more = by.half + slack_;
  const auto is_beyond = [more](std::int64_t from, std::int64_t to) {
    return static_cast<double>(to - from) > more;
  };
  for (std::size_t i = 0; i < seen_.size(); ++i) {
    const place& at = points_[i];
    if (!now_.shown[i] || is_beyond(at.x, reach.low.x) || is_beyond(at.y, reach.low.y) ||
        is_beyond(reach.high.x, at.x) || is_beyond(reach.high.y, at.y))
      continue;
    const covering it = covers(at, by);
    if (it == covering::no) continue;
    if (it == covering::unsure) {
      unsure_[i] = true;
      continue;
    }
    if (is_opaque) unsure_[i] = false;
    seen_[i] = {mixed(is_opaque ? 0 : seen_[i].key, key), names_.size() - 1};
  }
}

void drawn_content::show_all(const std::string& name) {
  std::string all = operands() + ' ' + name + " with";
  for (const auto& [key, value] : now_.values) {
    if (!value.empty()) (((all += ' ') += key) += ' ') += value;
  }
  for (const double each : now_.matrix) all += ' ' + std::to_string(each + 0.0);
  names_.push_back(all);
  const std::uint64_t key =
      mixed(std::hash<std::string>()(all), std::hash<std::vector<bool>>()(now_.shown));
  for (sample& each : seen_) each = {mixed(each.key, key), names_.size() - 1};
}

std::string drawn_content::difference(const drawn_content& other) const {
  for (std::size_t i = 0; i < seen_.size(); ++i) {
    if (seen_[i].key == other.seen_[i].key || unsure_[i] || other.unsure_[i]) continue;
    return "at " + std::to_string(i % raster_size) + ", " + std::to_string(i / raster_size) + ": " +
           names_[seen_[i].name] + " / " + other.names_[other.seen_[i].name];
  }
  return {};
}

}  // namespace trellion::pdf::testing
