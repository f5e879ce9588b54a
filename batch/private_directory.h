#pragma once

#include <filesystem>
#include <string>

#include "files.h"

namespace trellion::batch {

/// A new directory that only we can enter, removed with all that is in it at the end of its life. A
/// locked file in it tells others that its owner lives.
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

/// Removes what private directories a process that was killed has left in `parent`.
void remove_abandoned_directories(const std::filesystem::path& parent);

enum class existing_file { keep, replace };

/// Moves a complete file to its place in one step: at every moment there is the old file, or none,
/// or all of the new. Returns false when there is one that is to be kept. Throws run_error.
bool move_into_place(const std::filesystem::path& file, const std::filesystem::path& place,
                     existing_file treatment);

}  // namespace trellion::batch
