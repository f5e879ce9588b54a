#pragma once

#include <filesystem>

class QPDF;

namespace trellion::pdf {

/// Throws refusal when a file does not begin like a document.
void check_kind(const std::filesystem::path& file);

/// Opens a document. Throws refusal when it is none, is damaged beyond repair, or needs a password.
void open_document(QPDF& document, const std::filesystem::path& file);

/// Throws refusal when somebody would mind a change: its owner, or who signed it.
void check_permission(QPDF& document);

/// Throws refusal when an object that was read was damaged: what it would have drawn nobody knows.
/// To be called when all that matters has been read.
void check_objects(QPDF& document);

}  // namespace trellion::pdf
