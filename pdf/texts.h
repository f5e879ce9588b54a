#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace trellion::pdf {

/// Stands for a text of a text_table.
using text_id = std::uint32_t;

/// Gives each text one number, from 0 on. Compact: a million colours are common.
class text_table {
 public:
  text_id id_of(std::string_view text);
  /// Holds until the next id_of.
  std::string_view operator[](text_id id) const {
    const std::size_t begin = id == 0 ? 0 : ends_[id - 1];
    return std::string_view(bytes_).substr(begin, ends_[id] - begin);
  }
  [[nodiscard]] std::size_t size() const { return ends_.size(); }

 private:
  void grow();

  std::string bytes_;
  std::vector<std::size_t> ends_;
  std::vector<text_id> slots_;  // open addressing, a power of two of them; the id, plus one
};

}  // namespace trellion::pdf
