#pragma once
// cvViewEdit's public class. A host creates one and calls an entry method;
// the call opens the profile editor modally on a file set and returns when
// the user closes it. What the user saved is then in the files.
//
// ViewEdit and the three view wrappers let failures through to the caller
// (as exceptions derived from std::exception); ReportEdit ignores them.
#include <memory>
#include <string>

namespace cvve {

struct EditorEnvironment;
class frmAcctViewEdit;

class clsViewEdit {
 public:
  // The environment must outlive this object.
  explicit clsViewEdit(const EditorEnvironment& env);
  ~clsViewEdit();
  clsViewEdit(const clsViewEdit&) = delete;
  clsViewEdit& operator=(const clsViewEdit&) = delete;

  // Bare file names, found in the host's view-file folder.
  void ViewEdit(const std::string& sViewsFile, const std::string& sViewsFileDef,
                const std::string& sViewSetupFile);
  void AcctViewEdit();  // acctviews.xml, acctviewsdef.xml, viewsetup.xml
  void InvViewEdit();   // v_invviews.xml, v_invdef.xml, v_invsetup.xml
  void EODViewEdit();   // eodviews.xml, eoddef.xml, eodsetup.xml
  // The custom reports in ReportsBaseFolder/Custom Reports, in report mode.
  void ReportEdit();

  // The editor window of the last entry call (kept after it closed, so its
  // final state can be read); nullptr before the first call.
  frmAcctViewEdit* Editor();

 private:
  frmAcctViewEdit& EnsureEditor();
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

}  // namespace cvve
