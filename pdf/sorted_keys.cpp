#include "pdf/sorted_keys.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <utility>

namespace trellion::pdf {
namespace {

constexpr int digit_bits = 11;
constexpr std::size_t n_digit_values = std::size_t{1} << digit_bits;
constexpr std::size_t n_digits = (64 + digit_bits - 1) / digit_bits;
/// Below it the counters cost more than they save.
constexpr std::size_t many = 2048;

std::size_t digit_of(std::uint64_t key, std::size_t digit) {
  return key >> (digit * digit_bits) & (n_digit_values - 1);
}

}  // namespace

void sort_keys(std::vector<std::uint64_t>& keys) {
  if (keys.size() < many) {
    std::ranges::sort(keys);
    return;
  }
  std::uint64_t varying = 0;
  for (const std::uint64_t key : keys) varying |= key ^ keys.front();
  std::vector<std::uint64_t> sorted(keys.size());
  for (std::size_t digit = 0; digit < n_digits; ++digit) {
    if (digit_of(varying, digit) == 0) continue;
    std::array<std::size_t, n_digit_values> place{};
    for (const std::uint64_t key : keys) ++place[digit_of(key, digit)];
    std::size_t sum = 0;
    for (std::size_t& p : place) sum += std::exchange(p, sum);
    for (const std::uint64_t key : keys) sorted[place[digit_of(key, digit)]++] = key;
    keys.swap(sorted);
  }
}

}  // namespace trellion::pdf
