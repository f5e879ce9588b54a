#include "pdf/drawn_forms.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <optional>
#include <qpdf/QPDF.hh>
#include <set>
#include <string>
#include <utility>

#include "pdf/resources.h"
#include "pdf/stream_text.h"

namespace trellion::pdf {
namespace {

/// A use of a form, by a page or another form.
struct form_use {
  QPDFObjGen form;
  double scale;
  bool opaque;
};

/// A form that is drawn by something.
struct form_node {
  QPDFObjectHandle stream;
  std::vector<form_use> uses;  ///< by it
  bool is_understood = false;
  std::size_t open_uses = 0;  ///< of it, by what is not looked at yet
  double scale = 0;
  bool opaque = true;
};

/// By how much a matrix enlarges, at most.
double enlargement_of(QPDFObjectHandle matrix) {
  if (!matrix.isMatrix()) return 1;
  const QPDFObjectHandle::Matrix m = matrix.getArrayAsMatrix();
  const double squares = m.a * m.a + m.b * m.b + m.c * m.c + m.d * m.d;
  const double difference = m.a * m.a + m.b * m.b - m.c * m.c - m.d * m.d;
  return std::sqrt((squares + std::hypot(difference, 2 * (m.a * m.c + m.b * m.d))) / 2);
}

bool holds_form(QPDFObjectHandle xobjects) {
  if (!xobjects.isDictionary()) return false;
  const std::set<std::string> names = xobjects.getKeys();
  return std::any_of(names.begin(), names.end(),
                     [&](const std::string& name) { return is_form(xobjects.getKey(name)); });
}

/// The same for dictionaries of XObjects that are the same one, in whichever resources.
std::string key_of(QPDFObjectHandle xobjects, const std::string& resources_key) {
  return xobjects.isIndirect() ? "XObject " + xobjects.unparse() : resources_key;
}

/// What pages of one content and the same resources draw.
struct page_uses {
  std::optional<std::vector<form_use>> uses;  ///< nothing when nobody can tell
  double scale = 1;
};

/// Whether a form draws what its dictionary may not tell.
bool may_use_xobjects(const QPDFObjectHandle& form) {
  std::vector<QPDFObjectHandle> streams = {form};
  const std::optional<std::string> text = text_of(streams);
  if (!text) return true;
  const resource_dictionary none(QPDFObjectHandle::newNull());
  const std::optional<std::vector<xobject_use>> uses = xobjects_used(*text, {none});
  return !uses || !uses->empty();
}

/// Finds who draws what.
class form_survey {
 public:
  form_survey(QPDF& document, std::vector<page_content>& pages)
      : document_(document), pages_(pages) {}

  std::vector<drawn_form> run();

 private:
  std::optional<std::vector<form_use>> uses_in(std::vector<QPDFObjectHandle> streams,
                                               const QPDFObjectHandle& resources);
  void note(const std::vector<form_use>& uses, double scale, bool opaque);
  bool may_draw_forms(const page_content& page);
  void look_at_pages();
  void look_at_forms();
  void follow_uses();

  void reach_all_else();
  void push_members(QPDFObjectHandle owner);
  void push_resources(QPDFObjectHandle resources);
  void push_other_xobjects(QPDFObjectHandle xobjects);
  void push_all(QPDFObjectHandle value);

  QPDF& document_;
  std::vector<page_content>& pages_;
  std::map<std::string, page_uses> uses_of_pages_;  // by their keys
  std::map<std::string, bool> with_forms_;          // dictionaries of XObjects
  std::map<QPDFObjGen, form_node> forms_;
  std::vector<QPDFObjGen> unread_forms_;
  bool is_hopeless_ = false;  // a form takes its resources from whoever draws it

