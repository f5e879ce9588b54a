#pragma once

#include <qpdf/QPDFObjectHandle.hh>
#include <string>
#include <vector>

namespace trellion::pdf {

/// What a page draws.
struct page_content {
  QPDFObjectHandle page;
  std::vector<QPDFObjectHandle> streams;
  QPDFObjectHandle resources;  ///< its own or inherited ones
  std::string resources_key;   ///< the same for pages with the same resources
  double scale = 1;            ///< points per unit
  std::string key;             ///< the same for pages that draw the same with the same resources
};

/// The object that holds a page's own or inherited value of a key: the page or one that it is
/// below; null when there is none.
QPDFObjectHandle owner_of(QPDFObjectHandle page, const std::string& key);

/// What the pages draw, in their order.
std::vector<page_content> contents_of_pages(QPDF& document);

}  // namespace trellion::pdf
