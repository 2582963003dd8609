#include "reports/export_preview.h"

#include <filesystem>
#include <memory>
#include <string>

#include "base/error.h"
#include "base/text.h"
#include "component/frm_acct_view_edit.h"
#include "filesafety/guarded_writes.h"
#include "host/host_services.h"
#include "profiles/profile_saver.h"
#include "reports/report_engine.h"
#include "reports/report_file_writer.h"
#include "ui/form.h"
#include "ui/prompter.h"

namespace cvve {

void cmdExport_Click(frmAcctViewEdit& ed) {
  if (ed.Prompt().MsgBox("Would you like to export this View to a custom report?",
                         ui::Buttons::kYesNo, ui::Icon::kQuestion, "Export") != ui::Answer::kYes) {
    return;
  }
  // The view's name becomes a file name: it must stay inside the folder.
  const std::string name = ed.txtCurrProf.Text();
  if (!CheckReportName(ed, name)) return;
  const std::string folder = ed.Host().ReportsBaseFolder() + "/Custom Reports/";
  std::error_code ignored;
  std::filesystem::create_directories(folder,
                                      ignored);  // a view mode user may never have opened it
  // The writer reports its own failure; a report that was not saved is not announced.
  const std::string path = folder + name + ".cvr";
  if (!filesafety::WriteUnderReportsLock(ed, path, [&] { return SaveReportFile(ed, path); })) {
    return;
  }
  ed.Prompt().MsgBox(
      "A report was saved named '" + name +
          "' in the 'Custom Reports' folder in the reports section of your software.",
      ui::Buttons::kOk, ui::Icon::kInformation, "Report Saved");
}

void cmdPreviewReport_Click(frmAcctViewEdit& ed) {
  try {
    if (ed.ProfileChanged) {
      if (ed.Prompt().MsgBox(
              "You must save your changes before previewing.  Would you like to save your "
              "changes?",
              ui::Buttons::kYesNo, ui::Icon::kQuestion, "Save Changes") != ui::Answer::kYes) {
        return;
      }
      // Previewing the old definition after a failed save would mislead.
      if (!SaveProfile(ed)) return;
    }
    ReportEngine* engine = ed.Env().reports;
    if (!engine) return;  // no report engine: nothing to show
    std::unique_ptr<Report> report = engine->CreateReport();
    std::unique_ptr<ReportViewer> viewer = engine->CreateViewer();
    report->Load(ReplaceAll(ed.ViewsPath, ".cvx", ".cvr"));

    frmVariables& variables = ed.Variables();
    if (variables.HasVariables()) {
      variables.InputMode(true);
      ed.Env().dialogs.RunModal(variables);
      for (int slot = 0; slot < kVariableSlots; ++slot) {
        std::string caption, type, name;
        variables.GetVariable(slot, caption, type, name);
        if (name.empty()) continue;
        for (int position = 1; position <= report->VariableCount(); ++position) {
          if (report->VariableName(position) == "$" + name) {
            report->SetVariableValue(position, variables.GetValue(slot));
          }
        }
      }
    }

    std::unique_ptr<ReportResult> result = report->Run();
    if (!result) return;  // a report that yields nothing shows nothing
    const bool has_pages = result->Count() > 0;
    viewer->SetResult(std::move(result));
    if (has_pages) viewer->Show();
  } catch (const std::exception& e) {
    ed.ShowError("Error in cmdPreviewReport_Click: ", e);
  }
}

}  // namespace cvve
