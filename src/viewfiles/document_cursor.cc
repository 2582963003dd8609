#include "viewfiles/document_cursor.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <sstream>
#include <unistd.h>

#include "base/error.h"
#include "filesafety/atomic_file.h"

namespace cvve {

namespace {

constexpr unsigned kParseFlags = pugi::parse_default | pugi::parse_comments | pugi::parse_pi |
                                 pugi::parse_declaration | pugi::parse_doctype;

XmlNode RequireCurrent(XmlNode node) {
  if (!node) throw Error("Object variable or With block variable not set");
  return node;
}

}  // namespace

XmlNode FirstChildElement(XmlNode parent, const std::string& name) {
  const char first = name.empty() ? '\0' : name[0];
  for (XmlNode child = parent.first_child(); child; child = child.next_sibling()) {
    if (child.type() != pugi::node_element) continue;
    // The first letter rules out most of a record's children without a compare.
    const char* element = child.name();
    if (element[0] == first && name == element) return child;
  }
  return {};
}

namespace {

XmlNode ChildForWriting(XmlNode current, const std::string& name) {
  RequireCurrent(current);
  XmlNode child = FirstChildElement(current, name);
  if (!child) child = current.append_child(name.c_str());
  if (!child) throw Error("Cannot create element '" + name + "'");
  while (child.first_child()) child.remove_child(child.first_child());
  return child;
}

}  // namespace

DocumentCursor::DocumentCursor() = default;

void DocumentCursor::Reset() {
  ++generation_;
  doc_.reset();
  current_ = XmlNode();
}

bool DocumentCursor::Load(const std::string& path, std::string* error) {
  ++generation_;
  doc_.reset();
  current_ = XmlNode();
  pugi::xml_parse_result result = doc_.load_file(path.c_str(), kParseFlags);
  if (!result && error) *error = result.description();
  return static_cast<bool>(result);
}

bool DocumentCursor::LoadText(const std::string& text, std::string* error) {
  ++generation_;
  doc_.reset();
  current_ = XmlNode();
  pugi::xml_parse_result result = doc_.load_buffer(text.data(), text.size(), kParseFlags);
  if (!result && error) *error = result.description();
  return static_cast<bool>(result);
}

bool DocumentCursor::ParseInPlace(pugi::xml_document& doc, char* buffer, std::size_t size,
                                  std::string* error) {
  pugi::xml_parse_result result = doc.load_buffer_inplace_own(buffer, size, kParseFlags);
  if (!result && error) *error = result.description();
  return static_cast<bool>(result);
}

std::string DocumentCursor::ToString() const {
  std::ostringstream out;
  doc_.save(out, "  ", pugi::format_default, pugi::encoding_utf8);
  return out.str();
}

void DocumentCursor::Save(const std::string& path) const {
  filesafety::ReplaceFile(path, ToString());
}

XmlNode DocumentCursor::GoToChild(const std::string& name, bool create) {
  if (name.empty()) {
    XmlNode root = doc_.document_element();
    if (!root && create) root = doc_.append_child(root_name.c_str());
    current_ = root;
    return current_;
  }
  if (!current_) return {};
  XmlNode child = FirstChildElement(current_, name);
  if (!child && create) child = current_.append_child(name.c_str());
  current_ = child;
  return current_;
}

XmlNode DocumentCursor::AddChild(const std::string& name) {
  RequireCurrent(current_);
  XmlNode child = current_.append_child(name.c_str());
  if (!child) throw Error("Cannot add element '" + name + "'");
  current_ = child;
  return current_;
}

std::string DocumentCursor::GetValue(const std::string& name) const {
  RequireCurrent(current_);
  return NodeText(FirstChildElement(current_, name));
}

void DocumentCursor::SetValue(const std::string& name, const std::string& value) {
  XmlNode child = ChildForWriting(current_, name);
  if (!value.empty()) child.append_child(pugi::node_pcdata).set_value(value.c_str());
}

void DocumentCursor::SetValueBlock(const std::string& name, const std::string& value) {
  XmlNode child = ChildForWriting(current_, name);
  // "]]>" cannot stand inside one CDATA section: end the section after "]]"
  // and start the next with ">".
  std::size_t start = 0;
  while (start < value.size()) {
    std::size_t hit = value.find("]]>", start);
    std::size_t end = hit == std::string::npos ? value.size() : hit + 2;
    child.append_child(pugi::node_cdata).set_value(value.substr(start, end - start).c_str());
    start = end;
  }
}

namespace {

// Element names of a record differ in their length, first, fourth or last
// letter ("Var0Name" against "Var1Name", "SortBy" against "SortBy2"); the
// few that share all four are told apart by a compare.
std::size_t NameSlot(const char* name, std::size_t length, std::size_t slots) {
  if (length == 0) return 0;
  const auto at = [&](std::size_t i) { return static_cast<unsigned char>(name[i]); };
  const std::size_t hash =
      length * 131 + at(0) * 31 + at(length < 4 ? length - 1 : 3) * 7 + at(length - 1);
  return hash & (slots - 1);
}

}  // namespace

std::string RecordValues::Get(const DocumentCursor& cursor, const std::string& name) {
  return Get(cursor.CurrentNode(), name);
}

std::string RecordValues::Get(XmlNode record, const std::string& name) {
  return NodeText(Element(record, name));
}

XmlNode RecordValues::Element(XmlNode record, const std::string& name) {
  const XmlNode current = RequireCurrent(record);
  if (current != record_) {
    record_ = current;
    first_.fill(XmlNode());
    walk_ = false;
    std::size_t count = 0;
    for (XmlNode child = current.first_child(); child && !walk_; child = child.next_sibling()) {
      if (child.type() != pugi::node_element) continue;
      walk_ = ++count > kSlots / 2;
      const char* element = child.name();
      std::size_t slot = NameSlot(element, std::strlen(element), kSlots);
      while (first_[slot] && std::strcmp(first_[slot].name(), element) != 0) {
        slot = (slot + 1) % kSlots;
      }
      if (!first_[slot]) first_[slot] = child;  // a later element of the name is not read
    }
  }
  if (walk_) return FirstChildElement(current, name);
  for (std::size_t slot = NameSlot(name.c_str(), name.size(), kSlots); first_[slot];
       slot = (slot + 1) % kSlots) {
    if (name == first_[slot].name()) return first_[slot];
  }
  return {};
}

std::vector<XmlNode> SelectNodes(XmlNode context, const std::string& xpath) {
  std::vector<XmlNode> nodes;
  if (!context) return nodes;
  try {
    pugi::xpath_node_set set = context.select_nodes(xpath.c_str());
    nodes.reserve(set.size());
    for (const auto& n : set) {
      if (n.node()) nodes.push_back(n.node());
    }
  } catch (const pugi::xpath_exception&) {
    nodes.clear();  // an expression that does not compile finds nothing
  }
  return nodes;
}

XmlNode SelectSingleNode(XmlNode context, const std::string& xpath) {
  if (!context) return {};
  try {
    return context.select_node(xpath.c_str()).node();
  } catch (const pugi::xpath_exception&) {
    return {};
  }
}

XmlNode SelectSingleNodeOrFail(XmlNode context, const std::string& xpath) {
  if (!context) return {};
  try {
    return context.select_node(xpath.c_str()).node();
  } catch (const pugi::xpath_exception& e) {
    throw Error(e.what());
  }
}

std::string NodeText(XmlNode node) {
  if (!node) return {};
  if (node.type() == pugi::node_pcdata || node.type() == pugi::node_cdata) return node.value();
  std::string text;
  // Fast path: the usual element with one text child.
  XmlNode first = node.first_child();
  if (first && !first.next_sibling() &&
      (first.type() == pugi::node_pcdata || first.type() == pugi::node_cdata)) {
    return first.value();
  }
  // Iterative walk: files may nest deeper than the stack would allow.
  XmlNode cur = first;
  while (cur) {
    if (cur.type() == pugi::node_pcdata || cur.type() == pugi::node_cdata) text += cur.value();
    if (cur.type() == pugi::node_element && cur.first_child()) {
      cur = cur.first_child();
      continue;
    }
    while (cur != node && !cur.next_sibling()) cur = cur.parent();
    if (cur == node) break;
    cur = cur.next_sibling();
  }
  return text;
}

std::string ChildText(XmlNode node, const char* name) {
  if (!node) return {};
  for (XmlNode child = node.first_child(); child; child = child.next_sibling()) {
    if (child.type() == pugi::node_element && std::strcmp(child.name(), name) == 0) {
      return NodeText(child);
    }
  }
  return {};
}

void SetNodeText(XmlNode node, const std::string& text) {
  if (!node) throw Error("Object variable or With block variable not set");
  while (node.first_child()) node.remove_child(node.first_child());
  if (!text.empty()) node.append_child(pugi::node_pcdata).set_value(text.c_str());
}

}  // namespace cvve
