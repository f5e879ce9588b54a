#include "pdf/refusals.h"

#include <algorithm>
#include <array>
#include <qpdf/QPDF.hh>
#include <qpdf/QPDFAcroFormDocumentHelper.hh>
#include <qpdf/QPDFExc.hh>
#include <qpdf/QPDFFormFieldObjectHelper.hh>
#include <qpdf/QPDFObjectHandle.hh>
#include <string>
#include <string_view>
#include <vector>

#include "files.h"
#include "pdf/document.h"

namespace trellion::pdf {
namespace {

/// Whether the magic bytes are where readers look for them.
bool looks_like_pdf(const std::filesystem::path& file) {
  std::array<char, 1024> head{};
  input_file input(file);
  std::size_t size = 0;
  while (const std::size_t count = input.read(head.data() + size, head.size() - size)) {
    size += count;
  }
  return std::string_view(head.data(), size).find("%PDF-") != std::string_view::npos;
}

std::string why_not_read(const QPDFExc& error) {
  switch (error.getErrorCode()) {
    case qpdf_e_password: return "it needs a password";
    case qpdf_e_unsupported: return "it cannot be read: " + error.getMessageDetail();
    default: return "it is damaged beyond repair: " + error.getMessageDetail();
  }
}

/// A signature covers a range of bytes.
bool is_signature(QPDFObjectHandle value) {
  if (!value.isDictionary()) return false;
  if (value.hasKey("/ByteRange")) return true;
  QPDFObjectHandle type = value.getKey("/Type");
  return type.isNameAndEquals("/Sig") || type.isNameAndEquals("/DocTimeStamp");
}

/// Whether the document says so itself, or a field for a signature has been filled in.
bool has_signed_form(QPDF& document) {
  QPDFObjectHandle form = document.getRoot().getKey("/AcroForm");
  if (!form.isDictionary()) return false;
  // Bit 2: whatever is not appended can invalidate a signature.
  constexpr long long append_only = 2;
  QPDFObjectHandle flags = form.getKey("/SigFlags");
  if (flags.isInteger() && (flags.getIntValue() & append_only) != 0) return true;
  QPDFAcroFormDocumentHelper helper(document);
  std::vector<QPDFFormFieldObjectHelper> fields = helper.getFormFields();
  return std::any_of(fields.begin(), fields.end(), [](QPDFFormFieldObjectHelper& field) {
    return field.getFieldType() == "/Sig" && !field.getValue().isNull();
  });
}

bool is_signed(QPDF& document) {
  if (document.getRoot().hasKey("/Perms") || has_signed_form(document)) return true;
  std::vector<QPDFObjectHandle> objects = document.getAllObjects();
  return std::any_of(objects.begin(), objects.end(), [](QPDFObjectHandle& object) {
    return object.isDictionary() && (is_signature(object) || is_signature(object.getKey("/V")));
  });
}

/// Whether a warning is of what an object holds. Where objects begin, and where a stream ends,
/// viewers find out alike.
bool is_of_contents(const QPDFExc& warning) {
  const auto says = [](const std::string& text, const char* words) {
    return text.find(words) != std::string::npos;
  };
  const std::string& detail = warning.getMessageDetail();
  return says(warning.getObject(), "object") && !says(detail, "stream length") &&
         !says(detail, "endstream");
}

}  // namespace

void check_kind(const std::filesystem::path& file) {
  if (!looks_like_pdf(file)) throw refusal("it is no PDF file");
}

void open_document(QPDF& document, const std::filesystem::path& file) {
  check_kind(file);
  document.setSuppressWarnings(true);
  try {
    document.processFile(file.c_str());
    static_cast<void>(document.getAllPages());
  } catch (const QPDFExc& error) {
    throw refusal(why_not_read(error));
  }
}

void check_permission(QPDF& document) {
  if (document.isEncrypted() && !document.ownerPasswordMatched() && !document.allowModifyOther()) {
    throw refusal("its owner forbids changes");
  }
  if (is_signed(document)) throw refusal("it is signed");
}

void check_objects(QPDF& document) {
  for (const QPDFExc& warning : document.getWarnings()) {
    if (!is_of_contents(warning)) continue;
    throw refusal("it is damaged beyond repair: " + warning.getObject() + ": " +
                  warning.getMessageDetail());
  }
}

}  // namespace trellion::pdf
