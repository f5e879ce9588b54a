#pragma once

#include <functional>
#include <map>
#include <optional>
#include <qpdf/QPDFObjectHandle.hh>
#include <string>
#include <string_view>

#include "pdf/content_repair.h"

namespace trellion::pdf {

/// The resources of a page or a form. What is looked up often is understood once.
class resource_dictionary : public named_resources {
 public:
  /// What is no dictionary counts as an empty one.
  explicit resource_dictionary(const QPDFObjectHandle& resources) : resources_(resources) {}

  [[nodiscard]] std::optional<graphics_parameters> graphics_state(
      std::string_view name) const override;
  [[nodiscard]] std::optional<std::size_t> components_of(std::string_view name) const override;
  /// The form that a name stands for; nothing for an image, and for what is nothing.
  [[nodiscard]] std::optional<QPDFObjectHandle> form(std::string_view name) const;

 private:
  [[nodiscard]] QPDFObjectHandle look_up(const char* kind, std::string_view name) const;

  mutable QPDFObjectHandle resources_;  // its accessors, which change nothing, are not const
  mutable std::map<std::string, std::optional<graphics_parameters>, std::less<>> known_states_;
};

/// Whether an XObject is a form that can be drawn.
bool is_form(QPDFObjectHandle xobject);

}  // namespace trellion::pdf
