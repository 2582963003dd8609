// Feeds arbitrary bytes to the editor as one of the three files of a file set
// (the first byte chooses which; the other two are small valid files), opens
// it headless, visits every tree node and builds the statements. Nothing may
// crash, whatever the files hold.
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>
#include <unistd.h>

#include "component/frm_acct_view_edit.h"
#include "host/host_services.h"
#include "query/sql_builder.h"
#include "ui/headless_dialog_host.h"
#include "ui/headless_prompter.h"

namespace {

const char* kSetup =
    "<ViewSetup><RootNodes><Root><Index>0</Index><Name>All</Name></Root></RootNodes>"
    "<DataSets><DataSet><Name>A</Name><SQL>SELECT %FIELDLIST% FROM T WHERE 1=1 %ANDWHERELIST% "
    "%ORDERLIST%</SQL><Columns><Column><Name>C</Name><SortField>T.C</SortField></Column>"
    "</Columns><Filters><Filter><Name>F</Name><Index>1</Index><InputNum>2</InputNum>"
    "<SQL>T.C &gt; %DATA1%</SQL><Group>1</Group><Defaults>1|2</Defaults></Filter></Filters>"
    "</DataSet></DataSets><Tabs><Tab><Index>1</Index><Name>G</Name></Tab></Tabs></ViewSetup>";
const char* kProfiles =
    "<Views><Profiles><Profile><Name>P</Name><DataSet>A</DataSet><AcctViewType>0"
    "</AcctViewType><FilterType>0</FilterType><Columns><Column><Name>C</Name></Column>"
    "</Columns></Profile></Profiles></Views>";

void WriteFile(const std::filesystem::path& path, const std::string& text) {
  std::ofstream out(path, std::ios::binary);
  out << text;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  namespace fs = std::filesystem;
  static const fs::path dir = [] {
    fs::path d = fs::temp_directory_path() / ("cvve-fuzz-" + std::to_string(::getpid()));
    fs::create_directories(d);
    return d;
  }();
  const int which = size > 0 ? data[0] % 3 : 0;
  const std::string body = size > 0 ? std::string(reinterpret_cast<const char*>(data) + 1, size - 1)
                                    : std::string();
  WriteFile(dir / "setup.xml", which == 0 ? body : kSetup);
  WriteFile(dir / "views.xml", which == 1 ? body : kProfiles);
  WriteFile(dir / "defs.xml", which == 2 ? body : kProfiles);

  cvve::DefaultHostServices host;
  host.view_files_folder = dir.string();
  host.reports_base_folder = dir.string();
  host.users = {"u1", ""};
  host.executable_name = "viewedit";
  cvve::ui::HeadlessPrompter prompter;
  cvve::ui::HeadlessDialogHost dialogs;
  cvve::frmAcctViewEdit ed(cvve::EditorEnvironment{host, prompter, dialogs, nullptr});
  try {
    ed.LoadFiles("views.xml", "defs.xml", "setup.xml");
    for (cvve::ui::NodeId node : ed.tvwViews.DisplayOrder()) {
      ed.ProfileChanged = false;
      ed.tvwViews.UserSelect(node);
      try {
        cvve::BuildViewSQL(ed, false);
        cvve::BuildReportSQL(ed, false);
      } catch (const std::exception&) {
        // Builder failures go to their callers by design.
      }
    }
  } catch (const std::exception&) {
    // A failure that reaches the host is allowed; a crash is not.
  }
  return 0;
}
