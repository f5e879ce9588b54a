#include "batch/ways.h"

namespace trellion::batch {
namespace {

std::vector<repair_way> ways_of_joining(const batch_options& options) {
  if (options.detour && options.min_separators) return {{*options.min_separators, true}};
  if (options.detour) return {{2, true}, {1, true}};
  if (!options.auto_way) return {{options.min_separators.value_or(2), false}};
  std::vector<repair_way> ways = {{2, false}, {1, false}};
  if (options.tools.can_take_detours()) ways.insert(ways.end(), {{2, true}, {1, true}});
  return ways;
}

}  // namespace

std::string repair_way::name() const {
  return (detour ? "detour -s" : "-s") + std::to_string(min_separators) +
         (remove_mesh ? " -r" : "");
}

std::vector<repair_way> ways_to_try(const batch_options& options, file_kind kind) {
  std::vector<repair_way> ways = ways_of_joining(options);
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
