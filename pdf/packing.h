#pragma once

#include <cstddef>
#include <memory>
#include <string_view>

class Buffer;

namespace trellion::pdf {

/// A text packed with Flate.
std::shared_ptr<Buffer> packed(std::string_view text);

/// About how many bytes that would take; of a long text samples are packed.
std::size_t estimated_packed_size(std::string_view text);

}  // namespace trellion::pdf
