#include "postscript_path_queue.h"

#include "fields.h"
#include "param.h"

namespace trellion {

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

void ps_path_queue::output(const drawing_token_set& operators, text_writer& out) const {
  for (path_index path = first_; path != no_path; path = store_->paths[path].next_path) {
    trellion::output(*store_, path, operators, out);
  }
}

std::uint32_t strata::max_points() const {
  return min_points - 1 + static_cast<std::uint32_t>(queues_.size());
}

ps_path_queue& strata::of(std::uint32_t n_points) {
  const std::size_t position = n_points - min_points;
  if (position >= queues_.size()) queues_.resize(position + 1, ps_path_queue(*store_));
  return queues_[position];
}

ps_path_queue tokens_to_ps_path_queue(token_range group, const token& end_polygon_token,
                                      path_store& store, text_writer& console) {
  ps_path_queue queue(store);
  std::int64_t points_read = 0;
  std::int64_t paths_read = 0;

  token_list rest = group.begin;
  token_list polygon = rest;
  token reached = rest.take_head();
  console.put(" lines ").put(integer_field(reached.line_number, 8)).put(" ... ").flush();
  while (!rest.same_head(group.end)) {
    reached = rest.take_head();
    if (tok_neq_tok(reached, end_polygon_token)) continue;

    const path_index path = tokens_to_ps_path({polygon, rest}, store);
    polygon = rest;
    points_read += store.paths[path].n_points;
    ++paths_read;
    remove_superfluous_points_v2(store, path);
    if (store.paths[path].n_points >= strata::min_points) queue.add_after_last(path);
  }
  console.put(integer_field(reached.line_number, 8)).put(" ; ");
  console.put(integer_field(points_read, 12)).put(" points in ");
  console.put(integer_field(paths_read, 7)).put(" paths.").put(nl);
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
  for (std::uint32_t n = strata::min_points; n <= strata.max_points(); ++n) {
    queue.append(strata.of(n));
  }
  console.put(integer_field(queue.total_points(), 8)).put(" points in ");
  console.put(integer_field(queue.n_paths(), 8)).put(" paths.").put(nl);
}

}  // namespace trellion
