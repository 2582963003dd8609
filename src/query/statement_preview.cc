#include "query/statement_preview.h"

#include <exception>
#include <functional>
#include <vector>

#include "base/error.h"
#include "component/frm_acct_view_edit.h"
#include "profiles/views_tree.h"
#include "query/quiet_prompts.h"
#include "query/sql_builder.h"

namespace cvve {

namespace {

std::string Line(const std::string& label, const std::function<std::string()>& build) {
  try {
    std::string value = build();
    return label + ": " + (value.empty() ? "(empty)" : value) + "\n";
  } catch (const std::exception& e) {
    return label + ": cannot be built: " + Describe(e) + "\n";
  }
}

}  // namespace

std::string StoredStatementPreview(frmAcctViewEdit& ed) {
  if (!ed.CurrentProfileNode()) return "No profile is selected.\n";
  QuietPrompts quiet(ed);
  int kind = -1;
  ResumeNext([&] { kind = ProfileKind(ed, ed.CurrentProfileName); });

  std::string text;
  // Reports and user profiles store their own statement; only a system
  // profile (kind 0 or 1) keeps the defaults file's.
  if (kind != 0 && kind != 1) {
    if (ed.optFilter.Value(0)) {
      text += "Saving stores the easy filter's lists:\n";
      text += Line("SQLFieldList", [&] { return BuildFieldList(ed); });
      text += Line("SQLWhereList", [&] { return BuildWhereList(ed); });
      text += "SQL: (empty)\n";
    } else {
      text += "Saving stores the advanced filter's statement:\n";
      text += Line("SQL", [&] { return BuildViewSQL(ed, false); });
    }
  } else {
    text +=
        "System profile: saving keeps the data set, filter and statement of the "
        "defaults file.\n";
    text += Line("View statement", [&] { return BuildViewSQL(ed, false); });
  }
  std::vector<std::string> notes;
  for (const ui::ShownPrompt& shown : quiet.Shown()) {
    bool repeated = false;
    for (const std::string& note : notes) repeated = repeated || note == shown.text;
    if (!repeated) notes.push_back(shown.text);
  }
  for (const std::string& note : notes) text += "Note: " + note + "\n";
  return text;
}

}  // namespace cvve
