#include "pdf/changed_pages.h"

#include <cmath>
#include <cstring>
#include <map>
#include <qpdf/Buffer.hh>
#include <qpdf/QPDF.hh>
#include <qpdf/QPDFObjectHandle.hh>
#include <qpdf/QPDFPageDocumentHelper.hh>
#include <qpdf/QPDFPageObjectHelper.hh>
#include <set>
#include <string>
#include <utility>

#include "files.h"
#include "pdf/page_content.h"

namespace trellion::pdf {
namespace {

using handle = QPDFObjectHandle;

/// Keys by which pages and annotations lead to other pages, which are not drawn with them. In other
/// dictionaries, as those of names, the same keys can be anything; streams they never are here.
bool leads_elsewhere(handle dictionary, const std::string& key) {
  if (dictionary.getKey(key).isStream()) return false;
  handle type = dictionary.getKey("/Type");
  if (type.isNameAndEquals("/Page")) return key == "/Parent" || key == "/StructParents";
  if (!type.isNameAndEquals("/Annot")) return false;
  return key == "/P" || key == "/Parent" || key == "/Popup" || key == "/StructParent";
}

handle attribute(const handle& page, const std::string& key) {
  return owner_of(page, key).getKeyIfDict(key);
}

/// Compares what pages of two documents are drawn with. Objects are looked at once, however many
/// pages use them: what uses one that differs, by whatever detour, differs as well.
class comparison {
 public:
  /// To be asked about by the number it gets, from 0 on.
  void add_page(const handle& before, const handle& after);
  /// Which pages differ.
  std::vector<bool> run();

 private:
  using pair_of_ids = std::pair<QPDFObjGen, QPDFObjGen>;

  /// An object of one document and its counterpart in the other, or a page.
  struct node {
    bool differs = false;
    std::vector<std::size_t> used_by;
  };

  /// What is to be compared for a node.
  struct task {
    std::size_t node;
    handle before;
    handle after;
  };

  void use(std::size_t user, const handle& before, const handle& after);
  void use_resources(std::size_t user, const handle& page_before, const handle& page_after);
  void use_annotations(std::size_t user, handle page_before, handle page_after);
  [[nodiscard]] bool differ(const task& next);
  [[nodiscard]] bool members_differ(std::size_t user, handle before, handle after, bool of_stream);
  std::size_t known_node(std::map<pair_of_ids, std::size_t>& known, const pair_of_ids& ids,
                         const handle& before, const handle& after);

