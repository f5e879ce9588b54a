#include "pdf/document.h"

#include <array>
#include <cmath>
#include <exception>
#include <map>
#include <new>
#include <optional>
#include <qpdf/Buffer.hh>
#include <qpdf/Pipeline.hh>
#include <qpdf/QPDF.hh>
#include <qpdf/QPDFPageObjectHelper.hh>
#include <qpdf/QPDFWriter.hh>
#include <set>
#include <string>
#include <system_error>
#include <utility>

#include "pdf/drawn_forms.h"
#include "pdf/packing.h"
#include "pdf/page_content.h"
#include "pdf/refusals.h"
#include "pdf/resources.h"
#include "pdf/result_mark.h"
#include "pdf/stream_text.h"

namespace trellion::pdf {
namespace {

namespace fs = std::filesystem;

/// Hands what is written to a file.
class file_pipeline : public Pipeline {
 public:
  explicit file_pipeline(output_file& file) : Pipeline("result", nullptr), writer_(file) {}

  void write(const unsigned char* data, std::size_t length) override {
    writer_.put({reinterpret_cast<const char*>(data), length});
  }
  /// What is left to write is, by `flush`: the library calls this where nothing may be thrown, too.
  void finish() override {}
  void flush() { writer_.flush(); }

 private:
  text_writer writer_;
};

/// Gives a stream other bytes, which are packed, and takes from it what it said of the old ones.
void replace_text(QPDFObjectHandle stream, const std::shared_ptr<Buffer>& bytes) {
  stream.replaceStreamData(bytes, QPDFObjectHandle::newName("/FlateDecode"),
                           QPDFObjectHandle::newNull());
  stream.getDict().removeKey("/DL");
}

/// The repair of one document.
class document_repair {
 public:
  document_repair(QPDF& document, const content_settings& settings)
      : document_(document), settings_(settings) {}

  void run();
  void write(const fs::path& output);
  [[nodiscard]] const document_summary& summary() const { return summary_; }

 private:
  struct stream_use {
    std::size_t keys = 0;  ///< contents of pages it belongs to
    std::string last_key;
  };

  void repair(page_content& page);
  void repair(drawn_form& form);
  std::shared_ptr<Buffer> repaired(std::vector<QPDFObjectHandle>& streams,
                                   const content_surroundings& surroundings,
                                   std::uint64_t replaced_size);
  std::uint64_t replaced_size(page_content& page);

