#pragma once
// What a save would store as the profile's statement, for the editor's
// read-only statement pane. It changes nothing and shows nothing: the
// builders' own messages (such as "no columns selected") are collected
// silently and listed in the text instead.
#include <string>

namespace cvve {

class frmAcctViewEdit;

// Never throws: a builder's failure is described in the returned text. With
// no current profile the text says so. For a user profile it gives the SQL
// element (advanced filter) or the SQLFieldList and SQLWhereList elements
// (easy filter); for a system profile it says that its statement stays the
// defaults file's and gives the view statement for reference.
std::string StoredStatementPreview(frmAcctViewEdit& ed);

}  // namespace cvve
