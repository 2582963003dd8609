#include "profiles/profile_commands.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "base/text.h"
#include "fixtures.h"
#include "profiles/profile_saver.h"
#include "profiles/views_tree.h"
#include "viewfiles/profile_record.h"

namespace cvve::testing {
namespace {

namespace fs = std::filesystem;
using ui::Answer;

std::string TagOf(HeadlessEditor& h, const std::string& name) {
  const auto& hits = h->tvwViews.FindText(name);
  return hits.empty() ? "(none)" : h->tvwViews.Node(hits.front()).tag;
}

// The name of the one profile in a report's profile document.
std::string ProfileNameIn(const std::string& cvx) {
  DocumentCursor doc;
  if (!doc.Load(cvx)) return "(unreadable)";
  return ChildText(doc.Root().child("Profiles").child("Profile"), "Name");
}

std::string ReportValue(const std::string& cvr, const char* element) {
  DocumentCursor doc;
  return doc.Load(cvr) ? ChildText(doc.Root(), element) : "(unreadable)";
}

struct Command {
  const char* what;
  void (*click)(frmAcctViewEdit&);
  const char* title;  // of the name's input box
};
const Command kNamingCommands[] = {{"new", cmdNewProfile_Click, "New Profile"},
                                   {"copy", cmdCopyProfile_Click, "Copy Profile"},
                                   {"rename", cmdEditProfile_Click, "Edit Profile Name"}};

TEST(NewProfileTest, SaveQuestionAnswers) {
  const struct {
    Answer answer;
    bool changed_after, asks_for_name, saved;
  } cases[] = {{Answer::kCancel, true, false, false},
               {Answer::kNo, false, true, false},
               {Answer::kYes, false, true, true}};
  for (const auto& c : cases) {
    SCOPED_TRACE(ui::ToString(c.answer));
    HeadlessEditor h;
    OpenFileSet(h, "Mine");
    h->chkShowLineCount.UserClick();
    const Names names_before = ProfileNames(h->ViewsDoc);
    h.prompter.ClearShown();
    h.prompter.QueueAnswer(c.answer);
    h->cmdNewProfile.Click();  // the name is left empty: the command ends there
    const auto& shown = h.prompter.Shown();
    ASSERT_EQ(shown.size(), c.asks_for_name ? 2u : 1u);
    EXPECT_EQ(Box(shown[0]), Box("Save Changes", "YesNoCancel", "question",
                                 "You have made changes to the current profile.  Would you like "
                                 "to save these changes?"));
    if (c.asks_for_name) {
      EXPECT_EQ(shown[1].kind + "|" + shown[1].title + "|" + shown[1].text,
                "inputbox|New Profile|Enter a name for the new profile:");
    }
    EXPECT_EQ(h->ProfileChanged, c.changed_after);
    EXPECT_EQ(ChildText(FindProfileElement(h->ViewsDoc, "Mine"), "DoLineCount"),
              c.saved ? "1" : "");
    EXPECT_EQ(ProfileNames(h->ViewsDoc), names_before);
  }
}

TEST(NewProfileTest, FreshInstallGetsAUserProfileThatCanBeSaved) {
  HeadlessEditor h;
  h.Open("", kDefaults, kSetup);  // no views file yet
  h.prompter.QueueInput("Fresh");
  h->cmdNewProfile.Click();
  EXPECT_EQ(ProfileNames(h->ViewsDoc), Names{"Fresh"});
  EXPECT_EQ(ChildText(FindProfileElement(h->ViewsDoc, "Fresh"), "AcctViewType"), "0");
  EXPECT_EQ(h->txtCurrProf.Text(), "Fresh");
  EXPECT_EQ(TagOf(h, "Fresh"), "2");
  EXPECT_FALSE(h->ProfileChanged);
  h.prompter.ClearShown();
  h->cmdSaveProfile.Click();
  EXPECT_EQ(ChildText(FindProfileElement(h->ViewsDoc, "Fresh"), "DataSet"), "Accounts");
  // A new profile has no columns yet, which the statement builder points out.
  EXPECT_EQ(h.Messages(), Names{"You have not selected any fields/columns."}) << ShownPrompts(h);
}

TEST(ReportNamesTest, RefusedNamesWriteAndRenameNothing) {
  const Names refused = {"../escape",           ".hidden", "..", "sub/dir", std::string(201, 'n'),
                         std::string("a\0b", 3)};
  for (const Command& command : kNamingCommands) {
    for (const std::string& name : refused) {
      SCOPED_TRACE(std::string(command.what) + " " + name);
      HeadlessEditor h;
      OpenSalesReport(h);
      const Names files_before = FilesIn(ReportsFolder(h));
      const std::string path_before = h->ViewsPath;
      h.prompter.ClearShown();
      h.prompter.QueueInput(name);
      command.click(*h);
      ASSERT_EQ(h.Messages().size(), 1u);
      EXPECT_EQ(Box(h.prompter.Shown().back()),
                Box("Invalid Report Name", "OK", "exclamation",
                    "The name '" + name +
                        "' cannot be used for a report.  A report's name is also the name of "
                        "its files in the Custom Reports folder, so it may not contain \"/\", "
                        "may not begin with \".\" and may not be longer than 200 bytes."));
      EXPECT_EQ(FilesIn(ReportsFolder(h)), files_before);
      EXPECT_FALSE(fs::exists(h.dir.Path() / "escape.cvx"));
      EXPECT_EQ(h->ViewsPath, path_before);
      EXPECT_EQ(ProfileNames(h->ViewsDoc), Names{"Sales"});
    }
  }
}

TEST(ReportNamesTest, OverwritingAnotherReportIsAskedFirst) {
  for (const Command& command : kNamingCommands) {
    for (Answer answer : {Answer::kNo, Answer::kYes}) {
      SCOPED_TRACE(std::string(command.what) + " " + ui::ToString(answer));
      HeadlessEditor h;
      OpenReports(h, {{"Sales", ReportDocument("Sales")}, {"Other", ReportDocument("Other")}});
      h.dir.Write("Custom Reports/Other.cvr", "<CustomReport><Name>Other</Name></CustomReport>");
      Select(h, "Sales");
      const std::string other_cvx = h.dir.Read("Custom Reports/Other.cvx");
      const std::string other_cvr = h.dir.Read("Custom Reports/Other.cvr");
      h.prompter.ClearShown();
      h.prompter.QueueInput("Other");
      h.prompter.QueueAnswer(answer);
      command.click(*h);
      ASSERT_GE(h.prompter.Shown().size(), 2u);
      EXPECT_EQ(Box(h.prompter.Shown()[1]),
                Box(command.title, "YesNo", "question",
                    "A report named 'Other' already exists.  Would you like to replace it?"));
      const bool replaced = answer == Answer::kYes;
      EXPECT_EQ(h.dir.Read("Custom Reports/Other.cvx") == other_cvx, !replaced);
      EXPECT_EQ(ProfileNameIn(ReportsFolder(h) + "/Other.cvx"), "Other");
      EXPECT_EQ(h->ViewsPath, ReportsFolder(h) + (replaced ? "/Other.cvx" : "/Sales.cvx"));
      if (!replaced) {
        EXPECT_EQ(h.dir.Read("Custom Reports/Other.cvr"), other_cvr);
        EXPECT_TRUE(fs::exists(ReportsFolder(h) + "/Sales.cvx"));
      }
    }
  }
}

TEST(CopyProfileTest, CustomisedSystemProfileGivesAUserProfileWithTheDefaultsSettings) {
  HeadlessEditor h;
  OpenFileSet(h, "Past Due");
  const std::string defaults_before = h->DefaultsDoc.ToString();
  h.prompter.ClearShown();
  h.prompter.QueueInput("Copy of Past Due");
  h->cmdCopyProfile.Click();
  ASSERT_FALSE(h.prompter.Shown().empty());
  const ui::ShownPrompt& input = h.prompter.Shown()[0];
  EXPECT_EQ(Box(input.title, input.text, input.default_text, ""),
            Box("Copy Profile", "Enter a name for the new profile:", "Copy of Past Due", ""));
  XmlNode copy = FindProfileElement(h->ViewsDoc, "Copy of Past Due");
  ASSERT_TRUE(copy);
  // The defaults record, not the customisation ("Salesman", DoTotals 1).
  EXPECT_EQ(ChildText(copy, "DataSet"), "Accounts");
  EXPECT_EQ(ChildText(copy, "SortBy"), "Balance");
  EXPECT_EQ(ChildText(copy, "DoTotals"), "0");
  EXPECT_EQ(TagOf(h, "Copy of Past Due"), "2");
  EXPECT_EQ(h->txtCurrProf.Text(), "Copy of Past Due");
  EXPECT_EQ(h->lstUsedColumns.Items(), (Names{"Account", "Balance"}));
  EXPECT_EQ(ChildText(FindProfileElement(h->ViewsDoc, "Past Due"), "SortBy"), "Salesman");
  // A deep copy: changing the copy leaves the source alone.
  SetNodeText(copy.child("FilterChecks").child("Filter").child("Name"), "changed");
  EXPECT_EQ(h->DefaultsDoc.ToString(), defaults_before);

  // A profile in neither file.
  const XmlNode current = h->CurrentProfileNode();
  h->txtCurrProf.SetText("Nobody");
  const std::string views_before = h->ViewsDoc.ToString();
  h.prompter.QueueInput("Somebody");
  h->cmdCopyProfile.Click();
  EXPECT_EQ(Box(h.prompter.Shown().back()),
            Box("Error", "OK", "critical", "Error copying profile:  Profile not found."));
  EXPECT_EQ(h->ViewsDoc.ToString(), views_before);
  EXPECT_EQ(h->CurrentProfileNode(), current);
}

TEST(ReportFilePairTest, NewCopyRenameAndDeleteKeepProfileDocumentAndDefinitionInStep) {
  HeadlessEditor h;
  OpenSalesReport(h);
  const std::string folder = ReportsFolder(h) + "/";
  h.prompter.QueueInput("Weekly");
  h->cmdNewProfile.Click();  // a profile document only, loaded
  EXPECT_EQ(h->ViewsPath, folder + "Weekly.cvx");
  EXPECT_EQ(ProfileNameIn(folder + "Weekly.cvx"), "Weekly");
  EXPECT_EQ(ProfileNames(h->ViewsDoc), Names{"Weekly"});
  EXPECT_EQ(TagOf(h, "Weekly"), folder + "Weekly.cvx");

  Select(h, "Sales");
  h->chkTotals.SetValue(1);
  h.prompter.QueueInput("Sales Copy");
  h->cmdCopyProfile.Click();  // saves first, then copies the pair
  EXPECT_EQ(FilesIn(folder), (Names{".reports.lock", "Sales Copy.cvr", "Sales Copy.cvx", "Sales.cvr",
                                    "Sales.cvx", "Sales.cvx.bak", "Weekly.cvx"}));
  EXPECT_EQ(ProfileNameIn(folder + "Sales.cvx"), "Sales");
  EXPECT_EQ(ReportValue(folder + "Sales.cvr", "Name"), "Sales");
  EXPECT_EQ(ProfileNameIn(folder + "Sales Copy.cvx"), "Sales Copy");
  EXPECT_EQ(ReportValue(folder + "Sales Copy.cvr", "Name"), "Sales Copy");
  EXPECT_EQ(ReportValue(folder + "Sales Copy.cvr", "Totals"), "1");
  EXPECT_EQ(h->ViewsPath, folder + "Sales Copy.cvx");
  EXPECT_EQ(h->txtCurrProf.Text(), "Sales Copy");
  EXPECT_TRUE(h.Messages().empty()) << ShownPrompts(h);

  h->chkAverages.UserClick();
  h.prompter.QueueAnswer(Answer::kYes);  // save first
  h.prompter.QueueInput("Renamed");
  h->cmdEditProfile.Click();                              // moves the pair
  EXPECT_EQ(h.Messages().size(), 1u) << ShownPrompts(h);  // only the save question
  EXPECT_FALSE(fs::exists(folder + "Sales Copy.cvx") || fs::exists(folder + "Sales Copy.cvr"));
  EXPECT_EQ(ProfileNameIn(folder + "Renamed.cvx"), "Renamed");
  EXPECT_EQ(ReportValue(folder + "Renamed.cvr", "Name"), "Renamed");
  EXPECT_EQ(ReportValue(folder + "Renamed.cvr", "Averages"), "1");
  EXPECT_EQ(h->ViewsPath, folder + "Renamed.cvx");
  EXPECT_EQ(TagOf(h, "Sales Copy"), "(none)");
  EXPECT_EQ(TagOf(h, "Renamed"), folder + "Renamed.cvx");

  h->chkTotals.UserClick();
  h.prompter.ClearShown();
  h.prompter.QueueAnswer(Answer::kYes);
  h->cmdDeleteProfile.Click();  // no system-profile notice for a report
  ASSERT_EQ(h.Messages().size(), 1u);
  for (const char* gone : {"Renamed.cvx", "Renamed.cvr"}) EXPECT_FALSE(fs::exists(folder + gone));
  EXPECT_TRUE(fs::exists(folder + "Sales.cvr") && fs::exists(folder + "Weekly.cvx"));
  EXPECT_FALSE(h->ProfileChanged);
  EXPECT_EQ(TagOf(h, "Renamed"), "(none)");
}

TEST(RenameProfileTest, EveryRecordOfTheNameIsRenamed) {
  // Only a report escapes the system-profile rule with two records of one
  // name: in a views file the second one marks the name as customised.
  HeadlessEditor h;
  OpenReports(h, {{"Sales", ViewsFile({{"Sales",
                                        "<DataSet>Accounts</DataSet><Columns><Column>"
                                        "<Name>Account</Name></Column></Columns>"},
                                       {"Other", ""},
                                       {"Sales", ""}})}});
  Select(h, "Sales");
  h->chkTotals.UserClick();
  h.prompter.ClearShown();
  h.prompter.QueueAnswer(Answer::kNo);  // do not save first
  h.prompter.QueueInput("Ours");
  h->cmdEditProfile.Click();
  const auto& shown = h.prompter.Shown();
  ASSERT_EQ(shown.size(), 2u) << ShownPrompts(h);
  EXPECT_EQ(Box(shown[0]), Box("Save Changes", "YesNo", "question",
                               "You have unsved changes, would you like to save these changes "
                               "before proceeding?"));
  EXPECT_EQ(shown[1].text, "Enter a new name for the profile:");
  DocumentCursor renamed;
  ASSERT_TRUE(renamed.Load(ReportsFolder(h) + "/Ours.cvx"));
  EXPECT_EQ(ProfileNames(renamed), (Names{"Ours", "Other", "Ours"}));
  // The rename saves the report whatever the answer was.
  EXPECT_EQ(ChildText(FindProfileElement(renamed, "Ours"), "DoTotals"), "1");
}

TEST(RenameProfileTest, ReportRenameThatCannotBeWrittenKeepsTheOldPairWhole) {
  HeadlessEditor h;
  OpenSalesReport(h);
  h.dir.Write("Custom Reports/Sales.cvr", "<CustomReport><Name>Sales</Name></CustomReport>");
  Select(h, "Sales");  // opened again as it is on disk now
  const std::string cvx_before = h.dir.Read("Custom Reports/Sales.cvx");
  const std::string path_before = h->ViewsPath;
  h.prompter.ClearShown();
  h.prompter.QueueInput("Renamed");
  {
    FileSizeLimit limit(64);
    h->cmdEditProfile.Click();
  }
  EXPECT_EQ(FilesIn(ReportsFolder(h)), (Names{".reports.lock", "Sales.cvr", "Sales.cvx"}));
  EXPECT_EQ(h.dir.Read("Custom Reports/Sales.cvx"), cvx_before);
  EXPECT_EQ(h.dir.Read("Custom Reports/Sales.cvr"),
            "<CustomReport><Name>Sales</Name></CustomReport>");
  EXPECT_EQ(h->ViewsPath, path_before);
  EXPECT_EQ(h->txtCurrProf.Text(), "Sales");
  EXPECT_EQ(ProfileNames(h->ViewsDoc), Names{"Sales"});
  EXPECT_FALSE(h.Messages().empty());  // the failed writes were reported
}

TEST(DeleteProfileTest, OnlyTheFirstRecordOfTheNameIsRemovedAfterAYes) {
  for (Answer answer : {Answer::kNo, Answer::kYes}) {
    HeadlessEditor h;
    h.Open(ViewsFile({{"Mine",
                       "<DataSet>Accounts</DataSet><AcctViewType>1</AcctViewType>"
                       "<Marker>first</Marker>"},
                      {"Other", "<AcctViewType>1</AcctViewType>"},
                      {"Mine", "<Marker>second</Marker>"}}),
           kDefaults, kSetup);
    Select(h, "Mine");
    h->chkTotals.UserClick();
    const std::string before = h->ViewsDoc.ToString();
    h.prompter.ClearShown();
    h.prompter.QueueAnswer(Answer::kOk);  // the second record makes it look customised
    h.prompter.QueueAnswer(answer);
    h->cmdDeleteProfile.Click();
    ASSERT_EQ(h.prompter.Shown().size(), 2u) << ShownPrompts(h);
    EXPECT_EQ(Box(h.prompter.Shown()[1]),
              Box("Delete Profile", "YesNo", "question",
                  "Are you sure you want to delete the profile 'Mine'?"));
    if (answer == Answer::kNo) {
      EXPECT_EQ(h->ViewsDoc.ToString(), before);
      continue;
    }
    EXPECT_EQ(ProfileNames(h->ViewsDoc), (Names{"Other", "Mine"}));
    EXPECT_EQ(ChildText(FindProfileElement(h->ViewsDoc, "Mine"), "Marker"), "second");
    EXPECT_FALSE(h->ProfileChanged);
  }
}

TEST(DeleteProfileTest, SystemProfilesAreResetNotRemoved) {
  const struct {
    const char* name;
    bool customised;
  } cases[] = {{"Past Due", true}, {"All Accounts", false}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    HeadlessEditor h;
    OpenFileSet(h, c.name);
    const std::string defaults_before = h->DefaultsDoc.ToString();
    const size_t views_before = ProfileNames(h->ViewsDoc).size();
    h.prompter.ClearShown();
    h.prompter.QueueAnswer(Answer::kOk);
    h.prompter.QueueAnswer(Answer::kYes);
    h->cmdDeleteProfile.Click();
    const auto& shown = h.prompter.Shown();
    ASSERT_EQ(shown.size(), c.customised ? 2u : 3u);
    EXPECT_EQ(Box(shown[0]), Box("Delete Profile", "OK", "exclamation",
                                 "This is a system profile.  The delete function will reset any "
                                 "customizations made, but will not remove the profile entirely."));
    EXPECT_EQ(shown[1].text,
              std::string("Are you sure you want to delete the profile '") + c.name + "'?");
    if (!c.customised) {
      EXPECT_EQ(shown[2].title + "|" + shown[2].text,
                "Error|Profile not found.  The profile was not deleted.");
    }
    EXPECT_EQ(ProfileNames(h->ViewsDoc).size(), views_before - (c.customised ? 1 : 0));
    EXPECT_FALSE(FindProfileElement(h->ViewsDoc, c.name));
    EXPECT_EQ(h->DefaultsDoc.ToString(), defaults_before);
    EXPECT_EQ(TagOf(h, c.name), "0");
  }
}

TEST(DeleteProfileTest, RemovedCurrentRecordLeavesNoHandleBehind) {
  // Without a profile in folder 0 nothing is selected after the delete, so
  // the removed record would stay current if the command did not clear it.
  HeadlessEditor h;
  h.Open(ViewsFile({{"Mine", "<DataSet>Accounts</DataSet><AcctViewType>1</AcctViewType>"}}),
         ViewsFile({}), kSetup);
  Select(h, "Mine");
  ASSERT_TRUE(h->CurrentProfileNode());
  h.prompter.QueueAnswer(Answer::kYes);
  h->cmdDeleteProfile.Click();
  EXPECT_FALSE(h->CurrentProfileNode());
  EXPECT_EQ(h->tvwViews.SelectedNode(), ui::kNoNode);
  h.prompter.ClearShown();
  EXPECT_FALSE(SaveProfile(*h));
  EXPECT_EQ(h.LastMessage(), "Please select a profile from above first.");
}

TEST(SaveProfileCommandTest, NoticeSaysWhatWasSavedAndClosesOnLostFocus) {
  for (bool report_mode : {false, true}) {
    SCOPED_TRACE(report_mode);
    HeadlessEditor h;
    report_mode ? OpenSalesReport(h) : OpenFileSet(h, "Past Due");
    h->chkShowLineCount.UserClick();
    h.prompter.ClearShown();
    h->cmdSaveProfile.Click();
    ASSERT_EQ(h.prompter.Shown().size(), 1u) << ShownPrompts(h);
    const ui::ShownPrompt& notice = h.prompter.Shown()[0];
    EXPECT_EQ(
        notice.kind + "|" + notice.title + "|" + notice.text,
        std::string("notice|Save Profile|") +
            (report_mode ? "Your report has been saved." : "Your view profile has been saved."));
    EXPECT_TRUE(h.prompter.NoticeOpen());
    EXPECT_FALSE(h.prompter.WaitCursor());
    EXPECT_FALSE(h->ProfileChanged);
    EXPECT_EQ(h->chkShowLineCount.Value(), 1);  // reloaded from the saved record
    h->cmdSaveProfile.on_lost_focus();
    EXPECT_FALSE(h.prompter.NoticeOpen());

    // A save that stops announces nothing.
    h->SetCurrentProfileNode({}, h->ViewsDoc);
    h.prompter.ClearShown();
    h->cmdSaveProfile.Click();
    ASSERT_EQ(h.prompter.Shown().size(), 1u);
    EXPECT_EQ(h.prompter.Shown()[0].text, "Please select a profile from above first.");
    EXPECT_FALSE(h.prompter.NoticeOpen() || h.prompter.WaitCursor());
  }
}

}  // namespace
}  // namespace cvve::testing
