#include "filesafety/views_merge.h"

#include <set>
#include <sstream>

namespace cvve::filesafety {

namespace {

std::string FullText(pugi::xml_node node) {
  std::string text;
  for (pugi::xml_node child = node.first_child(); child; child = child.next_sibling()) {
    if (child.type() == pugi::node_pcdata || child.type() == pugi::node_cdata) {
      text += child.value();
    }
  }
  return text;
}

pugi::xml_node Profiles(const pugi::xml_document& doc) {
  return doc.document_element().child("Profiles");
}

// The first Profile under Profiles called `name`, as the editor selects it.
pugi::xml_node FindRecord(const pugi::xml_document& doc, const std::string& name) {
  for (pugi::xml_node p = Profiles(doc).child("Profile"); p; p = p.next_sibling("Profile")) {
    if (FullText(p.child("Name")) == name) return p;
  }
  return {};
}

// A record as text, so that two versions compare; "" for none.
std::string RecordText(const pugi::xml_document& doc, const std::string& name) {
  const pugi::xml_node record = FindRecord(doc, name);
  if (!record) return {};
  std::ostringstream out;
  record.print(out, "", pugi::format_raw);
  return out.str();
}

}  // namespace

void EditJournal::Clear() {
  puts_.clear();
  steps_.clear();
}

std::string EditJournal::OriginOf(const std::string& name) const {
  auto it = puts_.find(name);
  return it == puts_.end() ? name : it->second;
}

void EditJournal::Saved(const std::string& name) { puts_.emplace(name, name); }

void EditJournal::Renamed(const std::string& from, const std::string& to) {
  if (from == to) return;
  const std::string origin = OriginOf(from);
  steps_.push_back({true, from, to, origin});
  puts_.erase(from);
  puts_[to] = origin;
}

void EditJournal::Deleted(const std::string& name) {
  const std::string origin = OriginOf(name);
  steps_.push_back({false, name, "", origin});
  puts_.erase(name);
}

bool MergeViews(const pugi::xml_document* base, pugi::xml_document& fresh,
                const pugi::xml_document& ours, const EditJournal& journal,
                const std::function<Choice(const std::string& name)>& decide) {
  // Conflicts first, so that going back leaves everything untouched.
  std::set<std::string> theirs;
  std::set<std::string> asked;
  auto check = [&](const std::string& shown_name, const std::string& origin) {
    if (asked.count(origin)) return true;
    asked.insert(origin);
    if (base && RecordText(fresh, origin) == RecordText(*base, origin)) return true;
    const Choice choice = decide(shown_name);
    if (choice == Choice::kBack) return false;
    if (choice == Choice::kTheirs) theirs.insert(origin);
    return true;
  };
  for (const auto& [name, origin] : journal.Puts()) {
    if (!check(name, origin)) return false;
  }
  for (const EditJournal::Step& step : journal.Steps()) {
    if (!step.rename && !check(step.from, step.origin)) return false;
  }

  pugi::xml_node profiles = Profiles(fresh);
  for (const EditJournal::Step& step : journal.Steps()) {
    if (theirs.count(step.origin)) continue;
    for (pugi::xml_node p = profiles.child("Profile"); p;) {
      pugi::xml_node next = p.next_sibling("Profile");
      if (FullText(p.child("Name")) == step.from) {
        if (!step.rename) {
          profiles.remove_child(p);
          break;  // only the first, as the delete command removes it
        }
        pugi::xml_node name = p.child("Name");
        while (name.first_child()) name.remove_child(name.first_child());
        name.append_child(pugi::node_pcdata).set_value(step.to.c_str());
      }
      p = next;
    }
  }
  for (const auto& [name, origin] : journal.Puts()) {
    if (theirs.count(origin)) continue;
    const pugi::xml_node mine = FindRecord(ours, name);
    if (!mine) continue;  // removed here afterwards
    if (!profiles) {
      pugi::xml_node root = fresh.document_element();
      if (!root) root = fresh.append_child(ours.document_element().name());
      profiles = root.append_child("Profiles");
    }
    if (pugi::xml_node old = FindRecord(fresh, name)) {
      profiles.insert_copy_before(mine, old);
      profiles.remove_child(old);
    } else {
      profiles.append_copy(mine);
    }
  }
  return true;
}

}  // namespace cvve::filesafety
