#pragma once

#include <filesystem>
#include <string>

#include "files.h"

namespace trellion::batch {

/// A new directory that only we can enter, removed with all that is in it at the end of its life.
/// Its name tells host and process; a locked file in it tells others that its owner lives.
class private_directory {
 public:
  /// Makes it in `parent`, so that what is made in it can be renamed to a place there. Throws
  /// run_error.
  explicit private_directory(const std::filesystem::path& parent);
  ~private_directory();
  private_directory(const private_directory&) = delete;
  private_directory& operator=(const private_directory&) = delete;

  /// Absolute.
  [[nodiscard]] const std::filesystem::path& path() const { return path_; }
  /// The path of an entry.
  [[nodiscard]] std::filesystem::path operator/(const std::string& name) const {
    return path_ / name;
  }

 private:
  std::filesystem::path path_;
  file_descriptor lock_;
};

/// Removes what private directories processes of this host and user have left in `parent` when they
/// were killed. Those of other hosts stay: not every file system tells a lock to all of them.
void remove_abandoned_directories(const std::filesystem::path& parent);

}  // namespace trellion::batch
