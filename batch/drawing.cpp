#include "batch/drawing.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>

#include "batch/hairlines.h"
#include "batch/pdf_worker.h"
#include "batch/programs.h"

namespace trellion::batch {
namespace {

namespace fs = std::filesystem;

/// More than a page of A4 has at 600 dpi. A drawing takes three bytes of memory for each.
constexpr std::size_t max_pixels = 40'000'000;
constexpr double max_coarse_pixels = 4e6;
/// No drawing is written to disk; fonts and bands may be, in passing.
constexpr std::uint64_t drawing_file_size = std::uint64_t{256} << 20;

/// The resolution that gives the longer side so many pixels, within limits.
double fitting(double longer_side, double pixels, double least, double most) {
  return std::clamp(pixels * points_per_inch / longer_side, least, most);
}

std::string option(const char* name, double value) {
  std::array<char, 64> text{};
  std::snprintf(text.data(), text.size(), "%s%.6g", name, value);
  return text.data();
}

/// Otherwise Ghostscript paints every pixel that an area touches, so that of two that share an edge
/// the later one is wider by a pixel. Polygons of PDF may change places. Where it cannot be asked
/// for, the pictures are compared as they are.
constexpr const char* centre_sampled =
    "<< /Install { systemdict /.setfilladjust2 known { 0 0 .setfilladjust2 } if } >> setpagedevice";

/// Ghostscript starts without a look for garbage in its memory, in which all is new (-dNOGC); from
/// here on it collects, as it does otherwise.
constexpr const char* collect_garbage = "0 vmreclaim ";

/// Files are not to be filled with pages.
constexpr const char* one_page_only =
    "<< /BeginPage { 1 gt { /several-pages cvx exec } if } >> setpagedevice";
/// Said at the end of a figure that does not quit, of the device that it leaves.
constexpr const char* tell_pages = "(pages: ) print currentpagedevice /PageCount get =only";
constexpr std::string_view told_one_page = "pages: 1";

/// A drawing and its head. What writes more draws page after page, or nonsense.
constexpr std::size_t max_drawing = 3 * max_pixels + 4096;

int bits_of(antialiasing smooth) { return smooth == antialiasing::on ? 4 : 1; }

constexpr const char* max_bitmap = "200000000";

/// The options of drawings, whatever their style.
void add_device(std::vector<std::string>& command) {
  command.insert(command.end(),
                 {"-sDEVICE=ppmraw", std::string("-dMaxBitmap=") + max_bitmap, "-sOutputFile=-"});
}

/// Those of PDF.
void add_pdf_device(const std::string& pdf, std::vector<std::string>& command) {
  command.insert(command.end(), {"-sDEVICE=pdfwrite", "-dAutoRotatePages=/None",
                                 "-dDownsampleColorImages=false", "-dDownsampleGrayImages=false",
                                 "-dDownsampleMonoImages=false", "-dAutoFilterColorImages=false",
                                 "-dAutoFilterGrayImages=false", "-dColorImageFilter=/FlateEncode",
                                 "-dGrayImageFilter=/FlateEncode", "-sOutputFile=" + pdf});
}

/// PostScript that goes over from PDF to drawings.
std::string change_device(const page_frame& frame) {
  return std::string("mark /OutputFile (-) /MaxBitmap ") + max_bitmap + " /PageSize [" +
         std::to_string(frame.width) + ' ' + std::to_string(frame.height) +
         "] (ppmraw) finddevice putdeviceprops setdevice\n";
}

std::string set_up(const drawing_style& style) {
  std::array<char, 160> program{};
  const int bits = bits_of(style.smooth);
  // As Ghostscript starts: lines move to the pixels where those are large.
  std::snprintf(program.data(), program.size(),
                "<< /HWResolution [%.6g %.6g] /TextAlphaBits %d /GraphicsAlphaBits %d >> "
                "setpagedevice %s setstrokeadjust initgraphics",
                style.dpi, style.dpi, bits, bits, style.dpi < 150 ? "true" : "false");
  return program.data();
}

/// PostScript that runs a file, after some of ours, every time as when Ghostscript has just
/// started. What the file leaves behind, in global memory, too, the outermost restore takes back,
/// and the sequence of random numbers begins anew. All that is bound before the file is run, and it
/// has no name for what is kept for it.
class clean_runs {
 public:
  explicit clean_runs(std::string file) : file_(std::move(file)) {}

