#include "batch/figure.h"

#include <string_view>
#include <system_error>

#include "batch/detour.h"
#include "batch/earlier_result.h"
#include "batch/inputs.h"
#include "batch/prolog.h"
#include "batch/whole_file.h"
#include "files.h"
#include "report.h"

namespace trellion::batch {
namespace {

namespace fs = std::filesystem;

/// No figure is worth more memory than that, in each of the jobs.
constexpr std::uint64_t largest_text = std::uint64_t{2} << 30;

std::string converted_to_eps(const fs::path& pdf, const drawing_programs& programs) {
  const fs::path eps = fs::path(pdf).replace_extension(".eps");
  programs.to_eps(pdf, eps);
  std::string text = read_whole(eps, largest_text);
  fs::remove(eps);
  if (!is_whole(text)) throw dead_end{verdict::failed, "pdftops: what it wrote is not whole"};
  return text;
}

/// Documents that do not crop their figures show what sticks out of the box, too.
page_frame detour_frame(const figure& original) {
  constexpr std::int64_t margin = 72;
  return frame_of(*original.page.box, margin);
}

/// The comment that tells a result from other files.
std::string processing_line() {
  struct : byte_sink {
    void write(std::string_view more) override { bytes += more; }
    std::string bytes;
  } line;
  text_writer writer(line);
  write_processing_line(0, writer);
  writer.flush();
  return line.bytes;
}

/// Writes what pdftops has made of the detour's PDF as the figure that it was. `last_comment` ends
/// its header.
void write_detoured(std::string_view text, const figure& original, const fs::path& eps,
                    std::string_view last_comment = "") {
  if (is_one_bitmap(text)) {
    throw dead_end{verdict::not_kept,
                   "the detour makes one bitmap of the page, on which something is transparent"};
  }
  std::string whole = with_page_of(text, original.page, detour_frame(original));
  constexpr std::string_view end_of_header = "\n%%EndComments\n";
  whole.insert(whole.find(end_of_header) + end_of_header.size(), last_comment);
  write_whole(eps, "", without_unused_definitions(whole));
}

}  // namespace

figure look_at(const fs::path& file) {
  const fs::file_status status = fs::status(file);
  if (!fs::exists(status)) throw run_error("there is no such file");
  if (!fs::is_regular_file(status)) throw run_error("it is no regular file");
  const fs::file_time_type written = fs::last_write_time(file);
  const std::string text = read_whole(file);
  file_kind kind = kind_of(text);
  // What is wrong with it the repair of PDF can say.
  if (kind == file_kind::other && is_pdf_name(file)) kind = file_kind::pdf;
  return {fs::absolute(file),
          text.size(),
          static_cast<mode_t>(status.permissions()),
          written,
          kind,
          kind == file_kind::pdf ? eps_page() : read_page(postscript(text)),
          kind != file_kind::pdf && is_one_bitmap(postscript(text)),
          is_marked(text)};
}

bool is_unchanged(const figure& looked_at) {
  std::error_code error;
  const bool same_size = fs::file_size(looked_at.file, error) == looked_at.n_bytes;
  return same_size && fs::last_write_time(looked_at.file, error) == looked_at.written && !error;
}

void write_framed(const fs::path& source, const page_frame& frame, const fs::path& framed) {
  const std::string text = read_whole(source);
  write_whole(framed, framing_head(frame), postscript(text));
}

bool take_detour(const figure& original, const drawing_programs& programs, const fs::path& pdf,
                 const fs::path& eps) {
  const page_frame frame = detour_frame(original);
  const fs::path framed = pdf.parent_path() / "framed.eps";
  write_framed(original.file, frame, framed);
  const bool drew_page = programs.to_pdf(framed, frame, pdf);
  std::string text = converted_to_eps(pdf, programs);
  if (has_calibrated_colours_only(text)) {
    static_cast<void>(programs.to_pdf(framed, frame, pdf, {"-sColorConversionStrategy=RGB"}));
    text = converted_to_eps(pdf, programs);
  }
  write_detoured(text, original, eps);
  return drew_page;
}

void return_from_detour(const figure& original, const drawing_programs& programs,
                        const fs::path& pdf, const fs::path& eps) {
  write_detoured(converted_to_eps(pdf, programs), original, eps, processing_line());
}

}  // namespace trellion::batch
