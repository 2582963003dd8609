#include "fileset_generator.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <stdexcept>

namespace cvve::bench {

namespace {

enum class Kind { kSystem, kCustomisation, kUser };

// Every how many profiles one has the property of the given share (0: none).
int Every(double share) {
  return share <= 0 ? 0 : std::max(1, static_cast<int>(std::lround(1 / share)));
}

int SystemCount(const FileSetShape& shape) {
  return shape.profiles - static_cast<int>(std::lround(shape.profiles * shape.views_share));
}

bool IsCustomised(const FileSetShape& shape, int index) {
  int every = Every(shape.customised_share);
  return every > 0 && index % every == 0;
}

std::string DataSetName(int d) { return "Data Set " + std::to_string(d); }
std::string ColumnName(int d, int c) {
  return "Column " + std::to_string(d) + "." + std::to_string(c);
}
std::string SortField(int d, int c) { return "T" + std::to_string(d) + ".F" + std::to_string(c); }

void Element(std::string& out, const char* name, const std::string& text) {
  out += '<';
  out += name;
  out += '>';
  out += text;
  out += "</";
  out += name;
  out += '>';
}

void ColumnDefinition(std::string& out, int d, int c) {
  out += "<Column>";
  Element(out, "Name", ColumnName(d, c));
  Element(out, "Field", SortField(d, c));
  Element(out, "SortField", SortField(d, c));
  Element(out, "FieldFormat",
          c % 4 == 0   ? "String"
          : c % 4 == 1 ? "Currency"
          : c % 4 == 2 ? "Date"
                       : "Integer");
  Element(out, "Width", std::to_string(1000 + 10 * (c % 50)));
  Element(out, "Alignment", c % 2 ? "Right" : "Left");
  out += "</Column>";
}

void Profile(std::string& out, const FileSetShape& shape, int index, Kind kind) {
  const int data_set = index % shape.data_sets;
  const int columns = std::max(1, shape.columns);
  const bool wide = kind == Kind::kUser && index < SystemCount(shape) + shape.wide_profiles;
  const int used = wide ? columns : std::min(shape.used_columns, columns);
  const int first_column = (index * 7) % columns;
  const int every_user_where = Every(shape.user_where_share);
  const bool source = kind != Kind::kCustomisation;

  out += "<Profile>";
  Element(out, "Name", ProfileName(index));
  if (source) {
    Element(out, "DataSet", DataSetName(data_set));
    Element(out, "AcctViewType", index % 97 == 5 ? "99" : std::to_string(index % shape.folders));
    Element(out, "FilterType", "0");
    Element(out, "SQL",
            every_user_where > 0 && index % every_user_where == 1
                ? "SELECT * FROM T WHERE %USERWHERE%"
                : "");
  }
  Element(out, "SortBy", ColumnName(data_set, first_column));
  Element(out, "SortByField", SortField(data_set, first_column));
  Element(out, "SortASCDESC", index % 2 ? "DESC" : "ASC");
  Element(out, "SortBy2", ColumnName(data_set, (first_column + 1) % columns));
  Element(out, "SortByField2", SortField(data_set, (first_column + 1) % columns));
  Element(out, "SortASCDESC2", "ASC");
  Element(out, "DoGrouping", "0");
  Element(out, "DoAverages", std::to_string(index % 2));
  Element(out, "DoTotals", "1");
  Element(out, "DoLineCount", "0");
  Element(out, "PageOrientation", std::to_string(index % 2));
  Element(out, "PageSize", std::to_string(index % 4));
  Element(out, "PageMultiLine", "0");
  for (int v = 0; v < 4; ++v) {
    const std::string prefix = "Var" + std::to_string(v);
    const bool dates = v < 2 && index % 5 == 0;
    Element(out, (prefix + "Caption").c_str(), dates ? (v == 0 ? "Start Date:" : "End Date:") : "");
    Element(out, (prefix + "Type").c_str(), dates ? "Date" : "");
    Element(out, (prefix + "Name").c_str(), dates ? (v == 0 ? "START_DATE" : "END_DATE") : "");
  }
  out += "<Columns>";
  for (int k = 0; k < used; ++k) ColumnDefinition(out, data_set, (first_column + k) % columns);
  out += "</Columns>";
  Element(out, "Tabs", "1,3," + std::to_string(1 + index % std::max(1, shape.tabs)));
  if (kind == Kind::kUser && shape.filters > 0) {
    const int saved = wide ? shape.filters : std::min(shape.saved_filters, shape.filters);
    out += "<FilterChecks>";
    for (int k = 0; k < saved; ++k) {
      const int f = (index + k) % shape.filters;
      out += "<Filter>";
      Element(out, "Index", std::to_string(f + 1));
      Element(out, "Name", "Filter " + std::to_string(f + 1));
      Element(out, "Value", k % 2 ? "False" : "True");
      Element(out, "Data1", k % 3 ? "45" : "");
      Element(out, "Data2", "");
      out += "</Filter>";
    }
    out += "</FilterChecks>";
    Element(out, "SQLWhereList", "(T.F1 &gt; 45)");
    Element(out, "SQLFieldList", SortField(data_set, first_column));
  }
  out += "</Profile>\n";
}

void WriteText(const std::filesystem::path& path, const std::string& text) {
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out << text;
  if (!out) throw std::runtime_error("cannot write " + path.string());
}

}  // namespace

std::string ProfileName(int index) {
  char name[32];
  std::snprintf(name, sizeof name, "Profile %06d", index);
  return name;
}

std::string SetupText(const FileSetShape& shape) {
  std::string out = "<?xml version=\"1.0\"?>\n<ViewSetup>\n<RootNodes>";
  for (int i = 0; i < shape.folders; ++i) {
    out += "<Root>";
    Element(out, "Index", std::to_string(i));
    Element(out, "Name", "Folder " + std::to_string(i));
    out += "</Root>";
  }
  out += "<Root><Index>99</Index><Name>Hidden</Name></Root></RootNodes>\n<DataSets>\n";
  for (int d = 0; d < shape.data_sets; ++d) {
    out += "<DataSet>";
    Element(out, "Name", DataSetName(d));
    Element(
        out, "SQL",
        "SELECT %FIELDLIST% FROM T" + std::to_string(d) + " WHERE 1=1 %ANDWHERELIST% %ORDERLIST%");
    out += "<Columns>";
    for (int c = 0; c < shape.columns; ++c) ColumnDefinition(out, d, c);
    out += "</Columns>\n<Filters>";
    for (int f = 0; f < shape.filters; ++f) {
      const int inputs = f % 3;
      out += "<Filter>";
      Element(out, "Name", "Filter " + std::to_string(f + 1));
      Element(out, "Index", std::to_string(f + 1));
      Element(out, "InputNum", std::to_string(inputs));
      Element(out, "Label1", inputs ? "from" : "");
      Element(out, "Label2", inputs == 2 ? "to" : "");
      Element(out, "SQL",
              SortField(d, f % std::max(1, shape.columns)) + (inputs == 2
                                                                 ? " BETWEEN %DATA1% AND %DATA2%"
                                                             : inputs == 1 ? " &gt; %DATA1%"
                                                                           : " IS NOT NULL"));
      Element(out, "Group", std::to_string(f % 10));
      Element(out, "Defaults", inputs == 2 ? "01/01/2020|12/31/2020" : inputs == 1 ? "30" : "");
      out += "</Filter>";
    }
    out += "</Filters></DataSet>\n";
  }
  out += "</DataSets>\n<Tabs>";
  for (int t = 1; t <= shape.tabs; ++t) {
    out += "<Tab>";
    Element(out, "Index", std::to_string(t));
    Element(out, "Name", "Tab " + std::to_string(t));
    out += "</Tab>";
  }
  out += "</Tabs>\n</ViewSetup>\n";
  return out;
}

std::string DefaultsText(const FileSetShape& shape) {
  std::string out = "<?xml version=\"1.0\"?>\n<Views><Profiles>\n";
  const int systems = SystemCount(shape);
  for (int i = 0; i < systems; ++i) Profile(out, shape, i, Kind::kSystem);
  out += "</Profiles></Views>\n";
  return out;
}

std::string ViewsText(const FileSetShape& shape) {
  std::string out = "<?xml version=\"1.0\"?>\n<Views><Profiles>\n";
  const int systems = SystemCount(shape);
  for (int i = 0; i < systems; ++i) {
    if (IsCustomised(shape, i)) Profile(out, shape, i, Kind::kCustomisation);
  }
  for (int i = systems; i < shape.profiles; ++i) Profile(out, shape, i, Kind::kUser);
  out += "</Profiles></Views>\n";
  return out;
}

FileSet WriteFileSet(const std::string& folder, const FileSetShape& shape) {
  namespace fs = std::filesystem;
  fs::create_directories(folder);
  FileSet set;
  set.folder = folder;
  WriteText(fs::path(folder) / set.setup, SetupText(shape));
  WriteText(fs::path(folder) / set.defaults, DefaultsText(shape));
  WriteText(fs::path(folder) / set.views, ViewsText(shape));
  for (int u = 0; u < shape.users; ++u) set.users.push_back("user" + std::to_string(u));
  const int systems = SystemCount(shape);
  if (systems < shape.profiles) set.user_profile = ProfileName(systems);
  if (systems > 1) set.system_profile = ProfileName(1);
  if (systems > 0 && IsCustomised(shape, 0)) set.customised_profile = ProfileName(0);
  return set;
}

}  // namespace cvve::bench
