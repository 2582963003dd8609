#pragma once
// The search box over profile names: it fills the tree's "Search Results"
// folder with one entry per matching profile. An entry carries the profile's
// name as its text and its kind as its tag, so selecting it loads and saves
// that profile exactly as its own node does.
#include <string>

namespace cvve {

class frmAcctViewEdit;

inline constexpr const char* kSearchFolderKey = "ROOTSearch";
inline constexpr const char* kSearchKeyPrefix = "SEARCH|";

// Removes the earlier results, then adds under ROOTSearch (key "SEARCH|" +
// name) every profile whose name contains `text`, letter case ignored over
// all of Unicode ("MÜLLER" finds "Müller Weekly"), and
// expands the folder. An empty text only removes the results. Returns the
// number of matches; 0 and no change when the tree has no search folder
// (report mode). The selection stays on the node it was on, unless that node
// was an earlier result (then nothing is selected); nothing is loaded.
int FillSearchResults(frmAcctViewEdit& ed, const std::string& text);

}  // namespace cvve
