#include "pdf/packing.h"

#include <qpdf/Buffer.hh>
#include <qpdf/Pl_Buffer.hh>
#include <qpdf/Pl_Count.hh>
#include <qpdf/Pl_Discard.hh>
#include <qpdf/Pl_Flate.hh>

namespace trellion::pdf {
namespace {

constexpr int usual_level = 6;
constexpr int best_level = 9;
/// Larger texts can take many times the time at the best level, which gains them 4 %.
constexpr std::size_t large_text = std::size_t{1} << 20;

void pack(std::string_view text, int level, Pipeline& to) {
  Pl_Flate::setCompressionLevel(level);
  Pl_Flate packer("packing", &to, Pl_Flate::a_deflate);
  packer.write(reinterpret_cast<const unsigned char*>(text.data()), text.size());
  packer.finish();
}

}  // namespace

std::shared_ptr<Buffer> packed(std::string_view text) {
  Pl_Buffer result("packed content");
  pack(text, text.size() < large_text ? best_level : usual_level, result);
  return result.getBufferSharedPointer();
}

std::size_t estimated_packed_size(std::string_view text) {
  constexpr std::size_t n_samples = 16;
  constexpr std::size_t sample_size = std::size_t{1} << 16;
  Pl_Discard nowhere;
  Pl_Count counter("packed size", &nowhere);
  if (text.size() <= n_samples * sample_size) {
    pack(text, usual_level, counter);
    return static_cast<std::size_t>(counter.getCount());
  }
  for (std::size_t i = 0; i < n_samples; ++i) {
    const std::size_t last = text.size() - sample_size;
    pack(text.substr(last / (n_samples - 1) * i, sample_size), usual_level, counter);
  }
  const double ratio = static_cast<double>(counter.getCount()) / (n_samples * sample_size);
  return static_cast<std::size_t>(ratio * static_cast<double>(text.size()));
}

}  // namespace trellion::pdf
