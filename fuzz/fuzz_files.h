#pragma once
// The small valid files the fuzz targets put beside the fuzzed input, and a
// host on the target's own temporary folder.
#include <filesystem>
#include <fstream>
#include <string>
#include <unistd.h>

#include "component/frm_acct_view_edit.h"
#include "host/host_services.h"
#include "query/sql_builder.h"

namespace cvve::fuzz {

inline const char* kSetup =
    "<ViewSetup><RootNodes><Root><Index>0</Index><Name>All</Name></Root></RootNodes>"
    "<DataSets><DataSet><Name>A</Name><SQL>SELECT %FIELDLIST% FROM T WHERE 1=1 %ANDWHERELIST% "
    "%ORDERLIST%</SQL><Columns><Column><Name>C</Name><SortField>T.C</SortField></Column>"
    "</Columns><Filters><Filter><Name>F</Name><Index>1</Index><InputNum>2</InputNum>"
    "<SQL>T.C &gt; %DATA1%</SQL><Group>1</Group><Defaults>1|2</Defaults></Filter></Filters>"
    "</DataSet></DataSets><Tabs><Tab><Index>1</Index><Name>G</Name></Tab></Tabs></ViewSetup>";
inline const char* kProfiles =
    "<Views><Profiles><Profile><Name>P</Name><DataSet>A</DataSet><AcctViewType>0"
    "</AcctViewType><FilterType>0</FilterType><Columns><Column><Name>C</Name></Column>"
    "</Columns></Profile></Profiles></Views>";

inline void WriteFile(const std::filesystem::path& path, const std::string& text) {
  std::ofstream out(path, std::ios::binary);
  out << text;
}

// A folder of this process's own under the temporary folder, with an empty
// "Custom Reports" in it.
inline std::filesystem::path OwnFolder(const std::string& prefix) {
  namespace fs = std::filesystem;
  fs::path dir = fs::temp_directory_path() / (prefix + std::to_string(::getpid()));
  fs::create_directories(dir / "Custom Reports");
  return dir;
}

// The host's services with both base folders at `dir`.
inline DefaultHostServices HostIn(const std::filesystem::path& dir) {
  DefaultHostServices host;
  host.view_files_folder = dir.string();
  host.reports_base_folder = dir.string();
  host.users = {"u1", ""};
  host.executable_name = "viewedit";
  return host;
}

// Clicks every node of the tree and builds its statements; nothing may crash.
inline void VisitEveryNode(frmAcctViewEdit& ed) {
  for (ui::NodeId node : ed.tvwViews.DisplayOrder()) {
    ed.ProfileChanged = false;
    ed.tvwViews.UserSelect(node);
    try {
      BuildViewSQL(ed, false);
      BuildReportSQL(ed, false);
    } catch (const std::exception&) {
      // Builder failures go to their callers by design.
    }
  }
}

}  // namespace cvve::fuzz
