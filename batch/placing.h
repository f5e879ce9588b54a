#pragma once

#include <sys/types.h>

#include <filesystem>

namespace trellion::batch {

enum class existing_file { keep, replace };

/// Moves a complete file to a place on the same file system in one step: at every moment, be it
/// that the power fails, there is the old file, or none, or all of the new. It gets the permissions
/// in the mode of the input from which it was made, never more. Returns false when there is a file
/// that is to be kept. Throws run_error; then the place may hold the new file only when the system
/// could not say that it will last.
bool place(const std::filesystem::path& file, const std::filesystem::path& destination,
           mode_t input_mode, existing_file treatment);

}  // namespace trellion::batch