  QPDF& document_;
  const content_settings& settings_;
  document_summary summary_;
  std::map<QPDFObjGen, stream_use> stream_uses_;
  std::map<std::string, std::optional<QPDFObjectHandle>> new_contents_;  // by the keys of pages
};

void document_repair::run() {
  std::vector<page_content> pages = contents_of_pages(document_);
  summary_.pages = static_cast<std::int64_t>(pages.size());
  std::vector<drawn_form> forms = forms_drawn(document_, pages);
  for (const page_content& page : pages) {
    for (const QPDFObjectHandle& stream : page.streams) {
      stream_use& use = stream_uses_[stream.getObjGen()];
      if (use.keys == 0 || use.last_key != page.key) ++use.keys;
      use.last_key = page.key;
    }
  }
  for (page_content& page : pages) repair(page);
  for (drawn_form& form : forms) repair(form);
}

/// What goes when a page's content is replaced: not what other pages draw with, too.
std::uint64_t document_repair::replaced_size(page_content& page) {
  std::vector<QPDFObjectHandle> own;
  std::set<QPDFObjGen> counted;  // a list can have a stream twice
  for (const QPDFObjectHandle& stream : page.streams) {
    const QPDFObjGen id = stream.getObjGen();
    if (stream_uses_[id].keys == 1 && counted.insert(id).second) own.push_back(stream);
  }
  return packed_size(own);
}

void document_repair::repair(page_content& page) {
  if (page.streams.empty()) return;
  const auto [known, is_new] = new_contents_.try_emplace(page.key);
  if (is_new) {
    const resource_dictionary names(page.resources);
    const std::shared_ptr<Buffer> bytes =
        repaired(page.streams, {names, page.scale, true, true}, replaced_size(page));
    if (bytes) {
      QPDFObjectHandle stream = document_.newStream();
      if (page.streams.size() == 1) {
        stream.replaceDict(page.streams.front().getDict().shallowCopy());
      }
      replace_text(stream, bytes);
      known->second = stream;
    }
  }
  if (!known->second) return;
  const bool is_list = page.page.getKey("/Contents").isArray();
  page.page.replaceKey("/Contents",
                       is_list ? QPDFObjectHandle::newArray({*known->second}) : *known->second);
}

void document_repair::repair(drawn_form& form) {
  const resource_dictionary names(form.stream.getDict().getKey("/Resources"));
  std::vector<QPDFObjectHandle> streams = {form.stream};
  const std::shared_ptr<Buffer> bytes =
      repaired(streams, {names, form.scale, true, false}, packed_size(streams));
  if (!bytes) return;
  replace_text(form.stream, bytes);
}

/// A repaired content, packed; nothing when there is nothing to gain.
std::shared_ptr<Buffer> document_repair::repaired(std::vector<QPDFObjectHandle>& streams,
                                                  const content_surroundings& surroundings,
                                                  std::uint64_t replaced_size) {
  std::optional<std::string> text = text_of(streams);
  if (!text) return nullptr;
  content_summary found;
  std::optional<std::string> result = repair_content(*text, surroundings, settings_, found);
  text.reset();
  summary_.polygons_read += found.polygons_read;
  std::shared_ptr<Buffer> bytes;
  if (result) bytes = packed(*result);
  if (bytes && settings_.close == closing::none && bytes->getSize() >= replaced_size) bytes.reset();
  summary_.polygons_left += bytes ? found.polygons_left : found.polygons_read;
  if (bytes) ++summary_.streams_changed;
  return bytes;
}

/// Writes the document as it was organised. What is packed stays packed as it is.
void document_repair::write(const fs::path& output) {
  output_file file(output, output_file::mode::replace);
  file_pipeline pipeline(file);
  QPDFWriter writer(document_);
  writer.setOutputPipeline(&pipeline);
  writer.setStreamDataMode(qpdf_s_preserve);
  writer.setObjectStreamMode(qpdf_o_preserve);
  writer.setLinearization(document_.isLinearized());
  writer.setExtraHeaderText(std::string(result_mark));
  // Documents for archives must have it.
  writer.setNewlineBeforeEndstream(true);
  if (!document_.isEncrypted()) writer.setDeterministicID(true);
  writer.write();
  pipeline.flush();
  file.close();
}

void copy_bytes(const fs::path& from, const fs::path& to) {
  input_file input(from);
  output_file output(to, output_file::mode::replace);
  std::array<char, 1U << 16> buffer{};
  while (const std::size_t count = input.read(buffer.data(), buffer.size())) {
    output.write({buffer.data(), count});
  }
  output.close();
}

/// Runs what works with a document, whose library has many ways to fail.
template <class Work>
auto guarded(Work work) {
  try {
    return work();
  } catch (const run_error&) {
    throw;
  } catch (const std::bad_alloc&) {
    throw run_error("not enough memory");
  } catch (const std::system_error& error) {
    throw run_error(error.code().message());
  } catch (const std::exception& error) {
    throw refusal(std::string("it is damaged beyond repair: ") + error.what());
  }
}

}  // namespace

document_summary repair_document(const fs::path& input, const fs::path& output,
                                 const content_settings& settings) {
  return guarded([&] {
    QPDF document;
    open_document(document, input);
    check_permission(document);

    document_repair repair(document, settings);
    repair.run();
    document_summary summary = repair.summary();
    summary.bytes_read = file_size(input);
    if (summary.streams_changed > 0) {
      repair.write(output);
      check_objects(document);
      summary.bytes_written = file_size(output);
    }
    const bool is_larger = summary.bytes_written >= summary.bytes_read;
    if (summary.streams_changed == 0 || (is_larger && settings.close == closing::none)) {
      copy_bytes(input, output);
      summary.streams_changed = 0;
      summary.polygons_left = summary.polygons_read;
      summary.bytes_written = file_size(output);
    }
    return summary;
  });
}

std::vector<page_size> page_sizes(const fs::path& input) {
  return guarded([&] {
    QPDF document;
    open_document(document, input);
    std::vector<page_size> sizes;
    for (const QPDFObjectHandle& page : document.getAllPages()) {
      QPDFObjectHandle box = QPDFPageObjectHelper(page).getMediaBox();
      const QPDFObjectHandle::Rectangle corners = box.getArrayAsRectangle();
      sizes.push_back({std::abs(corners.urx - corners.llx), std::abs(corners.ury - corners.lly)});
    }
    return sizes;
  });
}

}  // namespace trellion::pdf
