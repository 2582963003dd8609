#pragma once
// Records of the editor's documents by name, so that choosing a profile or
// reading a column's definition does not walk (or compile an expression
// over) every record of a large file. Each index answers what the editor's
// path expressions ("...[Name='x']") select first, for names without an
// apostrophe; callers send those through the expression as before.
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <unordered_map>

#include "viewfiles/document_cursor.h"

namespace cvve {

// Elements by the text of each of their Name children; the first one taken
// in of a name keeps it.
class NameIndex {
 public:
  // Empty when no element has that name.
  XmlNode Find(std::string_view name) const;
  void Clear() { first_.clear(); }
  // Takes in `element` under every name it has that is not taken yet.
  void Add(XmlNode element);
  // Whether any of the element's names is taken already.
  bool AnyNameTaken(XmlNode element) const;

 private:
  struct Hash {
    using is_transparent = void;
    std::size_t operator()(std::string_view s) const { return std::hash<std::string_view>{}(s); }
  };
  std::unordered_map<std::string, XmlNode, Hash, std::equal_to<>> first_;
};

// The Profile records of one document (Profiles/Profile under the root).
// Taken in as look-ups walk them, in document order, from where the last
// walk stopped: opening a file looks up a record or two near its start and
// pays for no more, and all look-ups together take each record in once. A
// Load or Reset of the cursor is seen by its generation; the commands that
// add, rename or remove records tell the index, since those change the
// records without reloading.
class ProfileIndex {
 public:
  // The first Profile in document order with a Name child whose text is
  // `name`; empty when none.
  XmlNode Find(const DocumentCursor& doc, std::string_view name);
  // A record was added: taken in when all records were and its names are
  // new, otherwise the walk starts again on the next Find (the record may
  // come first).
  void Added(XmlNode record);
  // Records were renamed or removed: the walk starts again on the next Find
  // (the index holds handles of removed records until then, never reading them).
  void Changed() { started_ = false; }

 private:
  void Start(const DocumentCursor& doc);
  NameIndex names_;
  const DocumentCursor* doc_ = nullptr;
  std::uint64_t generation_ = 0;
  bool started_ = false;
  XmlNode section_;  // the Profiles element the walk is in; empty once all are taken in
  XmlNode next_;     // the record the walk takes in next
};

// The Column definitions of the setup file's data sets
// (DataSets/DataSet[Name=set]/Columns/Column), each data set's built on its
// first look-up and kept until another setup file is loaded. The editor
// never changes the setup file's records in place.
class ColumnIndex {
 public:
  // The first Column in document order called `column` among those of every
  // data set called `data_set`; empty when none.
  XmlNode Find(const DocumentCursor& setup, const std::string& data_set, std::string_view column);
  // The first DataSet in document order called `data_set`; empty when none.
  XmlNode DataSet(const DocumentCursor& setup, const std::string& data_set);

 private:
  struct Entry {
    XmlNode data_set;
    NameIndex columns;
  };
  const Entry& For(const DocumentCursor& setup, const std::string& data_set);
  struct Hash {
    using is_transparent = void;
    std::size_t operator()(std::string_view s) const { return std::hash<std::string_view>{}(s); }
  };
  std::unordered_map<std::string, Entry, Hash, std::equal_to<>> by_data_set_;
  DocumentStamp stamp_;
};

}  // namespace cvve