  std::vector<node> nodes_;
  std::vector<std::size_t> pages_;
  std::map<pair_of_ids, std::size_t> objects_;
  std::map<pair_of_ids, std::size_t> resources_;  // by what holds them
  std::vector<task> open_;
};

void comparison::add_page(const handle& before, const handle& after) {
  const std::size_t page = nodes_.size();
  nodes_.emplace_back();
  pages_.push_back(page);
  for (const char* key : {"/Contents", "/Group", "/UserUnit"}) {
    use(page, handle(before).getKey(key), handle(after).getKey(key));
  }
  for (const char* key : {"/MediaBox", "/CropBox", "/Rotate"}) {
    open_.push_back({page, attribute(before, key), attribute(after, key)});
  }
  use_resources(page, before, after);
  use_annotations(page, before, after);
}

/// An object that has been met needs no second look.
std::size_t comparison::known_node(std::map<pair_of_ids, std::size_t>& known,
                                   const pair_of_ids& ids, const handle& before,
                                   const handle& after) {
  const auto [found, is_new] = known.try_emplace(ids, nodes_.size());
  if (is_new) {
    nodes_.emplace_back();
    open_.push_back({found->second, before, after});
  }
  return found->second;
}

void comparison::use(std::size_t user, const handle& before, const handle& after) {
  if (before.isIndirect() != after.isIndirect()) {
    nodes_[user].differs = true;
  } else if (!before.isIndirect()) {
    open_.push_back({user, before, after});
  } else {
    const pair_of_ids ids(before.getObjGen(), after.getObjGen());
    nodes_[known_node(objects_, ids, before, after)].used_by.push_back(user);
  }
}

/// Resources that pages inherit may be long, and stand in what is above the pages.
void comparison::use_resources(std::size_t user, const handle& page_before,
                               const handle& page_after) {
  const handle owner_before = owner_of(page_before, "/Resources");
  const handle owner_after = owner_of(page_after, "/Resources");
  const handle before = handle(owner_before).getKeyIfDict("/Resources");
  const handle after = handle(owner_after).getKeyIfDict("/Resources");
  if (owner_before.isIndirect() && owner_after.isIndirect()) {
    const pair_of_ids ids(owner_before.getObjGen(), owner_after.getObjGen());
    nodes_[known_node(resources_, ids, before, after)].used_by.push_back(user);
  } else {
    open_.push_back({user, before, after});
  }
}

/// Of annotations only how they are drawn matters: the rest leads to other pages.
void comparison::use_annotations(std::size_t user, handle page_before, handle page_after) {
  handle before = page_before.getKey("/Annots");
  handle after = page_after.getKey("/Annots");
  const int n_items = before.isArray() ? before.getArrayNItems() : 0;
  if (n_items != (after.isArray() ? after.getArrayNItems() : 0)) {
    nodes_[user].differs = true;
    return;
  }
  for (int n = 0; n < n_items; ++n) {
    handle one = before.getArrayItem(n);
    handle other = after.getArrayItem(n);
    if (!one.isDictionary() || !other.isDictionary()) continue;
    for (const char* key : {"/AP", "/AS", "/Rect", "/F"}) {
      use(user, one.getKey(key), other.getKey(key));
    }
  }
}

std::vector<bool> comparison::run() {
  while (!open_.empty()) {
    const task next = std::move(open_.back());
    open_.pop_back();
    if (!nodes_[next.node].differs && differ(next)) nodes_[next.node].differs = true;
  }
  std::vector<std::size_t> differing;
  for (std::size_t n = 0; n < nodes_.size(); ++n) {
    if (nodes_[n].differs) differing.push_back(n);
  }
  while (!differing.empty()) {
    const std::size_t last = differing.back();
    differing.pop_back();
    for (const std::size_t user : nodes_[last].used_by) {
      if (nodes_[user].differs) continue;
      nodes_[user].differs = true;
      differing.push_back(user);
    }
  }
  std::vector<bool> result;
  for (const std::size_t page : pages_) result.push_back(nodes_[page].differs);
  return result;
}

bool bytes_differ(handle before, handle after) {
  const auto bytes_before = before.getRawStreamData();
  const auto bytes_after = after.getRawStreamData();
  const std::size_t size = bytes_before->getSize();
  return size != bytes_after->getSize() ||
         (size > 0 && std::memcmp(bytes_before->getBuffer(), bytes_after->getBuffer(), size) != 0);
}

/// Whether two values differ in themselves. What they hold is to be compared after them.
bool comparison::differ(const task& next) {
  handle before = next.before;
  handle after = next.after;
  if (before.getTypeCode() != after.getTypeCode()) return true;
  if (before.isStream()) {
    return bytes_differ(before, after) ||
           members_differ(next.node, before.getDict(), after.getDict(), true);
  }
  if (before.isDictionary()) return members_differ(next.node, before, after, false);
  if (!before.isArray()) return before.unparseResolved() != after.unparseResolved();
  if (before.getArrayNItems() != after.getArrayNItems()) return true;
  for (int n = 0; n < before.getArrayNItems(); ++n) {
    use(next.node, before.getArrayItem(n), after.getArrayItem(n));
  }
  return false;
}

bool comparison::members_differ(std::size_t user, handle before, handle after, bool of_stream) {
  const std::set<std::string> keys = before.getKeys();
  if (keys != after.getKeys()) return true;
  for (const std::string& key : keys) {
    // Where the length of a stream differs its bytes do, too.
    if (of_stream ? key == "/Length" : leads_elsewhere(before, key)) continue;
    use(user, before.getKey(key), after.getKey(key));
  }
  return false;
}

void open(QPDF& document, const std::filesystem::path& file) {
  document.setSuppressWarnings(true);
  document.processFile(file.c_str());
}

numbered_page page_of(QPDFPageObjectHelper page, std::size_t index) {
  const handle::Rectangle box = page.getAttribute("/MediaBox", false).getArrayAsRectangle();
  handle unit = page.getObjectHandle().getKey("/UserUnit");
  const double scale = unit.isNumber() ? unit.getNumericValue() : 1;
  return {static_cast<std::int64_t>(index) + 1, std::abs(box.urx - box.llx) * scale,
          std::abs(box.ury - box.lly) * scale};
}

}  // namespace

std::vector<numbered_page> changed_pages(const std::filesystem::path& before,
                                         const std::filesystem::path& after) {
  try {
    QPDF document_before;
    QPDF document_after;
    open(document_before, before);
    open(document_after, after);
    const auto pages_before = QPDFPageDocumentHelper(document_before).getAllPages();
    const auto pages_after = QPDFPageDocumentHelper(document_after).getAllPages();
    if (pages_before.size() != pages_after.size()) throw run_error("the document lost pages");
    comparison compared;
    for (std::size_t n = 0; n < pages_before.size(); ++n) {
      compared.add_page(pages_before[n].getObjectHandle(), pages_after[n].getObjectHandle());
    }
    const std::vector<bool> differing = compared.run();
    std::vector<numbered_page> changed;
    for (std::size_t n = 0; n < pages_before.size(); ++n) {
      if (differing[n]) changed.push_back(page_of(pages_before[n], n));
    }
    return changed;
  } catch (const run_error&) {
    throw;
  } catch (const std::exception& error) {
    throw run_error(std::string("the document cannot be read: ") + error.what());
  }
}

}  // namespace trellion::pdf
