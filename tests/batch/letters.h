#pragma once

#include <map>
#include <string>
#include <vector>

#include "batch/pixmap.h"

namespace trellion::testing {

/// A picture from a letter for every pixel; every letter has a colour, "." is white.
inline batch::pixmap drawing(const std::vector<std::string>& rows) {
  static const std::map<char, std::vector<std::uint8_t>> colours = {
      {'.', {255, 255, 255}}, {'k', {0, 0, 0}},       {'r', {200, 40, 40}},
      {'b', {40, 40, 200}},   {'v', {120, 40, 120}},  {'p', {210, 90, 90}},
      {'y', {255, 255, 0}},   {'l', {255, 255, 60}},  {'g', {100, 100, 100}},
      {'h', {104, 100, 100}}, {'i', {108, 100, 100}}, {'j', {109, 100, 100}}};
  batch::pixmap result{rows.front().size(), rows.size(), {}};
  for (const std::string& row : rows) {
    for (const char letter : row) {
      const std::vector<std::uint8_t>& colour = colours.at(letter);
      result.rgb.insert(result.rgb.end(), colour.begin(), colour.end());
    }
  }
  return result;
}

}  // namespace trellion::testing
