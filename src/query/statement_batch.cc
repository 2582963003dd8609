#include "query/statement_batch.h"

#include <cmath>
#include <optional>

#include "base/error.h"
#include "base/text.h"
#include "component/frm_acct_view_edit.h"
#include "filters/filter_list.h"
#include "profiles/profile_loader.h"
#include "profiles/views_tree.h"
#include "query/quiet_prompts.h"
#include "viewfiles/profile_record.h"
#include "viewfiles/setup_file.h"

namespace cvve {

namespace {

// The loader's whole-number conversion of a stored number.
int StoredInt(const std::string& text) { return static_cast<int>(RoundedVal(text)); }

bool CheckBoxTakes(const std::string& text) {
  if (text == "0" || text == "1") return true;
  const int value = StoredInt(text);
  return value == 0 || value == 1;
}

bool HasApostrophe(const std::string& text) { return text.find('\'') != std::string::npos; }

// A pick-only list's text after SetListIndex(0) and SetText(wanted): the
// wanted text when listed, else the first entry, else none.
const std::string& Picked(const std::vector<std::string>& entries, const std::string& wanted) {
  static const std::string kNone;
  for (const std::string& entry : entries) {
    if (entry == wanted) return entry;
  }
  return entries.empty() ? kNone : entries.front();
}

}  // namespace

StatementBatch::Standing StatementBatch::Now() const {
  if (behind_) return standing_;
  return {ed_.cmbDataSet.Text(), ed_.optFilter.Value(1), ed_.lstFilters.ItemCount(),
          ed_.cmbAcctViewType.ListIndex()};
}

bool StatementBatch::ReadPlain(const std::string& name) {
  if (ed_.InReportMode() || HasApostrophe(name)) return false;
  const Standing now = Now();
  // Clearing the controls fills an empty filter list again, which may show
  // the data set's missing filters; a user profile runs the advanced
  // option's click when it is set, which asks for the (cleared) columns.
  if (now.filter_rows == 0 && !FilterFillIsQuiet(ed_, now.data_set)) return false;
  const int kind = ProfileKind(ed_, name);
  if (kind < 0 || kind > 2 || (kind == 2 && now.advanced)) return false;

  const XmlNode base = kind == 2 ? ed_.ProfilesIn(ed_.ViewsDoc).Find(ed_.ViewsDoc, name)
                                 : ed_.ProfilesIn(ed_.DefaultsDoc).Find(ed_.DefaultsDoc, name);
  const XmlNode custom =
      kind == 1 ? ed_.ProfilesIn(ed_.ViewsDoc).Find(ed_.ViewsDoc, name) : base;
  if (!base || !custom) return false;
  RecordValues& base_values = base == custom ? custom_values_ : base_values_;
  auto base_value = [&](const char* element) { return base_values.Get(base, element); };
  auto custom_value = [&](const char* element) { return custom_values_.Get(custom, element); };

  // The data set must be offered, defined, and its rows kept without a
  // message; the load chooses no data set first, which has rows of its own.
  const std::string data_set = base_value("DataSet");
  if (data_set.empty() || HasApostrophe(data_set) || ed_.cmbDataSet.FindText(data_set) < 0 ||
      !FindDataSet(ed_, data_set) || !FilterFillIsQuiet(ed_, data_set) ||
      !FilterFillIsQuiet(ed_, "")) {
    return false;
  }
  const FilterRowTemplates::Template* rows = ed_.FilterTemplates().Find(ed_.SetupDoc, data_set);

  // A check box keeps its old value when the stored one is refused.
  for (const char* element : {"DoGrouping", "DoAverages", "DoTotals", "DoLineCount",
                              "PageMultiLine"}) {
    if (!CheckBoxTakes(custom_value(element))) return false;
  }
  // A view type that is not listed leaves the one chosen before.
  const long view_type = static_cast<long>(RoundedVal(base_value("AcctViewType")));
  int view_type_index = now.view_type;
  for (int i = 0; i < ed_.cmbAcctViewType.ListCount(); ++i) {
    if (ed_.cmbAcctViewType.ItemData(i) == view_type) {
      view_type_index = i;
      break;
    }
  }
  const std::optional<double> filter_type = StrictNumber(base_value("FilterType"));
  if (!filter_type || std::nearbyint(*filter_type) != 0) return false;

  // The filter entries are read from the profile the load makes current,
  // which is the customising record where there is one.
  UsedColumnNames(custom_values_.Element(custom, "Columns"), used_);
  CheckedFilterRows(*rows, ed_.lstFilters.Columns(), custom_values_.Element(custom, "FilterChecks"),
                    checked_);
  data_set_sql_ = base_value("SQL");
  in_.ed = &ed_;
  in_.data_set = data_set;
  in_.used_columns = &used_;
  in_.filter_columns = &ed_.lstFilters.Columns();
  in_.filter_rows = &checked_;
  in_.advanced = false;
  in_.data_set_sql = &data_set_sql_;
  in_.sort[0] = Picked(used_, custom_value("SortBy"));
  in_.sort[1] = Picked(used_, custom_value("SortBy2"));
  for (std::size_t i = 0; i < 2; ++i) {
    const std::string stored = custom_value(i == 0 ? "SortASCDESC" : "SortASCDESC2");
    in_.direction[i] = Picked(frmAcctViewEdit::SortDirections(), stored);
  }
  const std::string grouping = custom_value("DoGrouping");
  in_.group = grouping == "1" || (grouping != "0" && StoredInt(grouping) == 1);
  in_.columns = &columns_;

  last_plain_ = name;
  standing_ = {data_set, false, static_cast<int>(rows->rows.size()), view_type_index};
  return true;
}

StatementBatch::Result StatementBatch::Next(const std::string& name) {
  Result result;
  if (ReadPlain(name)) {
    behind_ = true;
    ed_.ProfileChanged = false;  // as a load that runs to its end
    result.data_set = in_.data_set;
    result.statements = BuildProfileStatements(in_);
    return result;
  }
  SyncControls();
  LoadProfile(ed_, name);
  result.loaded = true;
  result.data_set = ed_.cmbDataSet.Text();
  result.statements = BuildProfileStatements(ed_);
  return result;
}

void StatementBatch::SyncControls() {
  if (!behind_) return;
  behind_ = false;
  // A plain profile's load ends the same whatever the controls held before
  // it (its messages could differ, and they were given already) ...
  QuietPrompts quiet(ed_);
  LoadProfile(ed_, last_plain_);
  // ... except the view type it leaves as it found it when not listed.
  if (ed_.cmbAcctViewType.ListIndex() != standing_.view_type) {
    ResumeNext([&] { ed_.cmbAcctViewType.SetListIndex(standing_.view_type); });
    ed_.ProfileChanged = false;
  }
}

}  // namespace cvve
