#include "engine_runs.h"

#include "plain_engine.h"
#include "support.h"
#include "walk.h"

namespace trellion::testing {
namespace {

/// Runs an engine, called with store, strata and console, on the polygons of a text.
template <class Engine>
engine_result run(const std::string& text, point_order order, Engine engine) {
  path_store store;
  store.keeps_boxes = true;  // the plain engine looks at them first
  captured_text ignored;
  captured_text console;
  captured_text paths;
  walk(token_list(text), mlhf(), paths, [&](polygon_group& group) {
    ps_path_queue queue = tokens_to_ps_path_queue(group, store, ignored, order);
    if (queue.n_paths() < 2) return;
    strata strata = stratify(store, queue);
    try {
      engine(store, strata, console);
    } catch (const early_end&) {
      return;
    }
    gather(strata, queue, console);
    queue.output({vertex_operator("m"), vertex_operator("l"), "h f"}, paths);
  });
  return {console.text(), paths.text()};
}

}  // namespace

engine_result merged(const std::string& text, std::int32_t merge_limit, engine_sizes sizes) {
  return run(text, point_order::by_place,
             [&](path_store& store, strata& strata, text_writer& console) {
               v3_process(store, strata, merge_limit, console, sizes);
             });
}

engine_result plainly_merged(const std::string& text, std::int32_t merge_limit) {
  return run(text, point_order::as_it_pays,
             [&](path_store& store, strata& strata, text_writer& console) {
               plain_process(store, strata, merge_limit, console);
             });
}

}  // namespace trellion::testing
