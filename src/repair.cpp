#include "repair.h"

#include <cstdint>
#include <optional>

#include "fields.h"
#include "param.h"
#include "postscript_path_queue.h"
#include "report.h"
#include "setup.h"
#include "tokens.h"
#include "v3_engine.h"
#include "walk.h"

namespace trellion {
namespace {

/// The operators to write paths with: those found, or the macro in place of the end of a polygon.
/// The macro's definition is written unless the rest of the file begins with it.
drawing_token_set choose_output_operators(const drawing_token_set& operators,
                                          const fill_macro& macro, const token_list& list,
                                          text_writer& repaired) {
  drawing_token_set output_operators = operators;
  output_operators.end_polygon_token.text = macro.operator_text();
  const bool defined_here = macro.existing_definition && macro.existing_definition->same_head(list);
  if (!defined_here) write_definition(macro, repaired);
  return output_operators;
}

/// Joins the polygons of one group and writes what is left of them.
class group_repair {
 public:
  group_repair(const run_settings& settings, const drawing_token_set& output_operators,
               text_writer& console, text_writer& repaired, repair_summary& summary)
      : settings_(settings),
        output_operators_(output_operators),
        console_(console),
        repaired_(repaired),
        summary_(summary) {}

  void operator()(polygon_group& group) {
    console_.put("Group ").put(integer_field(++summary_.groups, 3)).put(':');
    ps_path_queue queue = tokens_to_ps_path_queue(group, store_, console_);
    const auto n_polygons = static_cast<std::int64_t>(group.n_vertices.size());
    const std::int64_t n_paths = queue.n_paths();
    summary_.polygons_read += n_polygons;
    summary_.without_area += n_polygons - n_paths;
    if (queue.n_paths() > 1) {
      const area before = total_area(queue);
      repaired_.flush();  // merging can take long, and can end the run
      strata strata = stratify(store_, queue);
      v3_process(store_, strata, settings_.merge_limit, console_);
      gather(strata, queue, console_);
      summary_.mergers += n_paths - queue.n_paths();
      if (total_area(queue) != before) summary_.area_lost = true;
      repaired_.put(' ');  // only here: a group of one path follows the text before it directly
    }
    queue.output(output_operators_, repaired_);
    summary_.polygons_left += queue.n_paths();
  }

 private:
  /// Twice the areas of the paths, their signs left aside.
  [[nodiscard]] area total_area(const ps_path_queue& queue) const {
    area total = 0;
    for (path_index p = queue.first(); p != no_path; p = store_.paths[p].next_path) {
      const area a = doubled_area(store_, p);
      total += a < 0 ? -a : a;
    }
    return total;
  }

  const run_settings& settings_;
  const drawing_token_set& output_operators_;
  text_writer& console_;
  text_writer& repaired_;
  repair_summary& summary_;
  path_store store_;
};

}  // namespace

repair_summary repair(const run_settings& settings, byte_source& input, std::size_t expected_size,
                      text_writer& console, text_writer& repaired) {
  const file_text text = tokenize_file(input, expected_size, console);
  token_list list(text.view());
  purge_comments(list, repaired);
  write_processing_line(settings.merge_limit, repaired);

  const drawing_token_set operators =
      drawing_token_scan(list, settings.min_separators, settings.verbose, console);
  drawing_token_set output_operators = operators;
  std::optional<fill_macro> macro;
  if (settings.remove_mesh) {
    macro = pgf_setup(list, settings.verbose, console);
    output_operators = choose_output_operators(operators, *macro, list, repaired);
  }
  console.put(nl);

  repair_summary summary;
  walk(list, operators, repaired,
       group_repair(settings, output_operators, console, repaired, summary));
  return summary;
}

}  // namespace trellion
