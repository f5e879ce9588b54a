#include "repair.h"

#include <algorithm>
#include <cassert>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "fields.h"
#include "layers.h"
#include "param.h"
#include "postscript_path_queue.h"
#include "report.h"
#include "setup.h"
#include "tokens.h"
#include "v3_engine.h"
#include "walk.h"

namespace trellion {
namespace {

/// The texts to write paths with: the operators found, or the macro's in place of the one that ends
/// a polygon.
path_operators operators_to_write(const drawing_token_set& found,
                                  const std::optional<fill_macro>& macro) {
  path_operators result{vertex_operator(found.moveto_token.text),
                        vertex_operator(found.lineto_token.text),
                        std::string(macro ? macro->operator_text() : found.end_polygon_token.text)};
  for (const token& t : found.trailing_operators) result.end.append(" ").append(t.text);
  return result;
}

/// Twice the areas of the paths, their signs left aside.
area total_area(const path_store& store, const ps_path_queue& queue) {
  area total = 0;
  for (path_index p = queue.first(); p != no_path; p = store.paths[p].next_path) {
    const area a = doubled_area(store, p);
    total += a < 0 ? -a : a;
  }
  return total;
}

/// Joins the polygons of one group and writes what is left of them.
class group_repair {
 public:
  group_repair(const run_settings& settings, const path_operators& output_operators,
               text_writer& console, text_writer& repaired, repair_summary& summary)
      : settings_(settings),
        output_operators_(output_operators),
        console_(console),
        repaired_(repaired),
        summary_(summary) {}

  void operator()(polygon_group& group) {
    console_.put("Group ").put(integer_field(++summary_.groups, 3)).put(':');
    if (is_left_alone(summary_.groups)) {
      purge({group.begin, group.end}, repaired_);
      return;
    }
    summary_.group_bytes += static_cast<std::int64_t>(group.begin.n_bytes() - group.end.n_bytes());
    ps_path_queue queue = tokens_to_ps_path_queue(group, store_, console_);
    if (settings_.careful) {
      repaired_.put(' ');  // always: a group must not run into the text before it
      pass_on_those_without_area(group, queue);
    }
    const std::int64_t n_paths = queue.n_paths();
    summary_.polygons_read += static_cast<std::int64_t>(group.n_vertices.size());
    summary_.without_area += static_cast<std::int64_t>(group.n_vertices.size()) - n_paths;
    if (n_paths <= 1) {
      write(queue);
    } else if (settings_.careful) {
      join_in_layers(queue);
    } else {
      if (!join(store_, queue)) summary_.area_lost = true;
      repaired_.put(' ');  // only here: a group of one path follows the text before it directly
      write(queue);
    }
    group.vertices.swap(store_.points);  // the next group's go where these were
  }

 private:
  [[nodiscard]] bool is_left_alone(std::int64_t number) const {
    return std::ranges::any_of(settings_.left_alone, [number](const group_range& range) {
      return range.first <= number && number <= range.last;
    });
  }

  /// Writes the polygons without area as they were read, and takes those that have kept points out
  /// of the queue. Filling draws them all the same, as lines and dots. The whole group is drawn in
  /// one paint, so that the order does not show: they go first, where they need not be kept.
  void pass_on_those_without_area(const polygon_group& group, ps_path_queue& queue) {
    std::vector<bool> is_without_area(group.n_vertices.size());
    point_index first = 0;
    for (path_index i = 0; i < group.n_vertices.size(); ++i) {
      const path_index p = group.order.empty() ? i : group.order[i];
      is_without_area[p] = doubled_area(store_, p) == 0;
      if (is_without_area[p]) {
        if (store_.paths[p].n_points >= strata::min_points) queue.remove_this_path(p);
        restore_ring(store_, p, first, group.n_vertices[p]);
      }
      first += group.n_vertices[p];
    }
    for (path_index p = 0; p < group.n_vertices.size(); ++p) {
      if (!is_without_area[p]) continue;
      output(store_, p, output_operators_, repaired_);
      ++summary_.polygons_left;
    }
  }

