#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "batch/eps_page.h"
#include "batch/file_report.h"
#include "batch/options.h"
#include "batch/pdf_moving.h"
#include "batch/pixmap.h"
#include "batch/process.h"

namespace trellion::batch {

enum class antialiasing { off, on };

/// How a page is drawn.
struct drawing_style {
  double dpi;
  antialiasing smooth;
};

/// A page that can be drawn: that of an EPS file, or one of a PDF file. Of those only the size of
/// the frame counts.
struct page_view {
  page_frame frame{};
  std::int64_t number = 0;  ///< in a PDF file, from 1 on; 0 for EPS

  [[nodiscard]] bool is_pdf() const { return number > 0; }
  bool operator==(const page_view&) const = default;
};

inline constexpr double points_per_inch = 72;

/// Dots per inch to draw a page at.
struct resolutions {
  double coarse;  ///< about that of a screen
  double fine;    ///< about that of print: it shows slivers
};

/// What suits a page: small figures are drawn finer, large ones no larger than memory and patience
/// allow. Throws dead_end for a page that is too large to be looked at.
resolutions resolutions_for(const page_frame& frame);

/// The frame around a part of a page, in which every pixel is drawn as it is on the whole page.
/// That is the whole page where the resolutions have no common raster.
page_frame frame_around(const page_part& part, const page_frame& page, const resolutions& dpi);

/// Runs the programs that draw and convert figures. All throw dead_end, which names the program and
/// says why it failed, and run_error.
class drawing_programs {
 public:
  /// The first two must outlive it. `directory` is where the programs work; all files are in it.
  drawing_programs(const programs& tools, const process_runner& runner, const child_limits& limits,
                   std::filesystem::path directory)
      : tools_(tools), runner_(runner), limits_(limits), directory_(std::move(directory)) {}

  /// Draws a page with Ghostscript. An EPS file begins with the head for its frame (see
  /// eps_page.h), and has no other page. Areas of PDF cover the pixels whose centres are in them,
  /// those of EPS every pixel that they touch.
  [[nodiscard]] pixmap draw(const std::filesystem::path& file, const page_view& page, double dpi,
                            antialiasing smooth) const;
  /// Draws an EPS file in several styles, which are the same drawings for less time: Ghostscript
  /// starts once, and is taken back to its start after each. If `pdf` has a name the file is
  /// written there, too, as by `to_pdf`. Nothing where it does not work; why, `draw` and `to_pdf`
  /// tell. Throws dead_end for an interruption, and, without PDF, where even one drawing takes too
  /// long.
  ///
  /// It is for one file only: what Ghostscript keeps of glyphs outlives what is taken back, and
  /// another file's fonts can have the same numbers.
  [[nodiscard]] std::optional<std::vector<pixmap>> draw_together(
      const std::filesystem::path& eps, const page_frame& frame,
      const std::vector<drawing_style>& styles, const std::filesystem::path& pdf = {}) const;
  /// Draws a page of a PDF file with poppler's cairo, which must be there.
  [[nodiscard]] pixmap draw_pdf(const std::filesystem::path& pdf, std::int64_t number, double dpi,
                                antialiasing smooth) const;
  [[nodiscard]] bool can_draw_pdf() const { return tools_.pdftocairo.has_value(); }

  /// Converts such a file to PDF, with more options for Ghostscript. Nothing is moved, turned or
  /// lost but what PDF cannot hold. Returns whether it is known to have drawn a page; what draws
  /// several ends in an error.
  [[nodiscard]] bool to_pdf(const std::filesystem::path& eps, const page_frame& frame,
                            const std::filesystem::path& pdf,
                            const std::vector<std::string>& more_options = {}) const;
  /// Writes a PDF file that draws the same, moved.
  void move(const std::filesystem::path& pdf, const shift& by,
            const std::filesystem::path& moved) const;
  /// Converts a PDF file to EPS.
  void to_eps(const std::filesystem::path& pdf, const std::filesystem::path& eps) const;
  /// The box comments that fit what an EPS file without any draws.
  [[nodiscard]] std::string box_comments_of(const std::filesystem::path& eps) const;

