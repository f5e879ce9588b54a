#pragma once

#include <cstdint>
#include <optional>
#include <qpdf/QPDFObjectHandle.hh>
#include <string>
#include <string_view>
#include <vector>

namespace trellion::pdf {

/// The text of a content that streams hold together. Nothing when one of them cannot be decoded,
/// not without doubt, or it is larger than any figure's.
std::optional<std::string> text_of(std::vector<QPDFObjectHandle>& streams);

/// The bytes that streams take, as they are packed.
std::uint64_t packed_size(std::vector<QPDFObjectHandle>& streams);

}  // namespace trellion::pdf
