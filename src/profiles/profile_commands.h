#pragma once
// New, Copy, Rename, Delete and Save of whole profiles (or report files).
namespace cvve {

class frmAcctViewEdit;

void cmdNewProfile_Click(frmAcctViewEdit& ed);
void cmdCopyProfile_Click(frmAcctViewEdit& ed);
void cmdEditProfile_Click(frmAcctViewEdit& ed);
void cmdDeleteProfile_Click(frmAcctViewEdit& ed);
void cmdSaveProfile_Click(frmAcctViewEdit& ed);
void cmdSaveProfile_LostFocus(frmAcctViewEdit& ed);

}  // namespace cvve
