#pragma once

#include <cstdint>
#include <span>

#include "files.h"
#include "postscript_path_queue.h"

namespace trellion {

/// How the outlines of a frame end.
enum class outline_ending {
  unpainted,  ///< "closepath" alone: the paths are there to be looked at in the text
  stroked     ///< "closepath stroke": a picture
};

/// Draws path queues of one store, which must keep boxes, as a numbered picture, one outline for
/// each path, in the file intermediate/frameNNNNN.eps below the working directory, and adds the
/// commands that convert the picture and then remove it to intermediate/script, which the first
/// frame of a program starts afresh. Both are meant to be used from inside that directory, which
/// must exist. The cursors of the paths move as in output. When the paths cover no area the console
/// gets a warning, no file is touched, and no number is used up. Throws run_error when a file
/// cannot be written.
void create_intermediate_eps(path_store& store, std::span<const ps_path_queue> queues,
                             text_writer& console,
                             outline_ending ending = outline_ending::unpainted);

}  // namespace trellion
