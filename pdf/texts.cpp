#include "pdf/texts.h"

#include <algorithm>
#include <functional>

namespace trellion::pdf {

text_id text_table::id_of(std::string_view text) {
  if (ends_.size() * 2 >= slots_.size()) grow();
  const std::size_t mask = slots_.size() - 1;
  std::size_t slot = std::hash<std::string_view>()(text) & mask;
  for (; slots_[slot] != 0; slot = (slot + 1) & mask)
    if ((*this)[slots_[slot] - 1] == text) return slots_[slot] - 1;
  bytes_ += text;
  ends_.push_back(bytes_.size());
  slots_[slot] = static_cast<text_id>(ends_.size());
  return slots_[slot] - 1;
}

void text_table::grow() {
  slots_.assign(std::max<std::size_t>(16, slots_.size() * 4), 0);
  const std::size_t mask = slots_.size() - 1;
  for (text_id id = 0; id < ends_.size(); ++id) {
    std::size_t slot = std::hash<std::string_view>()((*this)[id]) & mask;
    while (slots_[slot] != 0) slot = (slot + 1) & mask;
    slots_[slot] = id + 1;
  }
}

}  // namespace trellion::pdf