  void add(const std::string& before) {
    runs_ += "//trellion-kept 0 save put //trellion-random srand " + before + " (" + file_ +
             ") run clear cleardictstack //trellion-kept 0 get restore\n";
  }
  void add_between(const std::string& program) { runs_ += program; }
  [[nodiscard]] std::string program() const {
    return collect_garbage +
           ("/trellion-kept 1 array def /trellion-random rrand def { " + runs_ +
            "} bind currentdict /trellion-kept undef currentdict /trellion-random undef exec");
  }

 private:
  std::string file_;
  std::string runs_;
};

bool ignore_output(std::string_view /*bytes*/) { return true; }

/// Says why a program did not succeed.
[[noreturn]] void throw_failure(const std::vector<std::string>& command,
                                const child_result& ended) {
  switch (ended.how) {
    case child_result::ending::interrupted: throw dead_end{verdict::interrupted, {}};
    case child_result::ending::stopped:
      throw dead_end{verdict::withheld, "it draws more than one page"};
    default: break;
  }
  const std::string name = fs::path(command.front()).filename();
  const std::string reason = ended.reason();
  throw dead_end{verdict::failed, reason.starts_with(name) ? reason : name + ": " + reason};
}

/// PDF may be packed less well, and PostScript spells images out.
std::uint64_t file_limit_of(const fs::path& source) {
  return (std::uint64_t{64} << 20) + 16 * static_cast<std::uint64_t>(fs::file_size(source));
}

}  // namespace

resolutions resolutions_for(const page_frame& frame) {
  const auto width = static_cast<double>(frame.width);
  const auto height = static_cast<double>(frame.height);
  const double longer = std::max(width, height);
  const double square_inches = width * height / (points_per_inch * points_per_inch);
  // The same for all figures of ordinary size; a small one is looked at more closely.
  double coarse = fitting(longer, 400, 144, 600);
  double fine = fitting(longer, 2000, 600, 2400);
  coarse = std::min(coarse, std::sqrt(max_coarse_pixels / square_inches));
  // Ghostscript can round both sides up.
  fine = std::min(fine, std::sqrt(0.98 * static_cast<double>(max_pixels) / square_inches));
  constexpr double least = 36;
  if (fine < least) throw dead_end{verdict::withheld, "the page is too large to be compared"};
  return {coarse, fine};
}

page_frame frame_around(const page_part& part, const page_frame& page, const resolutions& dpi) {
  // At 600 dpi 3 points are 25 pixels, at 144 dpi 6.
  constexpr std::int64_t raster = 3;
  constexpr double margin = 6;
  if (dpi.coarse != 144 || dpi.fine != 600) return page;
  const auto before = [](double points, std::int64_t most) {
    return std::clamp<std::int64_t>(std::llround(std::floor((points - margin) / raster)) * raster,
                                    0, most);
  };
  const auto after = [](double points, std::int64_t most) {
    return std::min<std::int64_t>(std::llround(std::ceil((points + margin) / raster)) * raster,
                                  most);
  };
  // Pixels are counted from the left and lower edges.
  const auto height = static_cast<double>(page.height);
  const std::int64_t left = before(part.left, page.width - 1);
  const std::int64_t right = after(part.right, page.width);
  const std::int64_t bottom = before(height - part.bottom, page.height - 1);
  const std::int64_t top = after(height - part.top, page.height);
  return {page.left + left, page.bottom + bottom, right - left, top - bottom};
}

pixmap drawing_programs::draw(const fs::path& file, const page_view& page, double dpi,
                              antialiasing smooth) const {
  const std::string bits = std::to_string(bits_of(smooth));
  std::vector<std::string> command = page.is_pdf() ? ghostscript() : ghostscript(page.frame);
  if (page.is_pdf()) {
    const std::string number = std::to_string(page.number);
    command.insert(command.end(), {"-dFirstPage=" + number, "-dLastPage=" + number});
  }
  add_device(command);
  command.insert(command.end(),
                 {option("-r", dpi), "-dTextAlphaBits=" + bits, "-dGraphicsAlphaBits=" + bits});
  command.insert(command.end(), {"-c", collect_garbage});
  if (page.is_pdf()) command.emplace_back(centre_sampled);
  command.insert(command.end(), {"-f", named(file)});
  try {
    ppm_reader reader(1, max_pixels);
    const child_result ended = run_into(reader, 1, command, drawing_file_size);
    if (!ended.succeeded()) throw_failure(command, ended);
    return std::move(reader.pages().front());
  } catch (const second_page&) {
    throw dead_end{verdict::withheld, "it draws more than one page"};
  } catch (const run_error& error) {
    throw dead_end{verdict::withheld, std::string("it draws no picture: ") + error.what()};
  }
}

std::optional<std::vector<pixmap>> drawing_programs::draw_together(
    const fs::path& eps, const page_frame& frame, const std::vector<drawing_style>& styles,
    const fs::path& pdf) const {
  const bool with_pdf = !pdf.empty();
  const std::string file = named(eps);
  std::vector<std::string> command = ghostscript(frame);
  clean_runs runs(file);
  std::uint64_t file_size = drawing_file_size;
  if (with_pdf) {
    add_pdf_device(named(pdf), command);
    runs.add(one_page_only);
    runs.add_between(change_device(frame));
    file_size = std::max(file_size, file_limit_of(eps));
  } else {
    add_device(command);
  }
  for (const drawing_style& style : styles) runs.add(set_up(style));
  // A save is the outermost where none is made at the start.
  command.insert(command.end(),
                 {"-dNOOUTERSAVE", "--permit-file-read=" + file, "-c", runs.program()});
  ppm_reader reader(styles.size(), max_pixels);
  const child_result ended = run_into(reader, styles.size(), command, file_size);
  using ending = child_result::ending;
  // Without even a page, a drawing alone takes too long as well; unless it was the PDF that did.
  const bool hangs = ended.how == ending::timed_out && !with_pdf && !reader.has_page();
  if (hangs || ended.how == ending::interrupted) throw_failure(command, ended);
  if (!ended.succeeded()) return std::nullopt;
  try {
    std::vector<pixmap> pictures = reader.pages();
    const auto fits = [&frame](const pixmap& picture, const drawing_style& style) {
      const double width = static_cast<double>(frame.width) * style.dpi / points_per_inch;
      return std::abs(static_cast<double>(picture.width) - width) <= 1;
    };
    if (std::ranges::equal(pictures, styles, fits)) return pictures;
  } catch (const run_error&) {
    // It may quit, or draw no page, or several.
  }
  return std::nullopt;
}

pixmap drawing_programs::draw_pdf(const fs::path& pdf, std::int64_t number, double dpi,
                                  antialiasing smooth) const {
  // To pack a drawing would take most of the time.
  const fs::path root = directory_ / "drawn";
  run({*tools_.pdftocairo, "-tiff", "-tiffcompression", "none", "-singlefile", "-f",
       std::to_string(number), "-r", option("", dpi), "-antialias",
       smooth == antialiasing::on ? "default" : "none", named(pdf), named(root)},
      2 * max_drawing);
  const fs::path drawing = root.string() + ".tif";
  pixmap picture = read_tiff(drawing, max_pixels);
  fs::remove(drawing);
  return picture;
}

bool drawing_programs::to_pdf(const fs::path& eps, const page_frame& frame, const fs::path& pdf,
                              const std::vector<std::string>& more_options) const {
  std::vector<std::string> command = ghostscript(frame);
  add_pdf_device(named(pdf), command);
  command.insert(command.end(), more_options.begin(), more_options.end());
  command.insert(command.end(),
                 {"-c", collect_garbage, one_page_only, "-f", named(eps), "-c", tell_pages});
  return run_to_end(command, file_limit_of(eps)).messages.ends_with(told_one_page);
}

void drawing_programs::move(const fs::path& pdf, const shift& by, const fs::path& moved) const {
  std::vector<std::string> command = worker_arguments({named(pdf), named(moved), by});
  command.insert(command.begin(), own_executable);
  run(command, file_limit_of(pdf));
}

void drawing_programs::to_eps(const fs::path& pdf, const fs::path& eps) const {
  // Level 2 cannot hold every image mask.
  run({*tools_.pdftops, "-eps", "-level3", named(pdf), named(eps)}, file_limit_of(pdf));
}

std::string drawing_programs::box_comments_of(const fs::path& eps) const {
  return run_to_end({*tools_.gs, "-q", "-dSAFER", "-dBATCH", "-dNOPAUSE", "-sDEVICE=bbox",
                     "-sstdout=/dev/null", named(eps)},
                    drawing_file_size)
      .messages;
}

/// How Ghostscript is called: nothing outside is read or written.
std::vector<std::string> drawing_programs::ghostscript() const {
  return {*tools_.gs, "-q", "-dSAFER", "-dBATCH", "-dNOPAUSE", "-dNOGC", "-sstdout=%stderr"};
}

/// And the page is just the frame.
std::vector<std::string> drawing_programs::ghostscript(const page_frame& frame) const {
  std::vector<std::string> command = ghostscript();
  command.insert(command.end(),
                 {"-dFIXEDMEDIA", "-dDEVICEWIDTHPOINTS=" + std::to_string(frame.width),
                  "-dDEVICEHEIGHTPOINTS=" + std::to_string(frame.height)});
  return command;
}

child_result drawing_programs::run_into(ppm_reader& reader, std::size_t n_pages,
                                        const std::vector<std::string>& command,
                                        std::uint64_t file_size) const {
  std::size_t n_bytes = 0;
  return run_within(file_size, command, [&](std::string_view more) {
    n_bytes += more.size();
    reader.take(more);
    return n_bytes <= n_pages * max_drawing;
  });
}

child_result drawing_programs::run_within(std::uint64_t file_size,
                                          const std::vector<std::string>& command,
                                          const output_taker& take) const {
  child_limits limits = limits_;
  limits.file_size = file_size;
  return runner_.run(command, directory_, take, limits);
}

child_result drawing_programs::run_to_end(const std::vector<std::string>& command,
                                          std::uint64_t file_size) const {
  child_result result = run_within(file_size, command, ignore_output);
  if (!result.succeeded()) throw_failure(command, result);
  return result;
}

const pixmap& appearance::drawn(lazy_drawing& drawing) {
  auto& [style, picture] = drawing;
  if (!picture) picture = programs_->draw(file_, page_, style.dpi, style.smooth);
  return *picture;
}

void appearance::make_together(const std::vector<lazy_drawing*>& drawings, bool with_pdf) {
  if (page_.is_pdf()) return;
  std::vector<lazy_drawing*> to_make;
  std::vector<drawing_style> styles;
  for (lazy_drawing* drawing : drawings) {
    if (drawing->picture) continue;
    to_make.push_back(drawing);
    styles.push_back(drawing->style);
  }
  if (styles.size() < 2) return;
  with_pdf = with_pdf && programs_->can_draw_pdf() && !has_pdf_;
  std::optional<std::vector<pixmap>> made =
      programs_->draw_together(file_, page_.frame, styles, with_pdf ? pdf() : fs::path());
  if (!made) return;
  has_pdf_ = has_pdf_ || with_pdf;
  for (std::size_t n = 0; n < to_make.size(); ++n) to_make[n]->picture = std::move((*made)[n]);
}

const pixmap& appearance::cairo_drawn(std::optional<pixmap>& drawing, double dpi) {
  if (!drawing) drawing = programs_->draw_pdf(file_, page_.number, dpi, antialiasing::off);
  return *drawing;
}

appearance appearance::moved(const shift& by) const {
  fs::path copy = file_;
  copy.replace_extension(option("", by.right) + option("_", by.up) + ".pdf");
  if (!fs::exists(copy)) programs_->move(file_, by, copy);
  return {*programs_, copy, page_, dpi_};
}

std::int64_t appearance::hairlines_by_cairo() {
  const auto smooth_of = [this](const fs::path& pdf, std::int64_t number) {
    return programs_->draw_pdf(pdf, number, dpi_.coarse, antialiasing::on);
  };
  if (page_.is_pdf()) return hairline_pixels(smooth_of(file_, page_.number), cairo_coarse());
  if (!has_pdf_) static_cast<void>(programs_->to_pdf(file_, page_.frame, pdf()));
  has_pdf_ = true;
  return hairline_pixels(smooth_of(pdf(), 1),
                         programs_->draw_pdf(pdf(), 1, dpi_.coarse, antialiasing::off));
}

const hairline_counts& appearance::hairlines() {
  if (hairlines_) return *hairlines_;
  hairline_counts counts{hairline_pixels(smooth(), coarse()), std::nullopt};
  if (programs_->can_draw_pdf()) counts.cairo = hairlines_by_cairo();
  return hairlines_.emplace(counts);
}

}  // namespace trellion::batch
