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

/// A drawing and its head. What writes more draws page after page, or nonsense.
constexpr std::size_t max_drawing = 3 * max_pixels + 4096;

bool ignore_output(std::string_view /*bytes*/) { return true; }

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
  const std::string bits = smooth == antialiasing::on ? "4" : "1";
  std::vector<std::string> command = page.is_pdf() ? ghostscript() : ghostscript(page.frame);
  if (page.is_pdf()) {
    const std::string number = std::to_string(page.number);
    command.insert(command.end(), {"-dFirstPage=" + number, "-dLastPage=" + number});
  }
  command.insert(command.end(),
                 {"-sDEVICE=ppmraw", option("-r", dpi), "-dTextAlphaBits=" + bits,
                  "-dGraphicsAlphaBits=" + bits, "-dMaxBitmap=200000000", "-sOutputFile=-"});
  if (page.is_pdf()) command.insert(command.end(), {"-c", centre_sampled, "-f"});
  command.push_back(named(file));
  try {
    return read_ppm(output_of(command), max_pixels);
  } catch (const second_page&) {
    throw dead_end{verdict::withheld, "it draws more than one page"};
  } catch (const run_error& error) {
    throw dead_end{verdict::withheld, std::string("it draws no picture: ") + error.what()};
  }
}

pixmap drawing_programs::draw_pdf(const fs::path& pdf, std::int64_t number, double dpi,
                                  antialiasing smooth) const {
  // To pack a drawing would take most of the time.
  const fs::path root = directory_ / "drawn";
  run({*tools_.pdftocairo, "-tiff", "-tiffcompression", "none", "-singlefile", "-f",
       std::to_string(number), "-r", option("", dpi), "-antialias",
       smooth == antialiasing::on ? "default" : "none", named(pdf), named(root)},
      2 * max_drawing, ignore_output);
  const fs::path drawing = root.string() + ".tif";
  pixmap picture = read_tiff(drawing, max_pixels);
  fs::remove(drawing);
  return picture;
}

void drawing_programs::to_pdf(const fs::path& eps, const page_frame& frame, const fs::path& pdf,
                              const std::vector<std::string>& more_options) const {
  std::vector<std::string> command = ghostscript(frame);
  command.insert(command.end(), {"-sDEVICE=pdfwrite", "-dAutoRotatePages=/None",
                                 "-dDownsampleColorImages=false", "-dDownsampleGrayImages=false",
                                 "-dDownsampleMonoImages=false", "-dAutoFilterColorImages=false",
                                 "-dAutoFilterGrayImages=false", "-dColorImageFilter=/FlateEncode",
                                 "-dGrayImageFilter=/FlateEncode", "-sOutputFile=" + named(pdf)});
  command.insert(command.end(), more_options.begin(), more_options.end());
  command.push_back(named(eps));
  run(command, file_limit_of(eps), ignore_output);
}

void drawing_programs::move(const fs::path& pdf, const shift& by, const fs::path& moved) const {
  std::vector<std::string> command = worker_arguments({named(pdf), named(moved), by});
  command.insert(command.begin(), own_executable);
  run(command, file_limit_of(pdf), ignore_output);
}

void drawing_programs::to_eps(const fs::path& pdf, const fs::path& eps) const {
  // Level 2 cannot hold every image mask.
  run({*tools_.pdftops, "-eps", "-level3", named(pdf), named(eps)}, file_limit_of(pdf),
      ignore_output);
}

std::string drawing_programs::box_comments_of(const fs::path& eps) const {
  return run_to_end({*tools_.gs, "-q", "-dSAFER", "-dBATCH", "-dNOPAUSE", "-sDEVICE=bbox",
                     "-sstdout=/dev/null", named(eps)},
                    drawing_file_size, ignore_output)
      .messages;
}

/// How Ghostscript is called: nothing outside is read or written.
std::vector<std::string> drawing_programs::ghostscript() const {
  return {*tools_.gs, "-q", "-dSAFER", "-dBATCH", "-dNOPAUSE", "-sstdout=%stderr"};
}

/// And the page is just the frame.
std::vector<std::string> drawing_programs::ghostscript(const page_frame& frame) const {
  std::vector<std::string> command = ghostscript();
  command.insert(command.end(),
                 {"-dFIXEDMEDIA", "-dDEVICEWIDTHPOINTS=" + std::to_string(frame.width),
                  "-dDEVICEHEIGHTPOINTS=" + std::to_string(frame.height)});
  return command;
}

std::string drawing_programs::output_of(const std::vector<std::string>& command) const {
  std::string bytes;
  run(command, drawing_file_size, [&bytes](std::string_view more) {
    if (bytes.size() + more.size() > max_drawing) return false;
    bytes += more;
    return true;
  });
  return bytes;
}

child_result drawing_programs::run_to_end(const std::vector<std::string>& command,
                                          std::uint64_t file_size, const output_taker& take) const {
  child_limits limits = limits_;
  limits.file_size = file_size;
  child_result result = runner_.run(command, directory_, take, limits);
  switch (result.how) {
    case child_result::ending::interrupted: throw dead_end{verdict::interrupted, {}};
    case child_result::ending::stopped:
      throw dead_end{verdict::withheld, "it draws more than one page"};
    default: break;
  }
  if (result.succeeded()) return result;
  const std::string name = fs::path(command.front()).filename();
  const std::string reason = result.reason();
  throw dead_end{verdict::failed, reason.starts_with(name) ? reason : name + ": " + reason};
}

const pixmap& appearance::drawn(std::optional<pixmap>& drawing, double dpi, antialiasing smooth) {
  if (!drawing) drawing = programs_->draw(file_, page_, dpi, smooth);
  return *drawing;
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
  const fs::path pdf = fs::path(file_).replace_extension(".pdf");
  programs_->to_pdf(file_, page_.frame, pdf);
  return hairline_pixels(smooth_of(pdf, 1),
                         programs_->draw_pdf(pdf, 1, dpi_.coarse, antialiasing::off));
}

const hairline_counts& appearance::hairlines() {
  if (hairlines_) return *hairlines_;
  hairline_counts counts{hairline_pixels(smooth(), coarse()), std::nullopt};
  if (programs_->can_draw_pdf()) counts.cairo = hairlines_by_cairo();
  return hairlines_.emplace(counts);
}

}  // namespace trellion::batch
