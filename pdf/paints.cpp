#include "pdf/paints.h"

#include <algorithm>
#include <array>
#include <numbers>

#include "pdf/numbers.h"

namespace trellion::pdf {
namespace {

constexpr std::uint32_t pen_uses = 3;

template <std::size_t n>
std::string_view bytes_of(const std::array<std::uint32_t, n>& key) {
  return {reinterpret_cast<const char*>(key.data()), sizeof key};  // NOLINT: to be compared only
}

}  // namespace

std::uint32_t paint_table::manner_of(const paint& which) {
  if (!which.has_pen) return which.is_thin ? thin_manner : plain_manner;
  const std::array<text_id, 5> key = {which.pen.width, which.pen.cap, which.pen.join,
                                      which.pen.miter, which.pen.dash};
  const text_id index = pen_keys_.id_of(bytes_of(key));
  if (index == pens_.size()) pens_.push_back(which.pen);
  const std::uint32_t use = which.fills ? 0 : which.has_corners ? 1 : 2;
  return first_pen + pen_uses * index + use;
}

std::uint32_t paint_table::index_of(const paint& which) {
  const entry added = {which.ink, manner_of(which)};
  if (!paints_.empty() && paints_.back() == added)
    return static_cast<std::uint32_t>(paints_.size() - 1);
  const std::array<std::uint32_t, 3> key = {added.ink.space, added.ink.components, added.manner};
  const text_id index = keys_.id_of(bytes_of(key));
  if (index == paints_.size()) paints_.push_back(added);
  return index;
}

paint paint_table::operator[](std::uint32_t index) const {
  const entry& found = paints_[index];
  paint result;
  result.ink = found.ink;
  result.is_thin = found.manner == thin_manner;
  result.has_pen = found.manner >= first_pen;
  if (result.has_pen) {
    const std::uint32_t pen_use = found.manner - first_pen;
    result.pen = pens_[pen_use / pen_uses];
    result.fills = pen_use % pen_uses == 0;
    result.has_corners = pen_use % pen_uses < 2;
  }
  return result;
}

std::optional<pen_traits> traits_of_pen(const line_style& pen, const linear_map& matrix,
                                        const text_table& texts) {
  if (pen.dash == unknown_text || pen.width == unknown_text || pen.cap == unknown_text ||
      pen.join == unknown_text || pen.miter == unknown_text)
    return std::nullopt;
  const double least = smallest_scale(matrix);
  const double width = to_double(texts[pen.width]);
  if (!(least > 0) || !(width >= 0)) return std::nullopt;
  // Viewers draw no line thinner than a pixel; this is one of the coarsest screens.
  constexpr double coarse_pixel = 1;
  double half = std::max(width, coarse_pixel / least) / 2;
  const double side = half * std::numbers::sqrt2;
  const bool is_mitred = texts[pen.join] == "0";
  if (is_mitred) half *= std::max(1.0, to_double(texts[pen.miter]));
  if (texts[pen.cap] == "2") half = std::max(half, width / 2 * std::numbers::sqrt2);
  // Points on the page: what a corner gains or loses is half of that at most, and seldom.
  constexpr double longest_corner = 2;
  const double on_page = width * largest_scale(matrix);
  const double mitre = is_mitred ? on_page * std::max(1.0, to_double(texts[pen.miter])) : on_page;
  const bool is_round = texts[pen.join] == "1";
  const bool is_solid = texts[pen.dash] == solid_dash;
  pen_traits result;
  result.reach = half;
  result.side_reach = side;
  result.may_join = is_solid && (is_round || mitre <= longest_corner);
  result.may_close = is_solid && mitre <= longest_corner;
  result.shows_ends = !is_round || texts[pen.cap] != "1";
  return result;
}

}  // namespace trellion::pdf
