#pragma once
// An XML document behind a cursor, the way the editor reads and writes its
// views, defaults and setup files. Comments and processing instructions are
// kept as nodes; whitespace-only text is dropped. Navigation never throws: a
// missing node is an empty handle. Reading or writing through a cursor that
// has no current node throws cvve::Error.
#include <cstdint>
#include <pugixml.hpp>
#include <array>
#include <cstddef>
#include <string>
#include <vector>

namespace cvve {

using XmlNode = pugi::xml_node;

class DocumentCursor {
 public:
  DocumentCursor();
  DocumentCursor(const DocumentCursor&) = delete;
  DocumentCursor& operator=(const DocumentCursor&) = delete;

  // Replaces the document with an empty one; the current node becomes none.
  void Reset();
  // Loads the file. On failure returns false and the document holds whatever
  // the parser kept; `error` (when given) says why.
  bool Load(const std::string& path, std::string* error = nullptr);
  // Parses text, as Load does with a file's contents.
  bool LoadText(const std::string& text, std::string* error = nullptr);
  // Parses `size` bytes in place into `doc` as Load parses a file, taking
  // over `buffer` (from pugixml's allocation function) whatever the result.
  static bool ParseInPlace(pugi::xml_document& doc, char* buffer, std::size_t size,
                           std::string* error = nullptr);
  // Writes the document atomically: a temporary file in the same folder,
  // flushed and renamed over `path`; an existing file is kept as path + ".bak".
  // Throws cvve::Error on failure, leaving the old file whole.
  void Save(const std::string& path) const;
  std::string ToString() const;

  // Makes the first child element called `name` of the current node current
  // and returns it; none (and none current) when there is no such child or no
  // current node. An empty name makes the root element current. With
  // `create`, missing elements (and the root element, called `root_name`)
  // are created on the way.
  XmlNode GoToChild(const std::string& name, bool create = false);
  // Appends an element to the current node and makes it current.
  // Throws cvve::Error when there is no current node.
  XmlNode AddChild(const std::string& name);
  // The text of the first child element called `name`; "" when there is none.
  // Throws cvve::Error when there is no current node.
  std::string GetValue(const std::string& name) const;
  // Sets the text of the first child element called `name`, creating it when
  // missing. Throws cvve::Error when there is no current node.
  void SetValue(const std::string& name, const std::string& value);
  // As SetValue, but stores the value as CDATA (split where it holds "]]>"),
  // which keeps statements readable in the file; GetValue reads both alike.
  void SetValueBlock(const std::string& name, const std::string& value);

  XmlNode CurrentNode() const { return current_; }
  void SetCurrentNode(XmlNode node) { current_ = node; }

  pugi::xml_document& Document() { return doc_; }
  const pugi::xml_document& Document() const { return doc_; }
  XmlNode Root() const { return doc_.document_element(); }
  // Grows with every Reset and Load, so holders of node handles can tell that
  // the nodes they hold are gone.
  std::uint64_t Generation() const { return generation_; }

  std::string root_name = "Views";

 private:
  pugi::xml_document doc_;
  XmlNode current_;
  std::uint64_t generation_ = 0;
};

// Which loaded document a cache was made from, so that it can empty itself
// when asked about another document or the same one loaded again.
class DocumentStamp {
 public:
  // True when `doc` is not the document of the last call, or was loaded
  // again since; the stamp is `doc`'s from then on.
  bool Moved(const DocumentCursor& doc) {
    if (doc_ == &doc && generation_ == doc.Generation()) return false;
    doc_ = &doc;
    generation_ = doc.Generation();
    return true;
  }

 private:
  const DocumentCursor* doc_ = nullptr;
  std::uint64_t generation_ = 0;
};

// Reads a record's values as DocumentCursor::GetValue does, but finds each
// value's element through one pass over the record's children instead of a
// walk per value: loading a profile reads some 45 values of a record of 40-odd
// children. The pass is made again when the cursor is on another record. Not
// for a document that changes while the reader is held.
class RecordValues {
 public:
  // cursor.GetValue(name), with the same error when the cursor has no node.
  std::string Get(const DocumentCursor& cursor, const std::string& name);
  // The same for a cursor standing on `record`.
  std::string Get(XmlNode record, const std::string& name);
  // The element whose text Get(record, name) gives: the first child element
  // called `name`, empty when none. Throws as Get does for an empty record.
  XmlNode Element(XmlNode record, const std::string& name);

 private:
  // Open addressing by name, no allocation; a record of more elements than
  // half the slots is walked instead.
  static constexpr std::size_t kSlots = 256;
  XmlNode record_;
  bool walk_ = false;
  std::array<XmlNode, kSlots> first_{};  // the first element of each name
};

// Node operations used across the editor, each safe on an empty node.

// Nodes selected by a path expression relative to `context`; empty when the
// expression does not compile (a name with an apostrophe) or `context` is empty.
std::vector<XmlNode> SelectNodes(XmlNode context, const std::string& xpath);
// The first child element called `name` (not a comment or instruction of
// that name), as GoToChild finds it; empty when none or `parent` is empty.
XmlNode FirstChildElement(XmlNode parent, const std::string& name);
// The first of those, or an empty node.
XmlNode SelectSingleNode(XmlNode context, const std::string& xpath);
// As SelectSingleNode, but an expression that does not compile is an error
// of the operation: throws cvve::Error with the parser's description.
XmlNode SelectSingleNodeOrFail(XmlNode context, const std::string& xpath);
// All text below the node, in document order ("" for an empty node).
std::string NodeText(XmlNode node);
// The text of the first child element called `name`, "" when none.
std::string ChildText(XmlNode node, const char* name);
// The node's next sibling of any kind (element, comment, instruction ...).
inline XmlNode NextSibling(XmlNode node) { return node.next_sibling(); }
// Replaces everything below the element by one text node.
void SetNodeText(XmlNode node, const std::string& text);

}  // namespace cvve
