#include "postscript_path_queue.h"

#include <string>

#include "fields.h"
#include "locality.h"
#include "param.h"
#include "walk.h"

namespace trellion {
namespace {

/// The input line of the token at `position`, looked for from a list on.
std::string line_of(token_list list, const char* position) {
  while (true) {
    const token t = list.take_head();
    if (t.text.data() == position) return std::to_string(t.line_number);
  }
}

/// Says what is wrong with the first number of a group that cannot be a coordinate, given its
/// vertex.
coordinate_error fault_in(const polygon_group& group, const ps_point& vertex) {
  const char* const end = group.begin.text_end();
  const bool wrong_x = coordinate_at(vertex.text, end).fault != coordinate_fault::none;
  const char* const text = wrong_x ? vertex.text : second_number(vertex.text, end);
  const coordinate_fault fault = coordinate_at(text, end).fault;
  const bool too_large = fault == coordinate_fault::too_large;
  return coordinate_error("'" + std::string(coord_text(text, end)) + "' is " +
                          (too_large ? "too large for" : "not") + " a coordinate in line " +
                          line_of(group.begin, text));
}

}  // namespace

void ps_path_queue::add_after_last(path_index path) {
  ps_path& added = store_->paths[path];
  added.previous_path = last_;
  added.next_path = no_path;
  (last_ == no_path ? first_ : store_->paths[last_].next_path) = path;
  last_ = path;
  ++n_paths_;
  total_points_ += added.n_points;
}

path_index ps_path_queue::remove_head() {
  const path_index head = first_;
  remove_this_path(head);
  return head;
}

void ps_path_queue::remove_this_path(path_index path) {
  const ps_path& removed = store_->paths[path];
  (path == first_ ? first_ : store_->paths[removed.previous_path].next_path) = removed.next_path;
  (path == last_ ? last_ : store_->paths[removed.next_path].previous_path) = removed.previous_path;
  --n_paths_;
  total_points_ -= removed.n_points;
}

void ps_path_queue::append(ps_path_queue& other) {
  if (other.is_empty()) return;
  if (is_empty()) {
    first_ = other.first_;
  } else {
    store_->paths[last_].next_path = other.first_;
    store_->paths[other.first_].previous_path = last_;
  }
  last_ = other.last_;
  n_paths_ += other.n_paths_;
  total_points_ += other.total_points_;
  other = ps_path_queue(*store_);
}

void ps_path_queue::output(const path_operators& operators, text_writer& out) const {
  for (path_index path = first_; path != no_path; path = store_->paths[path].next_path) {
    trellion::output(*store_, path, operators, out);
  }
}

ps_path_queue& strata::made_for(std::uint32_t n_points) {
  constexpr std::size_t few = 256;
  const std::size_t position = n_points - min_points;
  if (position >= few) return high_.try_emplace(n_points, *store_).first->second;
  low_.resize(position + 1, ps_path_queue(*store_));
  return low_[position];
}

std::uint32_t strata::first_used_high(std::uint32_t n_points) {
  auto found = high_.lower_bound(n_points);
  while (found != high_.end() && found->second.is_empty()) found = high_.erase(found);
  return found == high_.end() ? none : found->first;
}

std::vector<ps_path_queue> strata::used() {
  std::vector<ps_path_queue> queues;
  for (auto n = first_used(min_points); n != none; n = first_used(n + 1)) {
    queues.push_back(of(n));
  }
  return queues;
}

ps_path_queue tokens_to_ps_path_queue(polygon_group& group, path_store& store, text_writer& console,
                                      point_order order) {
  console.put(" lines ").put(integer_field(group.begin.line_number(), 8)).put(" ... ");
  if (group.first_fault < group.vertices.size()) {
    throw fault_in(group, group.vertices[group.first_fault]);
  }
  path_store::check_size(group.vertices.size(), group.n_vertices.size());
  ps_path_queue queue(store);
  const auto n_paths = static_cast<path_index>(group.n_vertices.size());
  group.order.clear();
  if (order == point_order::by_place || are_scattered(group.vertices, group.n_vertices)) {
    group.order = bring_neighbours_together(group.vertices, group.n_vertices);
  }
  store.start_group(group.vertices, n_paths, group.begin.text_end());
  store.lies_by_place = !group.order.empty();
  point_index first = 0;
  for (path_index i = 0; i < n_paths; ++i) {
    const path_index path = group.order.empty() ? i : group.order[i];
    constexpr path_index ahead = 16;
    if (i + ahead < group.order.size()) {
      __builtin_prefetch(&store.paths[group.order[i + ahead]]);
      __builtin_prefetch(&group.n_vertices[group.order[i + ahead]]);
    }
    const std::uint32_t n_points = group.n_vertices[path];
    tokens_to_ps_path(store, path, first, n_points);
    if (n_points > 1 && has_only_corners(std::span(store.points).subspan(first, n_points))) {
      // That is where the walk would end.
      store.paths[path].cursor = store.prev(store.paths[path].cursor);
    } else {
      remove_superfluous_points_v2(store, path);
    }
    first += n_points;
  }
  for (path_index path = 0; path < n_paths; ++path) {
    if (store.paths[path].n_points >= strata::min_points) queue.add_after_last(path);
  }
  console.put(integer_field(group.last_line, 8)).put(" ; ");
  console.put(integer_field(static_cast<std::int64_t>(store.points.size()), 12));
  console.put(" points in ");
  console.put(integer_field(static_cast<std::int64_t>(group.n_vertices.size()), 7));
  console.put(" paths.").put(nl);
  return queue;
}

strata stratify(path_store& store, ps_path_queue& queue) {
  strata result(store);
  while (!queue.is_empty()) {
    const path_index path = queue.remove_head();
    result.of(store.paths[path].n_points).add_after_last(path);
  }
  return result;
}

void gather(strata& strata, ps_path_queue& queue, text_writer& console) {
  console.put("  Gathering ... ").flush();
  std::uint32_t n = strata.first_used(strata::min_points);
  for (; n != strata::none; n = strata.first_used(n)) queue.append(strata.of(n));
  console.put(integer_field(queue.total_points(), 8)).put(" points in ");
  console.put(integer_field(queue.n_paths(), 8)).put(" paths.").put(nl);
}

}  // namespace trellion
