#include "filters/filter_list.h"

#include <limits>
#include <string>
#include <unordered_map>
#include <vector>

#include "base/error.h"
#include "base/text.h"
#include "component/frm_acct_view_edit.h"
#include "ui/prompter.h"

namespace cvve {

namespace {

// The tag's fields, as the list keeps them: InputNum|Label1|Label2|SQL|Group|Defaults.
enum TagField { kInputNum = 0, kLabel1 = 1, kLabel2 = 2, kData1Default = 5, kData2Default = 6 };

const std::string& Field(const std::vector<std::string>& fields, std::size_t n) {
  if (n >= fields.size()) throw Error("Subscript out of range");
  return fields[n];
}

std::int16_t ToInt16(std::string_view text) {
  std::int64_t value = RoundedVal(text);
  if (value < std::numeric_limits<std::int16_t>::min() ||
      value > std::numeric_limits<std::int16_t>::max()) {
    throw Error("Overflow");
  }
  return static_cast<std::int16_t>(value);
}

// The profile's saved filter entries by Index, found as the expression
// "FilterChecks/Filter[Index='key']" finds them (the first in document order),
// built once so a list of hundreds of filters does not run hundreds of queries.
class SavedFilters {
 public:
  explicit SavedFilters(XmlNode profile) {
    for (XmlNode checks = profile.child("FilterChecks"); checks;
         checks = checks.next_sibling("FilterChecks")) {
      for (XmlNode entry = checks.child("Filter"); entry; entry = entry.next_sibling("Filter")) {
        for (XmlNode index = entry.child("Index"); index; index = index.next_sibling("Index")) {
          by_index_.emplace(NodeText(index), entry);  // the first one stays
        }
      }
    }
  }
  // None for a key with an apostrophe: pasted into the expression it makes
  // the expression invalid, which finds nothing.
  XmlNode Find(const std::string& key) const {
    if (key.find('\'') != std::string::npos) return {};
    auto it = by_index_.find(key);
    return it == by_index_.end() ? XmlNode() : it->second;
  }

