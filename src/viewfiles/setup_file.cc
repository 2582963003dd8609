#include "viewfiles/setup_file.h"

#include <cstring>
#include <vector>

#include "base/error.h"
#include "base/text.h"
#include "component/frm_acct_view_edit.h"
#include "ui/prompter.h"

namespace cvve {

namespace {

std::string DataSetPath(const std::string& data_set) {
  return "DataSets/DataSet[Name='" + data_set + "']";
}

// The last child element called `element` of the column wins.
std::string LastChildText(XmlNode column, const char* element) {
  std::string value;
  for (XmlNode child = column.first_child(); child; child = child.next_sibling()) {
    if (child.type() == pugi::node_element && std::strcmp(child.name(), element) == 0) {
      value = NodeText(child);
    }
  }
  return value;
}

}  // namespace

XmlNode FindDataSet(frmAcctViewEdit& ed, const std::string& data_set) {
  // A name with an apostrophe changes the expression itself.
  if (data_set.find('\'') != std::string::npos) {
    return SelectSingleNode(ed.SetupDoc.Root(), DataSetPath(data_set));
  }
  return ed.SetupColumns().DataSet(ed.SetupDoc, data_set);
}

void LoadDataSets(frmAcctViewEdit& ed) {
  try {
    ed.cmbDataSet.Clear();
    DocumentCursor& setup = ed.SetupDoc;
    if (!setup.GoToChild("")) return;  // no setup file: nothing to offer
    if (!setup.GoToChild("DataSets")) {
      throw Error("Object variable or With block variable not set");
    }
    // Every sibling from the first DataSet on, whatever its name.
    for (XmlNode node = setup.GoToChild("DataSet"); node; node = NextSibling(node)) {
      ed.cmbDataSet.AddItem(ChildText(node, "Name"));
    }
    if (ed.cmbDataSet.ListCount() > 0) ed.cmbDataSet.SetListIndex(0);
  } catch (const std::exception& e) {
    ed.ShowError("Error in LoadDataSets:", e);
  }
}

void LoadColumns(frmAcctViewEdit& ed) {
  ed.lstAvailColumns.Clear();
  const std::string data_set = ed.cmbDataSet.Text();
  if (data_set.empty()) return;
  XmlNode node = FindDataSet(ed, data_set);
  if (!node) {
    ed.Prompt().MsgBox("Error loading columns:  Data Set not found.", ui::Buttons::kOk,
                       ui::Icon::kCritical, "Error");
    return;
  }
  ed.DataSetSQL = ChildText(node, "SQL");
  XmlNode columns = node.child("Columns");
  ed.lstAvailColumns.Clear();
  ed.lstUsedColumns.Clear();
  for (XmlNode column = columns.first_child(); column; column = NextSibling(column)) {
    XmlNode name = column.child("Name");
    if (name) ed.lstAvailColumns.AddItem(NodeText(name));
  }
}

void LoadTabs(frmAcctViewEdit& ed) {
  // Every profile switch lays the tabs out again: after the first time in a
  // loaded setup file, the list is copied instead of read.
  if (ed.tab_rows && ed.tab_rows_generation == ed.SetupDoc.Generation()) {
    ed.lstvwTabs.SetItems(*ed.tab_rows);
    return;
  }
  ed.lstvwTabs.ClearItems();
  XmlNode tabs = ed.SetupDoc.Root().child("Tabs");
  for (XmlNode tab = tabs.first_child(); tab; tab = NextSibling(tab)) {
    const std::string index = ChildText(tab, "Index");
    // A tab that cannot be added (its key is taken) is left out.
    ResumeNext([&] {
      int row = ed.lstvwTabs.AddItem(ed.lstvwTabs.ItemCount() + 1, ChildText(tab, "Name"),
                                     "T" + index);
      ed.lstvwTabs.SetTag(row, index);
    });
  }
  ed.tab_rows = ed.lstvwTabs.Items();
  ed.tab_rows_generation = ed.SetupDoc.Generation();
}

namespace {

std::string ColumnPath(const std::string& data_set, const std::string& sColumnName) {
  return "./" + DataSetPath(data_set) + "/Columns/Column[Name='" + sColumnName + "']";
}

// The column's definition through the data set's index; a name with an
// apostrophe changes the expression itself, so it goes through the
// expression, which with `fail` throws when it does not compile.
XmlNode FindColumn(frmAcctViewEdit& ed, const std::string& data_set,
                   const std::string& sColumnName, bool fail) {
  if (data_set.find('\'') != std::string::npos || sColumnName.find('\'') != std::string::npos) {
    const std::string path = ColumnPath(data_set, sColumnName);
    return fail ? SelectSingleNodeOrFail(ed.SetupDoc.Root(), path)
                : SelectSingleNode(ed.SetupDoc.Root(), path);
  }
  return ed.SetupColumns().Find(ed.SetupDoc, data_set, sColumnName);
}

}  // namespace

XmlNode SelectColumn(frmAcctViewEdit& ed, const std::string& sColumnName) {
  return FindColumn(ed, ed.cmbDataSet.Text(), sColumnName, false);
}

std::string ColumnAttributeOf(frmAcctViewEdit& ed, const std::string& data_set,
                              const std::string& sColumnName, const char* element) {
  XmlNode column = FindColumn(ed, data_set, sColumnName, false);
  return column ? LastChildText(column, element) : std::string();
}

std::string ColumnAttribute(frmAcctViewEdit& ed, const std::string& sColumnName,
                            const char* element) {
  return ColumnAttributeOf(ed, ed.cmbDataSet.Text(), sColumnName, element);
}

std::string ColumnField(frmAcctViewEdit& ed, const std::string& sColumnName) {
  std::string value;
  ResumeNext([&] { value = ColumnAttribute(ed, sColumnName, "Field"); });
  return value;
}

std::string ColumnFieldMapped(frmAcctViewEdit& ed, const std::string& sColumnName) {
  std::string value = ColumnAttribute(ed, sColumnName, "Field");
  if (value == "AcctNum") value = "ACCTS.AcctNum";
  if (value == "$DUE_DATE") value = "Next_Pmt_Due";
  return value;
}

std::string ColumnSortField(frmAcctViewEdit& ed, const std::string& sColumnName) {
  return ColumnAttribute(ed, sColumnName, "SortField");
}

std::string ColumnFieldFormat(frmAcctViewEdit& ed, const std::string& sColumnName) {
  return ColumnAttribute(ed, sColumnName, "FieldFormat");
}

void WriteProfileColumns(frmAcctViewEdit& ed) {
  XmlNode profile = ed.CurrentProfileNode();
  if (!profile) return;
  // All look-ups first: a name that makes one invalid fails the save before
  // the record is touched (it would otherwise vanish from the profile unnoticed).
  std::vector<XmlNode> definitions;
  for (const std::string& name : ed.lstUsedColumns.Items()) {
    definitions.push_back(FindColumn(ed, ed.cmbDataSet.Text(), name, true));
  }
  DocumentCursor& views = ed.ViewsDoc;
  views.SetCurrentNode(profile);
  views.SetValue("Columns", "");
  XmlNode columns = profile.child("Columns");
  for (XmlNode definition : definitions) {
    if (!definition) continue;  // no longer offered by the data set: dropped
    XmlNode copy = columns.append_child("Column");
    for (XmlNode child = definition.first_child(); child; child = child.next_sibling()) {
      if (child.type() != pugi::node_element) continue;
      SetNodeText(copy.append_child(child.name()), NodeText(child));
    }
  }
  views.SetCurrentNode(profile);
}

void WriteProfileTabs(frmAcctViewEdit& ed) {
  XmlNode profile = ed.CurrentProfileNode();
  if (!profile) return;
  std::string tabs;
  for (const auto& item : ed.lstvwTabs.Items()) {
    if (!item.checked) continue;
    if (!tabs.empty()) tabs += ",";
    tabs += item.tag;
  }
  ed.ViewsDoc.SetCurrentNode(profile);
  ed.ViewsDoc.SetValue("Tabs", tabs);
}

}  // namespace cvve
