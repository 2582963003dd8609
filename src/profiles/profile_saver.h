#pragma once
// Writing the editor's controls into the current profile record.
namespace cvve {

class frmAcctViewEdit;

// Saves into the views document (and, in report mode, the .cvx and .cvr
// files). The two stopping messages end it with nothing written; a failure
// before the sort fields throws to the caller.
void SaveProfile(frmAcctViewEdit& ed);
// The filter list's checks and values into the record's FilterChecks.
void SaveFilterChecks(frmAcctViewEdit& ed);
// DataSet and AcctViewType of a user profile.
void SaveProfileSource(frmAcctViewEdit& ed);

}  // namespace cvve
