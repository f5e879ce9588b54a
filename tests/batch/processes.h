#pragma once

#include <sys/types.h>

#include <filesystem>
#include <functional>
#include <string>

#include "files.h"

namespace trellion::testing {

/// A named pipe that processes write to and hold open: tells what they say, and when none of them
/// is left.
class witness {
 public:
  explicit witness(std::filesystem::path path);

  [[nodiscard]] const std::string& path() const { return path_; }
  /// Waits for the next words; empty when none came for a minute.
  [[nodiscard]] std::string next() const;
  /// Waits until nobody holds the pipe who did; false when somebody still does after a minute. From
  /// then on a new witness of the same pipe is needed.
  [[nodiscard]] bool all_gone() const;

 private:
  std::string path_;
  file_descriptor pipe_;
};

/// Does something in a process of its own, which blocks no signals, dumps no core, and ends with
/// the status that comes of it, or with us. To be called while there is no other thread: what such
/// a one has locked, as the sanitizers' allocator, would stay locked in the new process.
pid_t in_process(const std::function<int()>& work);

/// Waits for a change of a process as waitpid does, and returns its status.
int wait_for(pid_t process, int options = 0);

}  // namespace trellion::testing
