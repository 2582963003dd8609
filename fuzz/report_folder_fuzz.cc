// Feeds arbitrary bytes to the editor in report mode as a report document
// (.cvx) of the Custom Reports folder, beside a valid one, opens the folder
// and visits every report. Nothing may crash, whatever the document holds.
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <unistd.h>

#include "component/frm_acct_view_edit.h"
#include "fuzz_files.h"
#include "ui/headless_dialog_host.h"
#include "ui/headless_prompter.h"

using cvve::fuzz::kProfiles;
using cvve::fuzz::kSetup;
using cvve::fuzz::WriteFile;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  namespace fs = std::filesystem;
  static const fs::path dir = cvve::fuzz::OwnFolder("cvve-report-fuzz-");
  const fs::path reports = dir / "Custom Reports";
  WriteFile(dir / "reportsetup.xml", kSetup);
  WriteFile(reports / "Good.cvx", kProfiles);
  WriteFile(reports / "Fuzzed.cvx", std::string(reinterpret_cast<const char*>(data), size));

  cvve::DefaultHostServices host = cvve::fuzz::HostIn(dir);
  cvve::ui::HeadlessPrompter prompter;
  cvve::ui::HeadlessDialogHost dialogs;
  cvve::frmAcctViewEdit ed(cvve::EditorEnvironment{host, prompter, dialogs, nullptr});
  try {
    ed.SetReportMode(-1);
    ed.LoadFiles(reports.string() + "/", "", "reportsetup.xml");
    cvve::fuzz::VisitEveryNode(ed);
  } catch (const std::exception&) {
    // A failure that reaches the host is allowed; a crash is not.
  }
  return 0;
}
