#pragma once

#include <filesystem>

#include "batch/drawing.h"
#include "batch/programs.h"
#include "support.h"

namespace trellion::testing {

/// The programs that draw, which work in a directory. `tools` can be changed.
class drawing_tools {
 public:
  explicit drawing_tools(const std::filesystem::path& directory,
                         std::chrono::milliseconds time_limit = std::chrono::minutes(1))
      : limits_{time_limit, std::uint64_t{8} << 30, 0},
        programs(tools, runner_, limits_, directory) {}

  batch::programs tools{batch::find_program("gs"), batch::find_program("pdftops"),
                        batch::find_program("pdftocairo")};

 private:
  const batch::interruption interrupted_;
  const batch::child_limits limits_;
  const batch::process_runner runner_{interrupted_, limits_};

 public:
  const batch::drawing_programs programs;
};

/// Writes a script that can be run in place of a program.
inline std::filesystem::path write_script(const scratch_directory& directory,
                                          const std::string& name, const std::string& text) {
  directory.write(name, "#!/bin/sh\n" + text + '\n');
  const std::filesystem::path path = directory.path() / name;
  std::filesystem::permissions(path, std::filesystem::perms::owner_all);
  return path;
}

}  // namespace trellion::testing
