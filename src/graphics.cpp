#include "graphics.h"

#include <algorithm>
#include <string>

#include "fields.h"
#include "param.h"

namespace trellion {
namespace {

// The number of the last frame written. It counts over the whole run, so that no two frames get the
// same name.
std::int32_t frame_number = 0;

struct bounds {
  std::int64_t x_min = INT64_MAX;
  std::int64_t y_min = INT64_MAX;
  std::int64_t x_max = -INT64_MAX;
  std::int64_t y_max = -INT64_MAX;

  [[nodiscard]] bool have_area() const { return x_max > x_min && y_max > y_min; }
};

bounds bounds_of(const path_store& store, std::span<const ps_path_queue> queues) {
  bounds all;
  for (const ps_path_queue& queue : queues) {
    for (path_index i = queue.first(); i != no_path; i = store.paths[i].next_path) {
      const path_box& box = store.boxes[i];
      all.x_min = std::min<std::int64_t>(all.x_min, box.x_min);
      all.y_min = std::min<std::int64_t>(all.y_min, box.y_min);
      all.x_max = std::max<std::int64_t>(all.x_max, box.x_max);
      all.y_max = std::max<std::int64_t>(all.y_max, box.y_max);
    }
  }
  return all;
}

/// Thousandths to whole PostScript units, halves away from zero.
std::int64_t whole_units(std::int64_t thousandths) {
  return (thousandths + (thousandths >= 0 ? 500 : -500)) / 1000;
}

/// "frame", the number in five digits with zeros in front, ".eps".
std::string frame_name(std::int32_t number) {
  std::string digits = integer_field(number, 5);
  std::ranges::replace(digits, ' ', '0');
  return "frame" + digits + ".eps";
}

void add_to_script(const std::string& name, bool start_afresh) {
  output_file file("intermediate/script",
                   start_afresh ? output_file::mode::replace : output_file::mode::append);
  text_writer script(file);
  script.put("epstopdf ").put(name).put(nl).put("rm ").put(name).put(nl).flush();
  file.close();
}

}  // namespace

void create_intermediate_eps(path_store& store, std::span<const ps_path_queue> queues,
                             text_writer& console, outline_ending ending) {
  const bounds box = bounds_of(store, queues);
  if (!box.have_area()) {
    console.put("trellion: warning --- could not determine bounding box for").put(nl);
    console.repeat(22, ' ').put("intermediate eps. No graphics created.").put(nl).put(nl);
    return;
  }
  ++frame_number;
  const std::string name = frame_name(frame_number);
  add_to_script(name, frame_number == 1);

  output_file file("intermediate/" + name, output_file::mode::replace);
  text_writer frame(file);
  frame.put("%!PS-Adobe-3.0 EPSF-1.2").put(nl).put("%%BoundingBox: ");
  for (const std::int64_t value : {box.x_min, box.y_min, box.x_max, box.y_max}) {
    frame.put(integer_field(whole_units(value), 8)).put(' ');
  }
  frame.put(nl).put("0 setlinewidth").put(nl);
  const bool stroked = ending == outline_ending::stroked;
  const path_operators operators = {vertex_operator("moveto"), vertex_operator("lineto"),
                                    stroked ? "closepath stroke" : "closepath"};
  for (const ps_path_queue& queue : queues) queue.output(operators, frame);
  frame.put("%EOF").put(nl).flush();
  file.close();
}

}  // namespace trellion
