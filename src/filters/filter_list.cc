#include "filters/filter_list.h"

#include <algorithm>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

#include "base/error.h"
#include "base/text.h"
#include "component/frm_acct_view_edit.h"
#include "ui/prompter.h"
#include "viewfiles/setup_file.h"

namespace cvve {

namespace {

// The tag's fields, as the list keeps them: InputNum|Label1|Label2|SQL|Group|Defaults.
enum TagField { kInputNum = 0, kLabel1 = 1, kLabel2 = 2, kData1Default = 5, kData2Default = 6 };

const std::string& Field(const std::vector<std::string>& fields, std::size_t n) {
  if (n >= fields.size()) throw Error("Subscript out of range");
  return fields[n];
}

// Field `n` of a row's tag, as Split(tag, '|')[n] gives it; none when the
// tag has fewer fields.
std::optional<std::string_view> TagField(std::string_view tag, std::size_t n) {
  std::size_t start = 0;
  for (; n > 0; --n) {
    const std::size_t bar = tag.find('|', start);
    if (bar == std::string_view::npos) return std::nullopt;
    start = bar + 1;
  }
  return tag.substr(start, tag.find('|', start) - start);
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
  explicit SavedFilters(XmlNode profile) : SavedFilters(kFrom, profile.child("FilterChecks")) {}
  // From the record's first FilterChecks element on: a node of another kind
  // with that name before it holds no entries.
  struct FromChecks {};
  static constexpr FromChecks kFrom{};
  SavedFilters(FromChecks, XmlNode first_checks) {
    std::size_t position = 0;
    by_index_.reserve(kLinear / 2);
    for (XmlNode checks = first_checks; checks;
         checks = checks.next_sibling("FilterChecks")) {
      for (XmlNode entry = checks.child("Filter"); entry; entry = entry.next_sibling("Filter")) {
        for (XmlNode index = entry.child("Index"); index; index = index.next_sibling("Index")) {
          by_index_.push_back({NodeText(index), position++, entry});
        }
      }
    }
    // By key, and within a key in document order, so that the first is found.
    sorted_ = by_index_.size() > kLinear;
    if (sorted_) {
      std::sort(by_index_.begin(), by_index_.end(), [](const Saved& a, const Saved& b) {
        return a.key != b.key ? a.key < b.key : a.position < b.position;
      });
    }
  }
  // None for a key with an apostrophe: pasted into the expression it makes
  // the expression invalid, which finds nothing.
  XmlNode Find(const std::string& key) const {
    if (by_index_.empty() || key.find('\'') != std::string::npos) return {};
    if (!sorted_) {
      for (const Saved& saved : by_index_) {
        if (saved.key == key) return saved.entry;
      }
      return {};
    }
    const auto it = std::lower_bound(by_index_.begin(), by_index_.end(), key,
                                     [](const Saved& a, const std::string& k) { return a.key < k; });
    return it != by_index_.end() && it->key == key ? it->entry : XmlNode();
  }

 private:
  // A profile saves a handful of entries, read in document order, or one for
  // each of hundreds of rows, sorted; neither allocates a node per entry.
  static constexpr std::size_t kLinear = 16;
  struct Saved {
    std::string key;
    std::size_t position;
    XmlNode entry;
  };
  std::vector<Saved> by_index_;
  bool sorted_ = false;
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

// The check a saved entry stores: "True" or "False"; anything else leaves
// the row's check alone.
std::optional<bool> SavedCheck(XmlNode entry) {
  const std::string value = ChildText(entry, "Value");
  if (value == "False") return false;
  if (value == "True") return true;
  return std::nullopt;
}

// The saved entry's element for a filter list column: Data1 and Data2 only.
const char* SavedDataElement(const std::string& column_key) {
  return column_key == "Data1" ? "Data1" : column_key == "Data2" ? "Data2" : nullptr;
}

// A row's saved entry, found as SavedEntry finds it, and the check it stores.
XmlNode ApplySavedCheck(frmAcctViewEdit& ed, const SavedFilters& saved, XmlNode profile, int row) {
  ui::ListView& list = ed.lstFilters;
  XmlNode entry;
  ResumeNext([&] { entry = SavedEntry(ed, saved, profile, list.Item(row).key); });
  if (const std::optional<bool> check = SavedCheck(entry)) {
    ResumeNext([&] { list.SetChecked(row, *check); });
  }
  return entry;
}

// Step 6 of LoadFilters for one row, each step that fails skipped: the
// check, the labels, the cell colours, the Data values.
void ApplyRow(frmAcctViewEdit& ed, const SavedFilters& saved, XmlNode profile, int row) {
  ui::ListView& list = ed.lstFilters;
  const XmlNode entry = ApplySavedCheck(ed, saved, profile, row);
  std::vector<std::string> fields;
  ResumeNext([&] { fields = Split(list.Item(row).tag, '|'); });

  const std::string input_num = fields.empty() ? std::string() : fields[kInputNum];
  const bool takes_values = input_num == "1" || input_num == "2";
  for (int column = 1; column <= list.ColumnCount(); ++column) {
    const std::string& key = list.Column(column).key;
    const int sub_item = column - 1;
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

// ApplyRow on a row as the data set's template left it (labels,
// colours and defaults in place): what is left is the saved entry's part,
// the check and the saved Data values, which win over the defaults.
void ApplyEntry(frmAcctViewEdit& ed, const SavedFilters& saved, XmlNode profile, int row) {
  ui::ListView& list = ed.lstFilters;
  const XmlNode entry = ApplySavedCheck(ed, saved, profile, row);
  if (!entry) return;
  for (int column = 1; column <= list.ColumnCount(); ++column) {
    const char* element = SavedDataElement(list.Column(column).key);
    if (!element) continue;
    std::string saved_value = ChildText(entry, element);
    if (saved_value.empty()) continue;
    ResumeNext([&] { list.SetSubItem(row, column - 1, std::move(saved_value)); });
  }
}

// Steps 1 to 5 of LoadFilters for a data set not seen yet: the rows from its
// definitions, then ApplyRow without a profile. What the list then holds is
// kept as the data set's template.
FilterRowTemplates::Template FillFromDefinitions(frmAcctViewEdit& ed,
                                                 const std::string& data_set) {
  ui::ListView& list = ed.lstFilters;
  FilterRowTemplates::Template t;
  t.data_set = FindDataSet(ed, data_set);
  t.has_filters = static_cast<bool>(SelectSingleNode(t.data_set, "Filters"));
  int row = 0;
  for (XmlNode filter : SelectNodes(t.data_set, "Filters/Filter")) {
    ++row;
    ResumeNext([&] { list.AddItem(row, ChildText(filter, "Name")); });
    ResumeNext([&] { list.SetKey(row, ChildText(filter, "Index")); });
    ResumeNext([&] {
      list.SetTag(row, ChildText(filter, "InputNum") + "|" + ChildText(filter, "Label1") + "|" +
                           ChildText(filter, "Label2") + "|" + ChildText(filter, "SQL") + "|" +
                           ChildText(filter, "Group") + "|" + ChildText(filter, "Defaults"));
    });
  }
  const int rows = list.ItemCount();
  const auto size = static_cast<std::size_t>(rows) + 1;
  ed.FilterRowColor.resize(size);
  ed.FilterRowInputCount.resize(size);
  // A colour no row is given marks the rows whose colour step failed.
  constexpr std::int32_t kUnset = std::numeric_limits<std::int32_t>::min();
  const std::vector<std::int32_t> colors_before = ed.FilterRowColor;
  const std::vector<std::int16_t> inputs_before = ed.FilterRowInputCount;
  std::fill_n(ed.FilterRowColor.begin(), rows, kUnset);
  const SavedFilters none{XmlNode()};
  for (int r = 1; r <= rows; ++r) ApplyRow(ed, none, XmlNode(), r);

  t.rows = list.Items();
  for (int r = 0; r < rows; ++r) {
    const auto i = static_cast<std::size_t>(r);
    if (ed.FilterRowColor[i] == kUnset) {
      ed.FilterRowColor[i] = colors_before[i];
      ed.FilterRowInputCount[i] = inputs_before[i];
      t.colors.emplace_back();
    } else {
      t.colors.emplace_back(std::pair(ed.FilterRowColor[i], ed.FilterRowInputCount[i]));
    }
  }
  return t;
}

// LoadFilters' one message: a data set that exists but lacks its Filters element.
bool ShowsMissingFilters(const frmAcctViewEdit& ed, const FilterRowTemplates::Template& t) {
  return t.rows.empty() && t.data_set && !t.has_filters && !ed.FilterErrorShown;
}

}  // namespace

void FilterRowTemplates::Follow(const DocumentCursor& setup) {
  if (setup_.Moved(setup)) by_data_set_.clear();
}

const FilterRowTemplates::Template* FilterRowTemplates::Find(const DocumentCursor& setup,
                                                             const std::string& data_set) {
  Follow(setup);
  const auto it = by_data_set_.find(data_set);
  return it == by_data_set_.end() ? nullptr : &it->second;
}

FilterRowTemplates::Template& FilterRowTemplates::Store(const DocumentCursor& setup,
                                                        const std::string& data_set, Template t) {
  Follow(setup);
  return by_data_set_.insert_or_assign(data_set, std::move(t)).first->second;
}

void SetupFilterColumns(frmAcctViewEdit& ed) {
  ui::ListView& list = ed.lstFilters;
  ed.FilterTemplates().Clear();  // rows are laid out by column
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
  const std::string data_set = ed.cmbDataSet.Text();
  FilterRowTemplates& templates = ed.FilterTemplates();
  const FilterRowTemplates::Template* t = templates.Find(ed.SetupDoc, data_set);
  // Emptied and filled again: with a template, in one step.
  if (!t) ResumeNext([&] { list.ClearItems(); });
  if (t) {
    ResumeNext([&] { list.SetItems(t->rows); });
    const auto size = static_cast<std::size_t>(list.ItemCount()) + 1;
    ed.FilterRowColor.resize(size);
    ed.FilterRowInputCount.resize(size);
    for (std::size_t i = 0; i < t->colors.size() && i + 1 < size; ++i) {
      if (!t->colors[i]) continue;
      ed.FilterRowColor[i] = t->colors[i]->first;
      ed.FilterRowInputCount[i] = t->colors[i]->second;
    }
    list.Refresh();
  } else {
    t = &templates.Store(ed.SetupDoc, data_set, FillFromDefinitions(ed, data_set));
  }

  // Only a data set that exists but lacks its Filters element is reported;
  // an unknown (or not yet chosen) data set just gives an empty list.
  if (ShowsMissingFilters(ed, *t)) {
    ResumeNext([&] {
      ed.Prompt().MsgBox("Error encountered while loading '" + data_set + "' filter:" + kCrLf +
                             kCrLf + "You may need to reinstall viewsetup.xml",
                         ui::Buttons::kOk, ui::Icon::kCritical, "Error");
    });
    ed.FilterErrorShown = true;
  }

  const XmlNode profile = ed.CurrentProfileNode();
  const SavedFilters saved(profile);
  for (int row = 1; row <= list.ItemCount(); ++row) ApplyEntry(ed, saved, profile, row);

  ResumeNext([&] { list.SetVisible(true); });
}

bool FilterFillIsQuiet(frmAcctViewEdit& ed) { return FilterFillIsQuiet(ed, ed.cmbDataSet.Text()); }

bool FilterFillIsQuiet(frmAcctViewEdit& ed, const std::string& data_set) {
  const FilterRowTemplates::Template* t = ed.FilterTemplates().Find(ed.SetupDoc, data_set);
  return t && !ShowsMissingFilters(ed, *t);
}

void CheckedFilterRows(const FilterRowTemplates::Template& t,
                       const std::vector<ui::ListColumn>& columns, XmlNode checks,
                       std::vector<ui::ListItem>& out) {
  const SavedFilters saved(SavedFilters::kFrom, checks);
  // The list gives every row a sub-item per further column.
  const std::size_t sub_items = columns.empty() ? 0 : columns.size() - 1;
  std::size_t count = 0;
  for (const ui::ListItem& row : t.rows) {
    const XmlNode entry = saved.Find(row.key);
    if (!(entry ? SavedCheck(entry).value_or(row.checked) : row.checked)) continue;
    if (out.size() == count) out.emplace_back();
    ui::ListItem& item = out[count++];
    item.text = row.text;
    item.key = row.key;
    item.tag = row.tag;
    item.checked = true;
    item.sub_items = row.sub_items;
    item.sub_items.resize(sub_items);
    if (!entry) continue;
    for (std::size_t column = 1; column <= columns.size(); ++column) {
      const char* element = SavedDataElement(columns[column - 1].key);
      if (!element) continue;
      std::string value = ChildText(entry, element);
      if (value.empty()) continue;
      // What SetSubItem takes; a sub-item past the row's is skipped as it fails there.
      if (column == 1) {
        item.text = std::move(value);
      } else if (column - 1 <= item.sub_items.size()) {
        item.sub_items[column - 2] = std::move(value);
      }
    }
  }
  out.resize(count);
}

void ApplyFilterChecks(frmAcctViewEdit& ed) {
  const XmlNode profile = ed.CurrentProfileNode();
  if (!profile) return;
  const SavedFilters saved(profile);
  ui::ListView& list = ed.lstFilters;
  for (int row = 1; row <= list.ItemCount(); ++row) {
    const XmlNode entry = ApplySavedCheck(ed, saved, profile, row);
    for (int column = 1; column <= list.ColumnCount(); ++column) {
      const std::string& key = list.Column(column).key;
      const bool first = key == "Data1";
      if (!first && key != "Data2") continue;
      // Saved value first, else the definition's default, else what the cell holds.
      ResumeNext([&] {
        std::string text = ChildText(entry, first ? "Data1" : "Data2");
        if (text.empty()) {
          const std::optional<std::string_view> field =
              TagField(list.Item(row).tag, first ? kData1Default : kData2Default);
          if (!field) return;
          text = *field;
        }
        list.SetSubItem(row, column - 1, std::move(text));
      });
    }
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