  std::vector<QPDFObjectHandle> to_reach_;
  std::set<QPDFObjGen> reached_;   // by other ways than uses
  std::set<QPDFObjGen> xobjects_;  // dictionaries of them whose other entries are to reach
};

std::vector<drawn_form> form_survey::run() {
  look_at_pages();
  look_at_forms();
  if (is_hopeless_ || forms_.empty()) return {};
  follow_uses();
  reach_all_else();

  std::vector<drawn_form> result;
  for (const auto& [id, form] : forms_) {
    const bool is_known = form.is_understood && form.open_uses == 0 && reached_.count(id) == 0;
    const bool has_scale = std::isfinite(form.scale) && form.scale > 0;
    if (is_known && has_scale && form.opaque) result.push_back({form.stream, form.scale});
  }
  return result;
}

/// The uses of forms in a content; nothing when nobody can tell.
std::optional<std::vector<form_use>> form_survey::uses_in(std::vector<QPDFObjectHandle> streams,
                                                          const QPDFObjectHandle& resources) {
  const std::optional<std::string> text = text_of(streams);
  if (!text) return std::nullopt;
  std::vector<form_use> uses;
  if (text->find("Do") == std::string::npos) return uses;
  const resource_dictionary names(resources);
  const std::optional<std::vector<xobject_use>> all = xobjects_used(*text, {names});
  if (!all) return std::nullopt;
  for (const xobject_use& use : *all) {
    const std::optional<QPDFObjectHandle> form = names.form(use.name);
    if (!form) continue;
    const QPDFObjGen id = form->getObjGen();
    if (forms_.count(id) == 0) {
      forms_[id].stream = *form;
      unread_forms_.push_back(id);
    }
    uses.push_back({id, use.scale, use.opaque});
  }
  return uses;
}

/// Many pages can share one dictionary with a name for everything in the document.
bool form_survey::may_draw_forms(const page_content& page) {
  QPDFObjectHandle resources = page.resources;
  if (!resources.isDictionary()) return false;
  const QPDFObjectHandle xobjects = resources.getKey("/XObject");
  const auto [known, is_new] = with_forms_.try_emplace(key_of(xobjects, page.resources_key), false);
  if (is_new) known->second = holds_form(xobjects);
  return known->second;
}

void form_survey::look_at_pages() {
  for (page_content& page : pages_) {
    const auto [known, is_new] = uses_of_pages_.try_emplace(page.key);
    if (!is_new) continue;
    page_uses& found = known->second;
    found.scale = page.scale;
    if (may_draw_forms(page)) {
      found.uses = uses_in(page.streams, page.resources);
    } else {
      found.uses.emplace();
    }
  }
}

void form_survey::look_at_forms() {
  while (!unread_forms_.empty()) {
    form_node& form = forms_[unread_forms_.back()];
    unread_forms_.pop_back();
    QPDFObjectHandle resources = form.stream.getDict().getKey("/Resources");
    if (!resources.isDictionary() && may_use_xobjects(form.stream)) is_hopeless_ = true;
    std::optional<std::vector<form_use>> uses = uses_in({form.stream}, resources);
    form.is_understood = uses.has_value();
    if (uses) form.uses = std::move(*uses);
  }
}

/// Takes down how an owner that is fully known draws forms.
void form_survey::note(const std::vector<form_use>& uses, double scale, bool opaque) {
  for (const form_use& use : uses) {
    form_node& form = forms_[use.form];
    const double own = enlargement_of(form.stream.getDict().getKey("/Matrix"));
    form.scale = std::max(form.scale, scale * use.scale * own);
    form.opaque = form.opaque && opaque && use.opaque;
  }
}

/// From the pages down. Forms that draw themselves, by whatever detour, are never ready.
void form_survey::follow_uses() {
  for (const auto& [id, form] : forms_) {
    for (const form_use& use : form.uses) ++forms_[use.form].open_uses;
  }
  for (const auto& [key, pages] : uses_of_pages_) {
    if (pages.uses) note(*pages.uses, pages.scale, true);
  }
  std::vector<QPDFObjGen> ready;
  for (const auto& [id, form] : forms_) {
    if (form.open_uses == 0) ready.push_back(id);
  }
  while (!ready.empty()) {
    const form_node& form = forms_[ready.back()];
    ready.pop_back();
    note(form.uses, form.scale, form.opaque);
    for (const form_use& use : form.uses) {
      if (--forms_[use.form].open_uses == 0) ready.push_back(use.form);
    }
  }
}

/// Follows all references of the document, but for those by which the contents of pages and forms
/// that are understood find what they draw.
void form_survey::reach_all_else() {
  std::set<QPDFObjGen> known_pages;
  std::set<std::string> known_resources;
  std::set<std::string> unknown_resources;
  for (const page_content& page : pages_) {
    if (uses_of_pages_[page.key].uses) {
      known_pages.insert(page.page.getObjGen());
      if (known_resources.insert(page.resources_key).second) push_resources(page.resources);
    } else if (unknown_resources.insert(page.resources_key).second) {
      to_reach_.push_back(page.resources);
    }
  }
  for (auto& [id, form] : forms_) {
    if (form.is_understood) {
      push_members(form.stream.getDict());
      push_resources(form.stream.getDict().getKey("/Resources"));
    } else {
      to_reach_.push_back(form.stream);
    }
  }
  to_reach_.push_back(document_.getTrailer());
  while (!to_reach_.empty()) {
    QPDFObjectHandle value = to_reach_.back();
    to_reach_.pop_back();
    if (value.isIndirect()) {
      if (!reached_.insert(value.getObjGen()).second) continue;
      if (known_pages.count(value.getObjGen()) != 0) {
        push_members(value);
        continue;
      }
    }
    push_all(value);
  }
}

/// What a page or form that is understood holds besides its resources.
void form_survey::push_members(QPDFObjectHandle owner) {
  for (auto& [key, value] : owner.getDictAsMap()) {
    if (key != "/Resources") to_reach_.push_back(value);
  }
}

void form_survey::push_resources(QPDFObjectHandle resources) {
  if (!resources.isDictionary()) return;
  for (auto& [kind, named] : resources.getDictAsMap()) {
    if (kind == "/XObject" && named.isDictionary()) {
      push_other_xobjects(named);
    } else {
      to_reach_.push_back(named);
    }
  }
}

void form_survey::push_other_xobjects(QPDFObjectHandle xobjects) {
  if (xobjects.isIndirect() && !xobjects_.insert(xobjects.getObjGen()).second) return;
  for (auto& [name, xobject] : xobjects.getDictAsMap()) {
    if (forms_.count(xobject.getObjGen()) == 0) to_reach_.push_back(xobject);
  }
}

void form_survey::push_all(QPDFObjectHandle value) {
  if (value.isStream()) value = value.getDict();
  if (value.isArray()) {
    for (QPDFObjectHandle& item : value.getArrayAsVector()) to_reach_.push_back(item);
  }
  if (!value.isDictionary()) return;
  // What pages inherit is theirs, and the structure of a tagged document draws nothing.
  const bool is_above_pages = value.getKey("/Type").isNameAndEquals("/Pages");
  const bool is_of_structure = value.getKey("/Type").isNameAndEquals("/MCR");
  for (auto& [key, item] : value.getDictAsMap()) {
    if (is_above_pages && key == "/Resources") continue;
    if (is_of_structure && key == "/Stm") continue;
    to_reach_.push_back(item);
  }
}

}  // namespace

std::vector<drawn_form> forms_drawn(QPDF& document, std::vector<page_content>& pages) {
  return form_survey(document, pages).run();
}

}  // namespace trellion::pdf
