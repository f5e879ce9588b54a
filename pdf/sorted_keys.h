#pragma once

#include <cstdint>
#include <vector>

namespace trellion::pdf {

/// Two numbers as one key that is ordered by the first, then the second.
constexpr std::uint64_t joint_key(std::uint32_t first, std::uint32_t second) {
  return std::uint64_t{first} << 32 | second;
}
constexpr std::uint32_t first_of(std::uint64_t key) {
  return static_cast<std::uint32_t>(key >> 32);
}
constexpr std::uint32_t second_of(std::uint64_t key) { return static_cast<std::uint32_t>(key); }

/// Sorts by value, many keys in linear time; these take their memory once more meanwhile.
void sort_keys(std::vector<std::uint64_t>& keys);

}  // namespace trellion::pdf
