#include "batch/workshop.h"

#include <algorithm>
#include <cmath>
#include <exception>
#include <new>
#include <string>
#include <utility>

#include "batch/inputs.h"
#include "batch/pdf_support.h"
#include "batch/pdf_worker.h"
#include "batch/programs.h"
#include "batch/worker.h"
#include "files.h"

namespace trellion::batch {
namespace {

namespace fs = std::filesystem;

dead_end early_dead_end(const early_end& ended) {
  switch (ended.reason) {
    case end_reason::no_operators: return {verdict::nothing_to_join, "no polygons found"};
    case end_reason::no_safe_name:
      return {verdict::failed, "the file has used up the names for the macro that closes the mesh"};
    case end_reason::collapsed_path: return {verdict::failed, "two polygons cancel each other out"};
    default: return {verdict::failed, "the repair ended early"};
  }
}

/// Why a file is no figure, or has the name of another kind; null for any other. What has no name
/// may be a text that works all the same.
const char* why_refused(const figure& input) {
  switch (input.kind) {
    case file_kind::pdf:
      if (!has_pdf) return "this trellion-batch was built without PDF";
      return is_eps_name(input.file) ? "it is PDF: give it a name that ends in .pdf" : nullptr;
    case file_kind::eps:
    case file_kind::dos_eps:
      return is_pdf_name(input.file) ? "it is PostScript: give it a name that ends in .eps"
                                     : nullptr;
    case file_kind::gzip: return "it is compressed: gunzip it";
    case file_kind::packed: return "it is compressed: unpack it";
    case file_kind::bitmap: return "it is a bitmap, no EPS or PDF";
    case file_kind::markup: return "it is SVG or a page of the web, no EPS or PDF";
    case file_kind::empty: return "it is empty";
    case file_kind::other: break;
  }
  return nullptr;
}

/// Said where a worker ended well and yet has not told all.
constexpr const char* no_outcome = "the worker does not say what it did";

page_frame frame_of_size(double width, double height) {
  // No page is larger; what is empty is drawn as one that programs take for granted.
  constexpr double most = 1e7;
  const auto whole = [most](double points) {
    return static_cast<std::int64_t>(std::ceil(std::clamp(points, 1.0, most)));
  };
  return {0, 0, whole(width), whole(height)};
}

}  // namespace

dead_end dead_end_of(const std::exception& error) {
  std::string reason = error.what();
  if (const auto* of_files = dynamic_cast<const fs::filesystem_error*>(&error)) {
    reason = of_files->code().message();
  } else if (dynamic_cast<const std::bad_alloc*>(&error) != nullptr) {
    reason = "not enough memory";
  }
  return {verdict::failed, reason};
}

workshop::workshop(figure input, fs::path result, const batch_options& options,
                   const process_runner& runner)
    : input_(std::move(input)),
      result_(std::move(result)),
      options_(options),
      runner_(runner),
      directory_(options.dry_run ? fs::temp_directory_path() : directory_of(result_)),
      programs_(options.tools, runner, {options.time_limit, options.memory_limit, 0},
                directory_.path()) {
  if (const char* const why = why_refused(input_)) throw dead_end{verdict::failed, why};
  if (input_.is_one_bitmap) {
    throw dead_end{verdict::nothing_to_join,
                   "pdftops has made it one bitmap, since something in its PDF is transparent: "
                   "repair the PDF"};
  }
}

candidate workshop::repair(const repair_way& way, const std::vector<group_range>& left_alone) {
  // In a folder of its own the result has the name that messages are to tell.
  const fs::path folder = directory_ / std::to_string(++n_repairs_);
  fs::create_directory(folder);
  return way.pdf ? repair_pdf(way, folder) : repair_text(way, folder, left_alone);
}

candidate workshop::repair_text(const repair_way& way, const fs::path& folder,
                                const std::vector<group_range>& left_alone) {
  const fs::path& source = text_source(way);
  const fs::path name = result_.filename();
  const repair_request request{
      source,          name,      options_.merge_limit.value_or(0), way.min_separators,
      way.remove_mesh, left_alone};
  const std::optional<repair_outcome> outcome =
      read_outcome(work_on(source, folder, worker_arguments(request)));
  if (!outcome) throw dead_end{verdict::failed, no_outcome};
  if (const auto* early = std::get_if<early_end>(&*outcome)) throw early_dead_end(*early);
  const auto& summary = std::get<repair_summary>(*outcome);
  return {way, folder / name, fs::file_size(folder / name), summary, summary.mergers > 0, {}};
}

/// Of a PDF file, or of the PDF on a detour, which then leads back.
candidate workshop::repair_pdf(const repair_way& way, const fs::path& folder) {
  const fs::path& source = way.detour ? detour().pdf : input_.file;
  const fs::path result = folder / result_.filename();
  const fs::path repaired = way.detour ? folder / "detour.pdf" : result;
  const pdf_request request{source, repaired.filename(), way.careful, way.remove_mesh};
  const std::optional<pdf_outcome> outcome =
      read_pdf_outcome(work_on(source, folder, worker_arguments(request)));
  if (!outcome) throw dead_end{verdict::failed, no_outcome};

  candidate made{way, result, 0, {}, outcome->streams_changed > 0, {}};
  made.summary.polygons_read = outcome->polygons_read;
  made.summary.polygons_left = outcome->polygons_left;
  // What the detour saves by itself is no repair. Without one nobody wants the EPS.
  if (way.detour) made.is_gain = outcome->polygons_left < outcome->polygons_read;
  if (way.detour && !made.is_gain && !options_.keep_all) return made;
  if (way.detour) return_from_detour(input_, programs_, repaired, result);
  made.n_bytes = fs::file_size(result);
  for (const pdf::numbered_page& page : outcome->pages) {
    if (!way.detour) made.pages.push_back({frame_of_size(page.width, page.height), page.number});
  }
  return made;
}

/// Runs this program as a worker on a source, and returns what it says.
std::string workshop::work_on(const fs::path& source, const fs::path& folder,
                              std::vector<std::string> arguments) {
  arguments.insert(arguments.begin(), own_executable);
  std::string said;
  const auto take = [&said](std::string_view bytes) {
    constexpr std::size_t enough = std::size_t{64} << 20;  // a line for every page of a book
    said += bytes;
    return said.size() < enough;
  };
  const std::uint64_t most_bytes = (std::uint64_t{64} << 20) + 4 * fs::file_size(source);
  const child_result ended = runner_.run(arguments, folder, take,
                                         {options_.time_limit, options_.memory_limit, most_bytes});
  if (ended.how == child_result::ending::interrupted) throw dead_end{verdict::interrupted, {}};
  if (!ended.succeeded()) throw dead_end{verdict::failed, ended.reason()};
  return said;
}

std::vector<page_view> workshop::pages_of(const candidate& made) {
  if (input_.kind == file_kind::pdf) return made.pages;
  return {{frame()}};
}

appearance& workshop::input_appearance(const page_view& page) {
  if (!appearance_ || appearance_->first != page) {
    appearance_.emplace(page, view(input_.file, directory_ / "input", page));
  }
  return appearance_->second;
}

appearance workshop::appearance_of(const candidate& made, const page_view& page) {
  return view(made.file, made.file.parent_path() / "framed", page);
}

/// The drawing programs want what they draw in their directory: there goes a copy, unless there is
/// one. Its name is without the extension.
appearance workshop::view(const fs::path& source, fs::path copy, const page_view& page) {
  if (!page.is_pdf()) return framed(source, copy.replace_extension(".eps"), page.frame);
  copy.replace_extension(".pdf");
  if (!fs::exists(copy)) fs::copy_file(source, copy);
  return {programs_, copy, page, resolutions_for(page.frame)};
}

appearance workshop::input_appearance(const page_part& part) {
  return framed(input_.file, directory_ / "part.eps",
                frame_around(part, frame(), resolutions_for(frame())));
}

appearance workshop::appearance_of(const candidate& made, const page_part& part) {
  return framed(made.file, made.file.parent_path() / "part.eps",
                frame_around(part, frame(), resolutions_for(frame())));
}

appearance workshop::framed(const fs::path& source, const fs::path& eps, const page_frame& part) {
  write_framed(source, part, eps);
  return {programs_, eps, {part}, resolutions_for(frame())};
}

const fs::path& workshop::text_source(const repair_way& way) {
  if (way.detour) return detour().eps;
  if (input_.kind == file_kind::dos_eps) {
    throw dead_end{verdict::withheld,
                   "it has a DOS preview header; --auto and --detour do without"};
  }
  return input_.file;
}

const detour_files& workshop::detour() {
  if (!detour_) {
    try {
      appearance& input = input_appearance({frame()});
      const fs::path folder = directory_ / "detour";
      const detour_files files{folder / "detour.pdf", folder / "figure" / input_.file.filename()};
      fs::create_directories(files.eps.parent_path());
      bool drew_page = false;
      try {
        drew_page = take_detour(input_, programs_, files.pdf, files.eps);
      } catch (...) {
        // Where the figure cannot be drawn, or draws page after page, that is the reason.
        static_cast<void>(input.coarse());
        throw;
      }
      if (!drew_page) static_cast<void>(input.coarse());
      detour_ = files;
    } catch (const dead_end& end) {
      detour_ = end;
    } catch (const std::exception& error) {
      detour_ = dead_end_of(error);
    }
  }
  if (const auto* end = std::get_if<dead_end>(&*detour_)) throw dead_end(*end);
  return std::get<detour_files>(*detour_);
}

/// The frame of the figure's box. A file without one is drawn to see where it would be.
const page_frame& workshop::frame() {
  if (frame_) return *frame_;
  if (!input_.page.box) {
    const fs::path copy = directory_ / "unframed.eps";
    fs::copy_file(input_.file, copy);
    const eps_page drawn = read_page(programs_.box_comments_of(copy));
    if (!drawn.box) throw dead_end{verdict::withheld, "it has no BoundingBox, and draws nothing"};
    input_.page.box = drawn.box;
    input_.page.box_lines = drawn.box_lines;
  }
  return frame_.emplace(frame_of(*input_.page.box));
}

}  // namespace trellion::batch