  void join_in_layers(ps_path_queue& queue) {
    const std::vector<std::vector<path_index>> layers = split_into_layers(store_, queue);
    if (layers.size() == 1) {
      if (!join(store_, queue)) summary_.area_lost = true;
      write(queue);
      return;
    }
    if (join_as_one_layer(queue)) return;
    // The engine takes time for every point of a store, so each layer has its own.
    path_store store;
    for (const std::vector<path_index>& layer : layers) {
      store.clear();
      ps_path_queue paths(store);
      for (const path_index p : layer) paths.add_after_last(copy_path(store_, p, store));
      if (layer.size() > 1 && !join(store, paths)) summary_.area_lost = true;
      write(paths);
    }
  }

  /// Layers are a precaution: what runs along a line twice need not come to be joined to each
  /// other. A merger adds two areas or subtracts one from the other, both greater than zero, so the
  /// sum of the areas never grows, and once smaller it stays so. Where it is what it was nothing
  /// was subtracted; then all went well in one layer, and more is joined. The attempt takes as much
  /// memory as the group once more.
  bool join_as_one_layer(const ps_path_queue& queue) {
    path_store store;
    ps_path_queue paths(store);
    for (path_index p = queue.first(); p != no_path; p = store_.paths[p].next_path) {
      paths.add_after_last(copy_path(store_, p, store));
    }
    const std::int64_t mergers_before = summary_.mergers;
    bool area_kept = false;
    try {
      area_kept = join(store, paths);
    } catch (const early_end& end) {
      assert(end.reason == end_reason::collapsed_path);  // two have cancelled each other out
      static_cast<void>(end);
    }
    if (!area_kept) {
      summary_.mergers = mergers_before;
      return false;
    }
    write(paths);
    return true;
  }

  /// False when area was lost.
  [[nodiscard]] bool join(path_store& store, ps_path_queue& queue) {
    const std::int64_t n_paths = queue.n_paths();
    const bool compare = settings_.careful || settings_.compare_areas;
    const area before = compare ? total_area(store, queue) : 0;
    repaired_.flush();  // merging can take long, and can end the run
    strata strata = stratify(store, queue);
    v3_process(store, strata, settings_.merge_limit, console_);
    gather(strata, queue, console_);
    summary_.mergers += n_paths - queue.n_paths();
    return !compare || total_area(store, queue) == before;
  }

  void write(const ps_path_queue& queue) {
    queue.output(output_operators_, repaired_);
    summary_.polygons_left += queue.n_paths();
  }

  const run_settings& settings_;
  const path_operators& output_operators_;
  text_writer& console_;
  text_writer& repaired_;
  repair_summary& summary_;
  path_store store_;
};

}  // namespace

repair_summary repair(const run_settings& settings, byte_source& input, std::size_t expected_size,
                      text_writer& console, text_writer& repaired,
                      const progress_report& tell_progress) {
  const file_text text = tokenize_file(input, expected_size, console);
  token_list list(text.view());
  purge_comments(list, repaired);
  write_processing_line(settings.merge_limit, repaired);

  kept_polygons kept;
  const drawing_token_set operators =
      drawing_token_scan(list, settings.min_separators, settings.verbose, console, &kept);
  std::optional<fill_macro> macro;
  if (settings.remove_mesh) {
    macro = pgf_setup(list, settings.verbose, console);
    // The rest of the file can begin with the definition already.
    const bool defined_here =
        macro->existing_definition && macro->existing_definition->same_head(list);
    if (!defined_here) write_definition(*macro, repaired);
  }
  console.put(nl);

  const path_operators output_operators = operators_to_write(operators, macro);
  repair_summary summary;
  group_repair repair_group(settings, output_operators, console, repaired, summary);
  const auto handle_group = [&](polygon_group& group) {
    if (tell_progress) tell_progress(group.begin.n_bytes());
    repair_group(group);
  };
  walk(list, operators, repaired, handle_group, &kept);
  return summary;
}

}  // namespace trellion
