#pragma once

#include <filesystem>

#include "batch/interruption.h"
#include "batch/process.h"
#include "pdf/document.h"
#include "pdf/options.h"

namespace trellion::pdf {

/// Repairs one file, and puts the result in its place when it is complete and, if that is asked
/// for, looks the same. Throws run_error, and others of the standard library; then nothing has been
/// placed.
document_summary repair_file(const std::filesystem::path& input,
                             const std::filesystem::path& result, const pdf_options& options,
                             const batch::interruption& interrupted,
                             const batch::process_runner& runner);

}  // namespace trellion::pdf
