#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

namespace trellion::batch {

/// The bytes of a file. Throws run_error, also when there are more than `most`.
std::string read_whole(const std::filesystem::path& path, std::uint64_t most = SIZE_MAX);

/// Writes a file, over what is there. Throws run_error.
void write_whole(const std::filesystem::path& path, std::string_view head, std::string_view text);

}  // namespace trellion::batch
