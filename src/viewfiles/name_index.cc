#include "viewfiles/name_index.h"

namespace cvve {

namespace {

// The element's text as the path expression compares it (all text below
// it), without building a string for the usual single text child.
std::string_view NameText(XmlNode name, std::string& scratch) {
  XmlNode first = name.first_child();
  if (!first) return {};
  if (!first.next_sibling() &&
      (first.type() == pugi::node_pcdata || first.type() == pugi::node_cdata)) {
    return first.value();
  }
  scratch = NodeText(name);
  return scratch;
}

bool Named(XmlNode node, std::string_view name) { return std::string_view(node.name()) == name; }

bool HasName(XmlNode element, std::string_view name) {
  std::string scratch;
  for (XmlNode n = element.child("Name"); n; n = n.next_sibling("Name")) {
    if (NameText(n, scratch) == name) return true;
  }
  return false;
}

}  // namespace

XmlNode NameIndex::Find(std::string_view name) const {
  const auto it = first_.find(name);
  return it == first_.end() ? XmlNode() : it->second;
}

void NameIndex::Add(XmlNode element) {
  std::string scratch;
  for (XmlNode n = element.child("Name"); n; n = n.next_sibling("Name")) {
    const std::string_view text = NameText(n, scratch);
    if (first_.find(text) == first_.end()) first_.emplace(text, element);
  }
}

bool NameIndex::AnyNameTaken(XmlNode element) const {
  std::string scratch;
  for (XmlNode n = element.child("Name"); n; n = n.next_sibling("Name")) {
    if (first_.find(NameText(n, scratch)) != first_.end()) return true;
  }
  return false;
}

void ProfileIndex::Start(const DocumentCursor& doc) {
  doc_ = &doc;
  generation_ = doc.Generation();
  started_ = true;
  names_.Clear();
  section_ = doc.Root().child("Profiles");
  next_ = section_.child("Profile");
}

XmlNode ProfileIndex::Find(const DocumentCursor& doc, std::string_view name) {
  if (!started_ || doc_ != &doc || generation_ != doc.Generation()) Start(doc);
  // Every record before the walk's place is taken in, so a name found is the
  // first of it; otherwise the first of it, if any, lies further on.
  if (XmlNode known = names_.Find(name)) return known;
  while (section_) {
    for (; next_; next_ = next_.next_sibling("Profile")) {
      const XmlNode record = next_;
      names_.Add(record);
      if (names_.Find(name) == record) {
        next_ = next_.next_sibling("Profile");
        return record;
      }
    }
    section_ = section_.next_sibling("Profiles");
    next_ = section_.child("Profile");
  }
  return {};
}

void ProfileIndex::Added(XmlNode record) {
  if (!started_ || !record) return;
  // With names of its own it is the first of them wherever it stands, as
  // long as it stands where records are looked for.
  const XmlNode profiles = record.parent();
  if (section_ || names_.AnyNameTaken(record) || !Named(record, "Profile") ||
      !Named(profiles, "Profiles") || profiles.parent() != doc_->Root()) {
    started_ = false;
    return;
  }
  names_.Add(record);
}

const ColumnIndex::Entry& ColumnIndex::For(const DocumentCursor& setup,
                                            const std::string& data_set) {
  if (stamp_.Moved(setup)) by_data_set_.clear();
  const auto known = by_data_set_.find(data_set);
  if (known != by_data_set_.end()) return known->second;
  Entry& entry = by_data_set_[data_set];
  // Every data set of the name, in document order, as the expression
  // takes the union of their columns.
  for (XmlNode sets_parent = setup.Root().child("DataSets"); sets_parent;
       sets_parent = sets_parent.next_sibling("DataSets")) {
    for (XmlNode set = sets_parent.child("DataSet"); set; set = set.next_sibling("DataSet")) {
      if (!HasName(set, data_set)) continue;
      if (!entry.data_set) entry.data_set = set;
      for (XmlNode columns = set.child("Columns"); columns;
           columns = columns.next_sibling("Columns")) {
        for (XmlNode c = columns.child("Column"); c; c = c.next_sibling("Column")) {
          entry.columns.Add(c);
        }
      }
    }
  }
  return entry;
}

XmlNode ColumnIndex::Find(const DocumentCursor& setup, const std::string& data_set,
                          std::string_view column) {
  return For(setup, data_set).columns.Find(column);
}

XmlNode ColumnIndex::DataSet(const DocumentCursor& setup, const std::string& data_set) {
  return For(setup, data_set).data_set;
}

}  // namespace cvve
