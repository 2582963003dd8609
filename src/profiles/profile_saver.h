#pragma once
// Writing the editor's controls into the current profile record.
#include <string>
#include <vector>

namespace cvve {

class frmAcctViewEdit;

// Saves into the views document (and, in report mode, the .cvx and .cvr
// files). Returns false when it stopped with one of its two messages ("Please
// select a profile from above first.", "Custom profile settings could not be
// created.": nothing written, ProfileChanged untouched) or when a report file
// could not be written (said in a message; ProfileChanged is then left set,
// as the changes are not on disk). A failure before the sort fields throws to
// the caller; later steps are skipped one by one when they fail. In report
// mode the two files are written as one change together with the removal of
// `also_remove` (a rename's old files), and a report changed on disk since it
// was loaded is asked about first; keeping the other version writes nothing
// and clears ProfileChanged.
bool SaveProfile(frmAcctViewEdit& ed, const std::vector<std::string>& also_remove = {});
// The filter list's checks and values into the current record's
// FilterChecks, then its FilterType. Throws cvve::Error without a record.
void SaveFilterChecks(frmAcctViewEdit& ed);
// DataSet and AcctViewType of a user profile; a step that fails (no view
// type chosen) is skipped. Throws cvve::Error without a record.
void SaveProfileSource(frmAcctViewEdit& ed);

}  // namespace cvve
