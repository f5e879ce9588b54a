#include "batch/workshop.h"

#include <exception>
#include <new>
#include <string>
#include <utility>

#include "batch/inputs.h"
#include "batch/programs.h"
#include "batch/worker.h"
#include "files.h"

namespace trellion::batch {
namespace {

namespace fs = std::filesystem;

dead_end dead_end_of(const early_end& ended) {
  switch (ended.reason) {
    case end_reason::no_operators: return {verdict::nothing_to_join, "no polygons found"};
    case end_reason::no_safe_name:
      return {verdict::failed, "the file has used up the names for the macro that closes the mesh"};
    case end_reason::collapsed_path: return {verdict::failed, "two polygons cancel each other out"};
    default: return {verdict::failed, "the repair ended early"};
  }
}

/// What is no EPS file is told by its name; what has no name may be a text that works all the same.
void refuse_other_kinds(file_kind kind) {
  switch (kind) {
    case file_kind::pdf: throw dead_end{verdict::failed, "it is a PDF file (try pdftops -eps)"};
    case file_kind::gzip: throw dead_end{verdict::failed, "it is compressed (gunzip it)"};
    case file_kind::empty: throw dead_end{verdict::failed, "it is empty"};
    default: return;
  }
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

workshop::workshop(figure input, const batch_options& options, const process_runner& runner)
    : input_(std::move(input)),
      options_(options),
      runner_(runner),
      directory_(directory_of(input_.file)),
      programs_(options.tools, runner, {options.time_limit, options.memory_limit, 0},
                directory_.path()) {
  refuse_other_kinds(input_.kind);
}

candidate workshop::repair(const repair_way& way, const std::vector<group_range>& left_alone) {
  const fs::path& source = source_of(way);
  // In a folder of its own the result has the name that messages are to tell.
  const fs::path folder = directory_ / std::to_string(++n_repairs_);
  fs::create_directory(folder);
  const fs::path name = result_path(input_.file).filename();

  std::vector<std::string> command =
      worker_arguments({source, name, options_.merge_limit.value_or(0), way.min_separators,
                        way.remove_mesh, left_alone});
  command.insert(command.begin(), own_executable);
  std::string said;
  const auto take = [&said](std::string_view bytes) {
    constexpr std::size_t enough = 4096;
    said += bytes;
    return said.size() < enough;
  };
  const std::uint64_t most_bytes = (std::uint64_t{64} << 20) + 4 * fs::file_size(source);
  const child_result ended =
      runner_.run(command, folder, take, {options_.time_limit, options_.memory_limit, most_bytes});
  if (ended.how == child_result::ending::interrupted) throw dead_end{verdict::interrupted, {}};
  const std::optional<repair_outcome> outcome = read_outcome(said);
  if (!ended.succeeded() || !outcome) throw dead_end{verdict::failed, ended.reason()};
  if (const auto* early = std::get_if<early_end>(&*outcome)) throw dead_end_of(*early);
  return {way, folder / name, fs::file_size(folder / name), std::get<repair_summary>(*outcome)};
}

appearance& workshop::input_appearance() {
  if (!appearance_) appearance_.emplace(framed(input_.file, directory_ / "input.eps", frame()));
  return *appearance_;
}

appearance workshop::appearance_of(const candidate& made) {
  return framed(made.file, made.file.parent_path() / "framed.eps", frame());
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
  return {programs_, eps, part, resolutions_for(frame())};
}

const fs::path& workshop::source_of(const repair_way& way) {
  if (way.detour) return detour();
  if (input_.kind == file_kind::dos_eps) {
    throw dead_end{verdict::withheld,
                   "it has a DOS preview header; --auto and --detour do without"};
  }
  return input_.file;
}

const fs::path& workshop::detour() {
  if (!detour_) {
    try {
      // What draws page after page is found out here, before files are filled with it.
      static_cast<void>(input_appearance().coarse());
      const fs::path eps = directory_ / "detour" / input_.file.filename();
      fs::create_directory(eps.parent_path());
      take_detour(input_, programs_, eps.parent_path(), eps);
      detour_ = eps;
    } catch (const dead_end& end) {
      detour_ = end;
    } catch (const std::exception& error) {
      detour_ = dead_end_of(error);
    }
  }
  if (const auto* end = std::get_if<dead_end>(&*detour_)) throw dead_end(*end);
  return std::get<fs::path>(*detour_);
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
