#include "pdf/stream_text.h"

#include <algorithm>
#include <qpdf/Buffer.hh>
#include <qpdf/Pipeline.hh>
#include <qpdf/QPDF.hh>
#include <stdexcept>

namespace trellion::pdf {
namespace {

constexpr std::size_t largest_text = std::size_t{1} << 30;

/// Puts what comes through it at the end of a text, up to a limit.
class text_pipeline : public Pipeline {
 public:
  explicit text_pipeline(std::string& text) : Pipeline("content", nullptr), text_(text) {}

  void write(const unsigned char* data, std::size_t length) override {
    if (length > largest_text - text_.size()) throw std::length_error("the content is too large");
    text_.append(reinterpret_cast<const char*>(data), length);
  }
  void finish() override {}

 private:
  std::string& text_;
};

/// Adds the text of a stream; false when there is doubt about it.
bool append_text(QPDFObjectHandle stream, std::string& text) {
  if (stream.getDict().hasKey("/F")) return false;  // it is in another file
  QPDF* const document = stream.getOwningQPDF();
  const std::size_t warnings = document == nullptr ? 0 : document->numWarnings();
  text_pipeline sink(text);
  bool is_decoded = false;
  const bool is_whole =
      stream.pipeStreamData(&sink, &is_decoded, 0, qpdf_dl_specialized, false, false);
  const bool is_certain = document == nullptr || document->numWarnings() == warnings;
  return is_whole && is_decoded && is_certain;
}

}  // namespace

std::optional<std::string> text_of(std::vector<QPDFObjectHandle>& streams) {
  // Unused, it costs no memory; to grow step by step would.
  constexpr std::uint64_t usual_ratio = 8;
  std::string text;
  text.reserve(std::min<std::uint64_t>(usual_ratio * packed_size(streams), largest_text / 2));
  for (QPDFObjectHandle& stream : streams) {
    if (!append_text(stream, text)) return std::nullopt;
    // A stream ends between two words. Viewers do not agree whether it ends a comment, too.
    if (streams.size() > 1) {
      const std::size_t last_line = text.find_last_of("\r\n") + 1;
      if (text.find('%', last_line) != std::string::npos) return std::nullopt;
      if (text.size() >= largest_text) return std::nullopt;
      text += '\n';
    }
  }
  return text;
}

std::uint64_t packed_size(std::vector<QPDFObjectHandle>& streams) {
  std::uint64_t sum = 0;
  for (QPDFObjectHandle& stream : streams) {
    sum += stream.getRawStreamData()->getSize();  // what the dictionary says can be wrong
  }
  return sum;
}

}  // namespace trellion::pdf
