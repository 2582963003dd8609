#pragma once
// Finding a profile record in the defaults file (SelectProfile) or the views
// file (SelectProfileCustom). Each makes the found record (or nothing) the
// cursor's current node and the editor's current profile node.
#include <string>
#include <vector>

#include "viewfiles/document_cursor.h"

namespace cvve {

class frmAcctViewEdit;

XmlNode SelectProfile(frmAcctViewEdit& ed, const std::string& name);
XmlNode SelectProfileCustom(frmAcctViewEdit& ed, const std::string& name);
// The path expression that finds a profile by name, the name pasted in as it
// stands (an apostrophe in it makes the expression invalid: not found).
std::string ProfilePath(const std::string& name);
// The first Profile element of `cursor`'s Profiles with that Name, found by
// walking the records (not by expression); empty when none.
XmlNode FindProfileElement(const DocumentCursor& cursor, const std::string& name);
// A record's used columns as loading a profile lists them, given its first
// Columns element: from the first Column in it on, the Name of that node and
// of every node after it that has one. None for an empty node. `names` is
// reused.
void UsedColumnNames(XmlNode columns, std::vector<std::string>& names);

}  // namespace cvve
