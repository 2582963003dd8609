#pragma once
// cvViewEdit's public class. A host creates one and calls an entry method;
// the call opens the profile editor window modally on the host's user
// interface thread and returns when the user closes it. What the user saved
// is then in the files.
//
//   cvve::clsViewEdit editor;   // HostSettings::Load()
//   editor.AcctViewEdit();
//
// A host with a QApplication shares it with the editor; for a host without
// one the library makes one for the duration of each call. Without a display
// (DISPLAY, WAYLAND_DISPLAY or QT_QPA_PLATFORM) there is no window: the view
// entry methods then fail with an error that says so.
//
// ViewEdit and the three view wrappers let failures through to the caller
// (as exceptions derived from std::exception); ReportEdit ignores them.
#include <memory>
#include <string>

#include "cvviewedit/host_settings.h"

namespace cvve {

struct EditorEnvironment;
class frmAcctViewEdit;

class clsViewEdit {
 public:
  // On HostSettings::Load().
  clsViewEdit();
  explicit clsViewEdit(const HostSettings& settings);
  // On an environment of the caller's own (the launcher, tests); it must
  // outlive this object.
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
