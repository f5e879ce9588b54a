#include "ring_order.h"

namespace trellion {

void ring_order::label(path_index path) {
  labels_.resize(store_.links.size());
  const ps_path& p = store_.paths[path];
  spread(p.cursor, p.n_points, 0, UINT64_MAX / p.n_points);
}

void ring_order::label_inserted(point_index first, point_index last) {
  std::uint64_t n_inserted = 1;
  for (point_index p = first; p != last; p = store_.next(p)) ++n_inserted;
  const std::uint64_t before = labels_[store_.prev(first)];
  const std::uint64_t gap = labels_[store_.next(last)] - before;
  const std::uint64_t step = gap / (n_inserted + 1);
  if (step > 0) {
    spread(first, n_inserted, before + step, step);
  } else {
    make_room(first, last, n_inserted);
  }
}

/// Where a gap is used up the labels around it are spread anew: over the smallest range, of those
/// whose size is a power of 2 and a multiple of which they begin at, that is not too full. Larger
/// ranges have to be emptier, so that it takes long until they are full again. No range
/// begins before the smallest label, so that no point gets past that.
void ring_order::make_room(point_index first, point_index last, std::uint64_t n_inserted) {
  constexpr int all_bits = 64;
  constexpr double growth = 4.0 / 3;  // of what may be in a range, when its size doubles
  const std::uint64_t anchor = labels_[store_.prev(first)];
  point_index left = store_.prev(first);
  point_index right = last;
  std::uint64_t n = n_inserted + 1;
  double allowed = 1;
  for (int bits = 1;; ++bits) {
    const auto in_range = [&](std::uint64_t label) {
      return bits == all_bits || (label ^ anchor) >> bits == 0;
    };
    for (; store_.prev(left) != right; ++n) {
      const std::uint64_t label = labels_[store_.prev(left)];
      if (label >= labels_[left] || !in_range(label)) break;
      left = store_.prev(left);
    }
    for (; store_.next(right) != left && in_range(labels_[store_.next(right)]); ++n) {
      right = store_.next(right);
    }
    if (bits == all_bits) {
      spread(left, n, 0, UINT64_MAX / n);
      return;
    }
    allowed *= growth;
    if (static_cast<double>(n) <= allowed) {
      const std::uint64_t size = std::uint64_t{1} << bits;
      spread(left, n, anchor & ~(size - 1), size / n);
      return;
    }
  }
}

void ring_order::spread(point_index first, std::uint64_t n_points, std::uint64_t label,
                        std::uint64_t step) {
  point_index p = first;
  for (; n_points > 0; --n_points, p = store_.next(p), label += step) labels_[p] = label;
}

}  // namespace trellion
