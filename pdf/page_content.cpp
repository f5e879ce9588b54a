#include "pdf/page_content.h"

#include <cmath>
#include <map>
#include <qpdf/QPDF.hh>
#include <set>

namespace trellion::pdf {
namespace {

double scale_of(QPDFObjectHandle page) {
  QPDFObjectHandle unit = page.getKey("/UserUnit");
  const double scale = unit.isNumber() ? unit.getNumericValue() : 1;
  return std::isfinite(scale) && scale > 0 ? scale : 1;
}

std::vector<QPDFObjectHandle> streams_of(QPDFObjectHandle contents) {
  std::vector<QPDFObjectHandle> streams;
  if (contents.isStream()) return {contents};
  if (!contents.isArray()) return streams;
  for (const QPDFObjectHandle& item : contents.getArrayAsVector()) {
    if (QPDFObjectHandle(item).isStream()) streams.push_back(item);
  }
  return streams;
}

/// Finds short keys for resources. Those that stand in a page or above it can be long: they are
/// spelled once for all pages that inherit them.
class resource_keys {
 public:
  std::string key_of(QPDFObjectHandle owner) {
    if (!owner.isDictionary()) return "none";
    if (!owner.isIndirect()) return key_of_value(owner.getKey("/Resources"));
    const auto [known, is_new] = keys_.try_emplace(owner.getObjGen());
    if (is_new) known->second = key_of_value(owner.getKey("/Resources"));
    return known->second;
  }

 private:
  std::string key_of_value(const QPDFObjectHandle& resources) {
    std::string text = QPDFObjectHandle(resources).unparse();
    if (QPDFObjectHandle(resources).isIndirect()) return text;
    return "text " + std::to_string(numbers_.try_emplace(text, numbers_.size()).first->second);
  }

  std::map<QPDFObjGen, std::string> keys_;      // by their owners
  std::map<std::string, std::size_t> numbers_;  // of those spelled out
};

page_content content_of(const QPDFObjectHandle& page, resource_keys& keys) {
  page_content result;
  result.page = page;
  result.streams = streams_of(result.page.getKey("/Contents"));
  QPDFObjectHandle owner = owner_of(page, "/Resources");
  result.resources = owner.getKeyIfDict("/Resources");
  result.resources_key = keys.key_of(owner);
  result.scale = scale_of(page);
  for (const QPDFObjectHandle& stream : result.streams) {
    result.key += stream.getObjGen().unparse() + ' ';
  }
  result.key += std::to_string(result.scale) + ' ' + result.resources_key;
  return result;
}

}  // namespace

QPDFObjectHandle owner_of(QPDFObjectHandle page, const std::string& key) {
  std::set<QPDFObjGen> seen;
  while (page.isDictionary() && !page.hasKey(key)) {
    if (page.isIndirect() && !seen.insert(page.getObjGen()).second) break;
    page = page.getKey("/Parent");
  }
  return page.isDictionary() && page.hasKey(key) ? page : QPDFObjectHandle::newNull();
}

std::vector<page_content> contents_of_pages(QPDF& document) {
  std::vector<page_content> pages;
  resource_keys keys;
  for (const QPDFObjectHandle& page : document.getAllPages()) {
    pages.push_back(content_of(page, keys));
  }
  return pages;
}

}  // namespace trellion::pdf
