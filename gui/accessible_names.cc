#include "gui/accessible_names.h"

#include <QComboBox>
#include <QLineEdit>
#include <QWidget>

namespace cvve::gui {

namespace {

struct Reading {
  const char* object_name;
  const char* name;
  const char* description;  // "" when the name says it all
};

constexpr Reading kReadings[] = {
    {"txtSearch", "Search profile names",
     "Lists the profiles whose names contain this text under Search Results"},
    {"tvwViews", "Profiles", "The profile folders; selecting a profile loads it for editing"},
    {"cmdNewProfile", "New profile", ""},
    {"cmdCopyProfile", "Copy profile", "Copies the profile under a new name"},
    {"cmdEditProfile", "Edit profile name", ""},
    {"cmdDeleteProfile", "Delete profile", "Deletes a user profile or resets a system profile"},
    {"cmdSaveProfile", "Save profile", "Keeps the changes; OK writes the views file"},
    {"txtCurrProf", "Current profile", ""},
    {"cmbDataSet", "Data set", "The data the list shows"},
    {"cmbAcctViewType", "Folder", "The folder of the tree that lists this profile"},
    {"lstvwTabs", "Tabs", "The tabs the list shows; Space checks or clears a tab"},
    {"lstAvailColumns", "Available columns", "Enter or a double click uses the column"},
    {"lstUsedColumns", "Used columns, in order", "Enter or a double click stops using it"},
    {"cmdAddForm", "Use column", "Adds the selected available column to the used ones"},
    {"cmdRemoveForm", "Stop using column", "Removes the selected used column"},
    {"cmdRemoveAll", "Stop using every column", ""},
    {"cmdMove(0)", "Move column up", ""},
    {"cmdMove(1)", "Move column down", ""},
    {"optFilter(0)", "Easy filter", "Filter with the checked conditions of the filter list"},
    {"optFilter(1)", "Advanced filter", "Filter with a statement written by hand"},
    {"cmdAdvancedFilter", "Edit advanced filter", ""},
    {"lstFilters", "Filter conditions",
     "Space checks or clears a condition; F2 or Enter opens its value"},
    {"txtData1LV", "Filter value", "Enter keeps the value, Escape closes, Tab goes to the second"},
    {"txtData2LV", "Second filter value", "Enter keeps the value, Escape closes"},
    {"cmbSort(0)", "Sort by", ""},
    {"cmbSortASCDESC(0)", "Sort direction", "ASC: ascending, DESC: descending"},
    {"cmbSort(1)", "Then sort by", ""},
    {"cmbSortASCDESC(1)", "Second sort direction", "ASC: ascending, DESC: descending"},
    {"chkSortGroup", "Group by first sort", ""},
    {"chkTotals", "Totals", ""},
    {"chkAverages", "Averages", ""},
    {"chkShowLineCount", "Line count", ""},
    {"cmbOrientation", "Page orientation", ""},
    {"cmbPageSize", "Page size", ""},
    {"chkMultiLine", "Multi-line rows", ""},
    {"chkStartEnd", "Start and end date variables", ""},
    {"cmdEditVariables", "Edit input variables", "The values a report asks for when previewed"},
    {"txtStatement", "Statement saved with this profile", "Read only; what a save would store"},
    {"cmdExport", "Export", "Writes this view as a custom report"},
    {"cmdPreviewReport", "Preview report", ""},
    {"cmdOK", "OK", "Offers to save the profile, writes the views file and closes"},
    {"cmdCancel", "Cancel", "Closes without writing the views file"},
    {"splMain", "Steps and statement divider", ""},
    {"splSides", "Profiles and steps divider", ""},
    {"splBottom", "Bottom panes", ""},
    {"scrContent", "Editor", ""},
};

}  // namespace

void NameForAssistiveTechnology(QWidget* window) {
  for (const Reading& reading : kReadings) {
    for (QWidget* widget : window->findChildren<QWidget*>(reading.object_name)) {
      widget->setAccessibleName(reading.name);
      if (*reading.description) widget->setAccessibleDescription(reading.description);
    }
  }
  // An editable drop-down's text field is read as the drop-down.
  for (QComboBox* box : window->findChildren<QComboBox*>()) {
    if (box->lineEdit() && !box->accessibleName().isEmpty()) {
      box->lineEdit()->setAccessibleName(box->accessibleName());
      box->lineEdit()->setAccessibleDescription(box->accessibleDescription());
    }
  }
}

}  // namespace cvve::gui