 private:
  /// How a file in the directory, where the programs run, is named to them: folders with a "%" or
  /// other odd bytes in their names mean something else to Ghostscript.
  [[nodiscard]] std::string named(const std::filesystem::path& file) const {
    return file.lexically_relative(directory_).string();
  }
  [[nodiscard]] std::vector<std::string> ghostscript() const;
  [[nodiscard]] std::vector<std::string> ghostscript(const page_frame& frame) const;
  [[nodiscard]] child_result run_into(ppm_reader& reader, std::size_t n_pages,
                                      const std::vector<std::string>& command,
                                      std::uint64_t file_size) const;
  [[nodiscard]] child_result run_within(std::uint64_t file_size,
                                        const std::vector<std::string>& command,
                                        const output_taker& take) const;
  [[nodiscard]] child_result run_to_end(const std::vector<std::string>& command,
                                        std::uint64_t file_size) const;
  void run(const std::vector<std::string>& command, std::uint64_t file_size) const {
    static_cast<void>(run_to_end(command, file_size));
  }

  const programs& tools_;
  const process_runner& runner_;
  child_limits limits_;
  std::filesystem::path directory_;
};

/// How a page looks: its drawings, each made when it is first asked for.
class appearance {
 public:
  /// An EPS file begins with the head for its frame. A PDF of it is written beside it.
  appearance(const drawing_programs& programs, std::filesystem::path file, const page_view& page,
             const resolutions& dpi)
      : programs_(&programs),
        file_(std::move(file)),
        page_(page),
        dpi_(dpi),
        coarse_{{dpi.coarse, antialiasing::off}, {}},
        smooth_{{dpi.coarse, antialiasing::on}, {}},
        fine_{{dpi.fine, antialiasing::off}, {}} {}

  [[nodiscard]] const resolutions& dpi() const { return dpi_; }
  /// To be called when all drawings are going to be asked for, and hairlines counted; or the sharp
  /// ones by Ghostscript.
  void expect_all() { make_together({&coarse_, &fine_, &smooth_}, true); }
  void expect_sharp() { make_together({&coarse_, &fine_}, false); }
  // By Ghostscript.
  const pixmap& coarse() { return drawn(coarse_); }
  const pixmap& smooth() { return drawn(smooth_); }
  const pixmap& fine() { return drawn(fine_); }
  /// Whether poppler's cairo can draw the page just as it is. Then these can be asked for.
  [[nodiscard]] bool has_cairo() const { return page_.is_pdf() && programs_->can_draw_pdf(); }
  const pixmap& cairo_coarse() { return cairo_drawn(cairo_coarse_, dpi_.coarse); }
  const pixmap& cairo_fine() { return cairo_drawn(cairo_fine_, dpi_.fine); }
  /// The same page of PDF, moved: a file of it is written beside it.
  [[nodiscard]] appearance moved(const shift& by) const;
  /// The hairlines as Ghostscript and, if it is there, poppler's cairo draw them.
  const hairline_counts& hairlines();

 private:
  /// A drawing by Ghostscript, if it has been made.
  struct lazy_drawing {
    drawing_style style;
    std::optional<pixmap> picture;
  };

  const pixmap& drawn(lazy_drawing& drawing);
  /// Makes those that are missing, if they are several, and with them the PDF.
  void make_together(const std::vector<lazy_drawing*>& drawings, bool with_pdf);
  /// Where the PDF of an EPS file goes.
  [[nodiscard]] std::filesystem::path pdf() const {
    return std::filesystem::path(file_).replace_extension(".pdf");
  }
  const pixmap& cairo_drawn(std::optional<pixmap>& drawing, double dpi);
  std::int64_t hairlines_by_cairo();

  const drawing_programs* programs_;
  std::filesystem::path file_;
  page_view page_;
  resolutions dpi_;
  std::optional<pixmap> cairo_coarse_;
  std::optional<pixmap> cairo_fine_;
  lazy_drawing coarse_;
  lazy_drawing smooth_;
  lazy_drawing fine_;
  std::optional<hairline_counts> hairlines_;
  bool has_pdf_ = false;  // made by us
};

}  // namespace trellion::batch
