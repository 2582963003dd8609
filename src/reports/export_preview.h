#pragma once
// Export of a view as a custom report, and the preview of a custom report.
namespace cvve {

class frmAcctViewEdit;

void cmdExport_Click(frmAcctViewEdit& ed);
void cmdPreviewReport_Click(frmAcctViewEdit& ed);

}  // namespace cvve
