// Feeds arbitrary bytes to the editor as one of the three files of a file set
// (the first byte chooses which; the other two are small valid files), opens
// it headless, visits every tree node and builds the statements. Nothing may
// crash, whatever the files hold.
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <unistd.h>

#include "component/frm_acct_view_edit.h"
#include "fuzz_files.h"
#include "host/host_services.h"
#include "ui/headless_dialog_host.h"
#include "ui/headless_prompter.h"

using cvve::fuzz::kProfiles;
using cvve::fuzz::kSetup;
using cvve::fuzz::WriteFile;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  namespace fs = std::filesystem;
  static const fs::path dir = cvve::fuzz::OwnFolder("cvve-fuzz-");
  const int which = size > 0 ? data[0] % 3 : 0;
  const std::string body = size > 0 ? std::string(reinterpret_cast<const char*>(data) + 1, size - 1)
                                    : std::string();
  WriteFile(dir / "setup.xml", which == 0 ? body : kSetup);
  WriteFile(dir / "views.xml", which == 1 ? body : kProfiles);
  WriteFile(dir / "defs.xml", which == 2 ? body : kProfiles);

  cvve::DefaultHostServices host = cvve::fuzz::HostIn(dir);
  cvve::ui::HeadlessPrompter prompter;
  cvve::ui::HeadlessDialogHost dialogs;
  cvve::frmAcctViewEdit ed(cvve::EditorEnvironment{host, prompter, dialogs, nullptr});
  try {
    ed.LoadFiles("views.xml", "defs.xml", "setup.xml");
    cvve::fuzz::VisitEveryNode(ed);
  } catch (const std::exception&) {
    // A failure that reaches the host is allowed; a crash is not.
  }
  return 0;
}
