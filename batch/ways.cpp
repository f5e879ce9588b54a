#include "batch/ways.h"

#include "batch/pdf_support.h"

namespace trellion::batch {
namespace {

repair_way way_in_pdf(bool detour) {
  repair_way way;
  way.detour = detour;
  way.pdf = true;
  return way;
}

std::vector<repair_way> ways_of_joining(const batch_options& options) {
  if (options.detour && options.min_separators) return {{*options.min_separators, true}};
  if (!options.detour && !options.auto_way) return {{options.min_separators.value_or(2), false}};
  std::vector<repair_way> ways;
  if (options.auto_way) ways = {{2, false}, {1, false}};
  if (!options.detour && !options.tools.can_take_detours()) return ways;
  ways.insert(ways.end(), {{2, true}, {1, true}});
  // How many points a polygon may have is a matter of the text.
  if (has_pdf && !options.merge_limit) ways.push_back(way_in_pdf(true));
  return ways;
}

}  // namespace

std::string repair_way::name() const {
  std::string name = detour ? "detour " : "";
  if (!pdf) return name + "-s" + std::to_string(min_separators) + (remove_mesh ? " -r" : "");
  name += "pdf";
  if (careful) name += " --no-reorder";
  if (remove_mesh) name += " --close";
  return name;
}

std::optional<repair_way> repair_way::more_careful() const {
  if (!pdf || careful) return std::nullopt;
  repair_way way = *this;
  way.careful = true;
  return way;
}

std::vector<repair_way> ways_to_try(const batch_options& options, file_kind kind) {
  std::vector<repair_way> ways;
  if (kind == file_kind::pdf) {
    ways.push_back(way_in_pdf(false));
  } else {
    ways = ways_of_joining(options);
  }
  if (kind == file_kind::dos_eps && ways.back().detour) {
    std::erase_if(ways, [](const repair_way& way) { return !way.detour; });
  }
  if (!options.remove_mesh) return ways;
  std::vector<repair_way> all;
  for (repair_way way : ways) {
    way.remove_mesh = true;
    all.push_back(way);
    way.remove_mesh = false;
    // Whether the mesh has become better only the pictures tell.
    if (options.verify) all.push_back(way);
  }
  return all;
}

}  // namespace trellion::batch
