#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace trellion::batch {

/// What a program may use. The system's own limits hold, too, where they are lower.
struct child_limits {
  std::chrono::milliseconds running_time;
  std::uint64_t memory;     ///< bytes of address space
  std::uint64_t file_size;  ///< bytes of any one file
};

// Every program runs below a supervisor: this executable once more, at the head of a process group
// of its own, to which the program belongs. They are connected with us by the lifeline. When that
// ends, since we want it so or because we died, whatever killed us, the supervisor kills the
// group. When the program ends it kills what is left of the group, too.

/// Where a supervisor finds its end of the lifeline.
constexpr int lifeline_descriptor = 3;

/// What a supervisor writes on the lifeline, once, when none of the group is left.
struct supervisor_report {
  enum class kind : std::int32_t { ended, not_started };

  kind what;
  std::int32_t value;  ///< the status as the system has it, or an error number
};

/// The arguments with which this executable supervises a command. `open_files` is the limit on
/// them that the program gets.
std::vector<std::string> supervised(const std::vector<std::string>& command,
                                    const std::filesystem::path& directory,
                                    const child_limits& limits, std::uint64_t open_files);

/// When this process has been started as a supervisor it is one, and does not return. Where the
/// program below it is this executable, too, that goes on here, in a child, with arguments of its
/// own: to start anew would take longer than many a repair. To be called before anything else.
void supervise_if_asked(int& argc, char**& argv);

}  // namespace trellion::batch
