#pragma once

#include <cstdint>

#include "files.h"

namespace trellion::batch {

/// A pipe that no child inherits.
struct pipe_ends {
  file_descriptor read;
  file_descriptor write;
};

/// Throws run_error when the system allows no more.
pipe_ends make_pipe();

/// A connection that no child inherits, with two equal ends.
struct connection_ends {
  file_descriptor ours;
  file_descriptor theirs;
};

/// Throws run_error when the system allows no more.
connection_ends make_connection();

/// Makes sure that standard input, output and error are open, so that no other file takes their
/// place: those that were closed lead nowhere, and writing to them fails.
void open_standard_streams();

/// Allows this process to open as many files as the system permits. Returns how many it could open
/// before: the limit that children get back.
std::uint64_t raise_file_limit();

}  // namespace trellion::batch
