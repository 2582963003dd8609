#pragma once
// The record-level merge of a views file that changed on disk while it was
// open. The editor keeps a journal of what it did to the file's profiles
// (saved, created, renamed, deleted); at OK those changes are applied, record
// by record, to the file as it is now, and every other record is taken from
// disk. A record that was changed here and on disk is a conflict, which the
// caller decides.
#include <functional>
#include <map>
#include <string>
#include <vector>

#include <pugixml.hpp>

namespace cvve::filesafety {

class EditJournal {
 public:
  void Clear();
  bool Empty() const { return puts_.empty() && steps_.empty(); }
  // The record `name` now holds this editor's contents (saved or created).
  void Saved(const std::string& name);
  // Every record called `from` is now called `to`.
  void Renamed(const std::string& from, const std::string& to);
  // The first record called `name` was removed.
  void Deleted(const std::string& name);

  // The names whose record is this editor's, with the name each had when the
  // file was loaded (its origin).
  const std::map<std::string, std::string>& Puts() const { return puts_; }
  struct Step {
    bool rename = false;
    std::string from, to;  // `to` only for renames
    std::string origin;    // the record's name when the file was loaded
  };
  const std::vector<Step>& Steps() const { return steps_; }

 private:
  std::string OriginOf(const std::string& name) const;
  std::map<std::string, std::string> puts_;
  std::vector<Step> steps_;
};

enum class Choice { kMine, kTheirs, kBack };

// Applies the journal's changes from `ours` to `fresh` (the file as it is
// now). `base` is the file as it was loaded; none when that cannot be had,
// and then every record changed here counts as changed on disk too. For each
// record changed both here and on disk `decide` is asked with the profile's
// name; kBack stops the merge and returns false, leaving `fresh` as it was.
bool MergeViews(const pugi::xml_document* base, pugi::xml_document& fresh,
                const pugi::xml_document& ours, const EditJournal& journal,
                const std::function<Choice(const std::string& name)>& decide);

}  // namespace cvve::filesafety
