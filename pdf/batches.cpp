#include "pdf/batches.h"

#include <algorithm>
#include <cstddef>
#include <span>

#include "pdf/overlaps.h"
#include "pdf/sorted_keys.h"

namespace trellion::pdf {
namespace {

/// Up to so many paints the choice of the next one looks at all of them.
constexpr std::size_t few_paints = 4096;

/// An epoch: the polygons of a mesh from one on, which change places only with each other. They are
/// known here by their distance from the first.
class epoch {
 public:
  /// Begins with one polygon.
  epoch(const mesh& of, std::uint32_t first) : of_(&of), first_(first), n_waited_for_{0} {}

  [[nodiscard]] std::uint32_t first() const { return first_; }
  /// Adds the next polygon of the mesh, which must come after the given ones, all of this epoch.
  void add(std::span<const std::uint32_t> earlier) {
    for (const std::uint32_t e : earlier) {
      waiting_.push_back(joint_key(e - first_, static_cast<std::uint32_t>(n_waited_for_.size())));
    }
    n_waited_for_.push_back(static_cast<std::uint32_t>(earlier.size()));
  }
  /// Whether what it knows takes more memory than its polygons ask for.
  [[nodiscard]] bool is_full() const { return waiting_.size() > 16 * n_waited_for_.size() + 65536; }
  /// Adds its batches to those that there are.
  void finish(std::vector<batch>& batches);

 private:
  /// The polygons of a paint that are not in a batch yet; a polygon that cannot be joined has a
  /// colour to itself.
  struct colour {
    std::vector<std::uint32_t> ready;  ///< those that wait for nothing
    std::uint32_t n_left = 0;

    [[nodiscard]] bool is_complete() const { return ready.size() == n_left; }
  };

  void find_colours();
  void index_waiting();
  std::uint32_t next_colour();
  void put_all_of(std::uint32_t c, batch& to);

  const mesh* of_;
  std::uint32_t first_;
  std::vector<std::uint32_t> n_waited_for_;  // by polygon: how many must come before it
  std::vector<std::uint64_t> waiting_;       // who is waited for, and who waits
  std::vector<std::size_t> waiting_from_;    // by who is waited for
  std::vector<std::uint32_t> colour_of_;
  std::vector<colour> colours_;
  std::vector<std::uint32_t> complete_;  // colours of which all that is left is ready, as a queue
  std::size_t next_complete_ = 0;
  std::vector<bool> done_;
  std::uint32_t earliest_ = 0;  // none before it is left
};

void epoch::find_colours() {
  const auto n = static_cast<std::uint32_t>(n_waited_for_.size());
  std::vector<std::uint32_t> paints;
  for (std::uint32_t p = 0; p < n; ++p) paints.push_back(of_->polygons[first_ + p].paint);
  std::ranges::sort(paints);
  paints.erase(std::unique(paints.begin(), paints.end()), paints.end());
  colours_.resize(paints.size());
  colour_of_.resize(n);
  for (std::uint32_t p = 0; p < n; ++p) {
    const polygon& its = of_->polygons[first_ + p];
    if (its.form == shape::other) {
      colour_of_[p] = static_cast<std::uint32_t>(colours_.size());
      colours_.emplace_back();
    } else {
      const auto at = std::ranges::lower_bound(paints, its.paint);
      colour_of_[p] = static_cast<std::uint32_t>(at - paints.begin());
    }
    ++colours_[colour_of_[p]].n_left;
  }
}

void epoch::index_waiting() {
  sort_keys(waiting_);
  waiting_from_.resize(n_waited_for_.size() + 1);
  std::size_t i = 0;
  for (std::uint32_t p = 0; p < n_waited_for_.size(); ++p) {
    waiting_from_[p] = i;
    while (i < waiting_.size() && first_of(waiting_[i]) == p) ++i;
  }
  waiting_from_.back() = waiting_.size();
}

/// A colour that can be finished with this batch, or else one of which much can go into it.
std::uint32_t epoch::next_colour() {
  if (next_complete_ < complete_.size()) return complete_[next_complete_++];
  if (colours_.size() <= few_paints) {
    const auto most =
        std::ranges::max_element(colours_, {}, [](const colour& c) { return c.ready.size(); });
    return static_cast<std::uint32_t>(most - colours_.begin());
  }
  // What waits, waits for something earlier: the earliest is ready.
  while (done_[earliest_]) ++earliest_;
  return colour_of_[earliest_];
}

void epoch::put_all_of(std::uint32_t c, batch& to) {
  colour& current = colours_[c];
  while (!current.ready.empty()) {
    const std::uint32_t p = current.ready.back();
    current.ready.pop_back();
    --current.n_left;
    done_[p] = true;
    to.polygons.push_back(first_ + p);
    for (std::size_t i = waiting_from_[p]; i < waiting_from_[p + 1]; ++i) {
      const std::uint32_t freed = second_of(waiting_[i]);
      if (--n_waited_for_[freed] > 0) continue;
      const std::uint32_t its = colour_of_[freed];
      colours_[its].ready.push_back(freed);
      if (its != c && colours_[its].is_complete()) complete_.push_back(its);
    }
  }
  std::ranges::sort(to.polygons);
}

void epoch::finish(std::vector<batch>& batches) {
  find_colours();
  index_waiting();
  const auto n = static_cast<std::uint32_t>(n_waited_for_.size());
  done_.resize(n);
  for (std::uint32_t p = 0; p < n; ++p) {
    if (n_waited_for_[p] == 0) colours_[colour_of_[p]].ready.push_back(p);
  }
  for (std::uint32_t p = 0; p < n; ++p) {
    // In the order in which they come first.
    if (n_waited_for_[p] != 0) continue;
    const colour& its = colours_[colour_of_[p]];
    if (its.is_complete() && its.ready.front() == p) complete_.push_back(colour_of_[p]);
  }
  for (std::uint32_t n_done = 0; n_done < n;) {
    const std::uint32_t c = next_colour();
    batches.emplace_back();
    put_all_of(c, batches.back());
    batches.back().paint = of_->polygons[batches.back().polygons.front()].paint;
    n_done += static_cast<std::uint32_t>(batches.back().polygons.size());
  }
}

}  // namespace

std::vector<batch> batches_in_order(const mesh& polygons) {
  std::vector<batch> result;
  bool is_open = false;
  for (std::uint32_t i = 0; i < polygons.polygons.size(); ++i) {
    const polygon& p = polygons.polygons[i];
    if (!is_open || p.form == shape::other || result.back().paint != p.paint) {
      result.push_back({p.paint, {}});
    }
    result.back().polygons.push_back(i);
    is_open = p.form != shape::other;
  }
  return result;
}

std::vector<batch> batches_by_paint(const mesh& polygons) {
  std::vector<batch> result;
  if (polygons.polygons.empty()) return result;
  const overlaps search(polygons);
  std::vector<std::uint32_t> earlier;
  epoch current(polygons, 0);
  for (std::uint32_t i = 1; i < polygons.polygons.size(); ++i) {
    earlier.clear();
    if (current.is_full() || !search.add_earlier(i, current.first(), earlier)) {
      current.finish(result);
      current = epoch(polygons, i);
    } else {
      current.add(earlier);
    }
  }
  current.finish(result);
  return result;
}

}  // namespace trellion::pdf