 private:
  std::unordered_map<std::string, XmlNode> by_index_;
};

// Looks up a row's saved entry; the views cursor is left on it (none: on the
// record), as callers that note and restore the cursor expect. A record of
// the defaults file (a system profile) is read without moving the cursor
// into that other document.
XmlNode SavedEntry(frmAcctViewEdit& ed, const SavedFilters& saved, XmlNode profile,
                   const std::string& key) {
  DocumentCursor& views = ed.ViewsDoc;
  views.GoToChild("");
  if (!profile) return {};
  const bool in_views = profile.root() == views.Document();
  if (in_views) views.SetCurrentNode(profile);
  XmlNode entry = saved.Find(key);
  if (entry && in_views) views.SetCurrentNode(entry);
  return entry;
}

// Step 6 of LoadFilters for one row; `full` adds the labels and colours that
// ApplyFilterChecks leaves alone. Each step that fails is skipped.
void ApplyRow(frmAcctViewEdit& ed, const SavedFilters& saved, XmlNode profile, int row, bool full) {
  ui::ListView& list = ed.lstFilters;
  XmlNode entry;
  ResumeNext([&] { entry = SavedEntry(ed, saved, profile, list.Item(row).key); });
  std::vector<std::string> fields;
  ResumeNext([&] { fields = Split(list.Item(row).tag, '|'); });

  const std::string value = ChildText(entry, "Value");
  if (value == "False") {
    ResumeNext([&] { list.SetChecked(row, false); });
  } else if (value == "True") {
    ResumeNext([&] { list.SetChecked(row, true); });
  }

  const std::string input_num = fields.empty() ? std::string() : fields[kInputNum];
  const bool takes_values = input_num == "1" || input_num == "2";
  for (int column = 1; column <= list.ColumnCount(); ++column) {
    const std::string& key = list.Column(column).key;
    const int sub_item = column - 1;
    if (full) {
      if (takes_values) {
        if (key == "Param1") {
          ResumeNext([&] { list.SetSubItem(row, sub_item, Field(fields, kLabel1)); });
        }
        if (key == "Param2") {
          ResumeNext([&] { list.SetSubItem(row, sub_item, Field(fields, kLabel2)); });
        }
        if (key == "Data1") {
          ResumeNext([&] {
            SetFilterRowColor(ed, row, ToInt16(input_num),
                              static_cast<std::int32_t>(kEditableCellColor));
          });
        }
      } else {
        ResumeNext([&] { SetFilterRowColor(ed, row, ToInt16(input_num), 0); });
      }
    }
    // Saved value first, else the definition's default, else what the cell holds.
    auto fill = [&](const char* element, std::size_t default_field) {
      ResumeNext([&] {
        const std::string saved_value = ChildText(entry, element);
        if (!saved_value.empty()) {
          list.SetSubItem(row, sub_item, saved_value);
        } else if (fields.size() > default_field) {
          list.SetSubItem(row, sub_item, fields[default_field]);
        }
      });
    };
    if (key == "Data1") fill("Data1", kData1Default);
    if (key == "Data2") fill("Data2", kData2Default);
  }
}

}  // namespace

void SetupFilterColumns(frmAcctViewEdit& ed) {
  ui::ListView& list = ed.lstFilters;
  list.ClearColumns();
  list.AddColumn({"", "Filter", ui::Alignment::kLeft, 3000});
  list.AddColumn({"Param1", "", ui::Alignment::kLeft, 1440});
  list.AddColumn({"Data1", "", ui::Alignment::kCenter, 1570});
  list.AddColumn({"Param2", "", ui::Alignment::kCenter, 1440});
  list.AddColumn({"Data2", "", ui::Alignment::kCenter, 1570});
}

void LoadFilters(frmAcctViewEdit& ed) {
  ui::ListView& list = ed.lstFilters;
  ResumeNext([&] { list.SetVisible(false); });
  ResumeNext([&] { list.ClearItems(); });

  const std::string data_set = ed.cmbDataSet.Text();
  const std::string data_set_path = "DataSets/DataSet[Name='" + data_set + "']";
  XmlNode data_set_node = SelectSingleNode(ed.SetupDoc.Root(), data_set_path);
  std::vector<XmlNode> filters = SelectNodes(data_set_node, "Filters/Filter");

  if (filters.empty()) {
    // Only a data set that exists but lacks its Filters element is reported;
    // an unknown (or not yet chosen) data set just gives an empty list.
    if (data_set_node && !SelectSingleNode(data_set_node, "Filters") && !ed.FilterErrorShown) {
      ResumeNext([&] {
        ed.Prompt().MsgBox("Error encountered while loading '" + data_set + "' filter:" + kCrLf +
                               kCrLf + "You may need to reinstall viewsetup.xml",
                           ui::Buttons::kOk, ui::Icon::kCritical, "Error");
      });
      ed.FilterErrorShown = true;
    }
  } else {
    int row = 0;
    for (XmlNode filter : filters) {
      ++row;
      ResumeNext([&] { list.AddItem(row, ChildText(filter, "Name")); });
      ResumeNext([&] { list.SetKey(row, ChildText(filter, "Index")); });
      ResumeNext([&] {
        list.SetTag(row, ChildText(filter, "InputNum") + "|" + ChildText(filter, "Label1") + "|" +
                             ChildText(filter, "Label2") + "|" + ChildText(filter, "SQL") + "|" +
                             ChildText(filter, "Group") + "|" + ChildText(filter, "Defaults"));
      });
    }
  }

  const auto size = static_cast<std::size_t>(list.ItemCount()) + 1;
  ed.FilterRowColor.resize(size);
  ed.FilterRowInputCount.resize(size);

  const XmlNode profile = ed.CurrentProfileNode();
  const SavedFilters saved(profile);
  for (int row = 1; row <= list.ItemCount(); ++row) ApplyRow(ed, saved, profile, row, true);

  ResumeNext([&] { list.SetVisible(true); });
}

void ApplyFilterChecks(frmAcctViewEdit& ed) {
  const XmlNode profile = ed.CurrentProfileNode();
  if (!profile) return;
  const SavedFilters saved(profile);
  for (int row = 1; row <= ed.lstFilters.ItemCount(); ++row) {
    ApplyRow(ed, saved, profile, row, false);
  }
}

void SetFilterRowColor(frmAcctViewEdit& ed, int row, std::int16_t input_count, std::int32_t color) {
  if (row < 1 || static_cast<std::size_t>(row) > ed.FilterRowColor.size() ||
      static_cast<std::size_t>(row) > ed.FilterRowInputCount.size()) {
    throw Error("Subscript out of range");
  }
  ed.FilterRowColor[static_cast<std::size_t>(row - 1)] = color;
  ed.FilterRowInputCount[static_cast<std::size_t>(row - 1)] = input_count;
  ed.lstFilters.Refresh();
}

void lstFilters_ItemCheck(frmAcctViewEdit& ed, int row) {
  ed.ProfileChanged = true;
  ed.lstFilters.SetSelectedItem(row);
}

std::optional<std::uint32_t> FilterCellColor(const frmAcctViewEdit& ed, int row, int sub_item) {
  if (row < 0 || static_cast<std::size_t>(row) >= ed.FilterRowColor.size() ||
      static_cast<std::size_t>(row) >= ed.FilterRowInputCount.size()) {
    return std::nullopt;
  }
  const auto color = static_cast<std::uint32_t>(ed.FilterRowColor[static_cast<std::size_t>(row)]);
  const std::int16_t inputs = ed.FilterRowInputCount[static_cast<std::size_t>(row)];
  if (sub_item == 2 && color != 0) return color;
  if (sub_item == 4 && color != 0 && inputs == 2) return color;
  return std::nullopt;
}

}  // namespace cvve
