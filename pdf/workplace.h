#pragma once

#include <filesystem>
#include <thread>

#include "batch/descriptors.h"
#include "batch/interruption.h"
#include "batch/private_directory.h"

namespace trellion::pdf {

/// A private directory to work in. When an interruption is requested it is removed and the process
/// ends by the signal at once: a repair has no places to stop at.
class workplace {
 public:
  /// Throws run_error. `interrupted` must outlive it.
  workplace(const std::filesystem::path& parent, const batch::interruption& interrupted);
  ~workplace();
  workplace(const workplace&) = delete;
  workplace& operator=(const workplace&) = delete;

  [[nodiscard]] const std::filesystem::path& path() const { return directory_.path(); }

 private:
  void watch();

  const batch::interruption& interrupted_;
  batch::private_directory directory_;
  batch::pipe_ends farewell_;
  std::thread watcher_;
};

}  // namespace trellion::pdf
