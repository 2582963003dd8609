#pragma once
// The four statements of profile after profile, as loading each one
// (LoadProfile) and then building its statements (BuildProfileStatements)
// gives them, with the same messages in the same order, for `viewedit sql`.
//
// A plain profile is read straight from its record into the statements'
// inputs, without filling the controls: its record is found by name, its data
// set is offered and defined with its filter rows already kept, it uses the
// easy filter, its stored check box values are ones the boxes take, and what
// the controls hold before it cannot make its load show a message. Any other
// profile goes through LoadProfile, after the controls were brought to where
// the plain profiles before it would have left them.
#include <string>
#include <vector>

#include "query/sql_builder.h"
#include "ui/list_view.h"
#include "viewfiles/document_cursor.h"

namespace cvve {

class frmAcctViewEdit;

class StatementBatch {
 public:
  // On an editor that has loaded its files.
  explicit StatementBatch(frmAcctViewEdit& ed) : ed_(ed) {}
  StatementBatch(const StatementBatch&) = delete;
  StatementBatch& operator=(const StatementBatch&) = delete;

  struct Result {
    std::string data_set;  // cmbDataSet's text after the load
    ProfileStatements statements;
    bool loaded = false;  // went through LoadProfile
  };
  // Loads the profile and builds its statements. The controls are left as
  // they were when the profile was read from its record (see SyncControls).
  Result Next(const std::string& name);
  // Brings the controls to where loading every profile so far would have
  // left them, without showing the messages of doing so again.
  void SyncControls();

 private:
  // What the controls would hold now that a load may show a message about.
  struct Standing {
    std::string data_set;
    bool advanced = false;
    int filter_rows = 0;
    int view_type = -1;  // cmbAcctViewType's list index
  };
  Standing Now() const;
  // Fills in_ from the record when the profile is plain.
  bool ReadPlain(const std::string& name);

  frmAcctViewEdit& ed_;
  bool behind_ = false;     // the controls lag behind the last profile
  std::string last_plain_;  // ... which was read from its record
  Standing standing_;       // where that profile left the controls
  RecordValues base_values_, custom_values_;
  std::vector<std::string> used_;
  std::vector<ui::ListItem> checked_;
  std::string data_set_sql_;
  ColumnMemo columns_;
  StatementInputs in_;
};

}  // namespace cvve
