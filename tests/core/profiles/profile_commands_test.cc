#include "profiles/profile_commands.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "base/text.h"
#include "core/profiles/save_fixture.h"
#include "profiles/profile_saver.h"
#include "profiles/views_tree.h"
#include "viewfiles/profile_record.h"

namespace cvve {
namespace {

namespace fs = std::filesystem;
using testing::Box;
using testing::FilesIn;
using testing::FileSizeLimit;
using testing::HeadlessEditor;
using testing::kSaveDefaults;
using testing::kSaveSetup;
using testing::kSaveViews;
using testing::OpenReports;
using testing::ProfileNames;
using testing::ReadFile;
using testing::ReportDocument;
using testing::ReportsFolder;
using testing::Select;
using testing::ShownPrompts;
using ui::Answer;

const std::string kSaveQuestion =
    "You have made changes to the current profile.  Would you like to save these changes?";

// "Mine" twice: the first and the second told apart by a marker element.
const std::string kTwinViews = R"(<Views><Profiles>
  <Profile><Name>Mine</Name><DataSet>Accounts</DataSet><AcctViewType>1</AcctViewType><Marker>first</Marker></Profile>
  <Profile><Name>Other</Name><DataSet>Accounts</DataSet><AcctViewType>1</AcctViewType></Profile>
  <Profile><Name>Mine</Name><DataSet>Accounts</DataSet><AcctViewType>1</AcctViewType><Marker>second</Marker></Profile>
</Profiles></Views>)";

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

// --- New ---

TEST(NewProfileTest, SaveQuestionAnswers) {
  struct Case {
    Answer answer;
    bool changed_after;  // ProfileChanged when the command ends
    bool asks_for_name;  // the input box comes up
    bool saved;          // the change reached the record
  };
  const std::vector<Case> cases = {
      {Answer::kCancel, true, false, false},
      {Answer::kNo, false, true, false},
      {Answer::kYes, false, true, true},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(ui::ToString(c.answer));
    HeadlessEditor h;
    h.Open(kSaveViews, kSaveDefaults, kSaveSetup);
    Select(h, "Mine");
    h->chkShowLineCount.UserClick();
    ASSERT_TRUE(h->ProfileChanged);
    h.prompter.ClearShown();
    h.prompter.QueueAnswer(c.answer);

    h->cmdNewProfile.Click();  // the name is left empty: the command ends there

    const auto& shown = h.prompter.Shown();
    ASSERT_GE(shown.size(), 1u);
    EXPECT_EQ(Box(shown[0]), Box("Save Changes", "YesNoCancel", "question", kSaveQuestion));
    ASSERT_EQ(shown.size(), c.asks_for_name ? 2u : 1u);
    if (c.asks_for_name) {
      EXPECT_EQ(shown[1].kind, "inputbox");
      EXPECT_EQ(shown[1].text, "Enter a name for the new profile:");
      EXPECT_EQ(shown[1].title, "New Profile");
    }
    EXPECT_EQ(h->ProfileChanged, c.changed_after);
    EXPECT_EQ(ChildText(FindProfileElement(h->ViewsDoc, "Mine"), "DoLineCount"),
              c.saved ? "1" : "");
    EXPECT_EQ(ProfileNames(h->ViewsDoc), (std::vector<std::string>{"Past Due", "Mine"}));
  }
}

TEST(NewProfileTest, FreshInstallGetsAUserProfileThatCanBeSaved) {
  HeadlessEditor h;
  h.Open("", kSaveDefaults, kSaveSetup);  // no views file yet
  h.prompter.QueueInput("Fresh");
  h->cmdNewProfile.Click();

  EXPECT_EQ(ProfileNames(h->ViewsDoc), (std::vector<std::string>{"Fresh"}));
  EXPECT_EQ(ChildText(FindProfileElement(h->ViewsDoc, "Fresh"), "AcctViewType"), "0");
  EXPECT_EQ(h->txtCurrProf.Text(), "Fresh");
  EXPECT_EQ(TagOf(h, "Fresh"), "2");
  EXPECT_FALSE(h->ProfileChanged);

  h->cmdSaveProfile.Click();
  EXPECT_EQ(h.prompter.NoticeText(), "Your view profile has been saved.");
  EXPECT_EQ(ChildText(FindProfileElement(h->ViewsDoc, "Fresh"), "DataSet"), "Accounts");
  // A new profile has no columns yet, which the statement builder points out.
  EXPECT_EQ(h.Messages(), (std::vector<std::string>{"You have not selected any fields/columns."}))
      << ShownPrompts(h);
}

TEST(NewProfileTest, ReportModeWritesTheNewProfileDocumentAndLoadsIt) {
  HeadlessEditor h;
  OpenReports(h, {{"Sales", ReportDocument("Sales")}});
  const std::string folder = ReportsFolder(h);
  h.prompter.QueueInput("Weekly");
  h->cmdNewProfile.Click();

  EXPECT_EQ(h->ViewsPath, folder + "/Weekly.cvx");
  EXPECT_EQ(ProfileNameIn(folder + "/Weekly.cvx"), "Weekly");
  EXPECT_EQ(h->txtCurrProf.Text(), "Weekly");
  EXPECT_NE(TagOf(h, "Weekly"), "(none)");
  EXPECT_EQ(ProfileNames(h->ViewsDoc), (std::vector<std::string>{"Weekly"}));
  EXPECT_TRUE(h.Messages().empty());
}

// --- Names that would become bad file names, and existing reports ---

TEST(ReportNamesTest, RefusedNamesWriteAndRenameNothing) {
  const std::vector<std::string> refused = {
      "../escape", ".hidden", "..", "sub/dir", std::string(201, 'n'), std::string("a\0b", 3)};
  struct Command {
    const char* what;
    void (*click)(frmAcctViewEdit&);
  };
  const std::vector<Command> commands = {{"new", cmdNewProfile_Click},
                                         {"copy", cmdCopyProfile_Click},
                                         {"rename", cmdEditProfile_Click}};
  for (const Command& command : commands) {
    for (const std::string& name : refused) {
      SCOPED_TRACE(std::string(command.what) + " " + name);
      HeadlessEditor h;
      OpenReports(h, {{"Sales", ReportDocument("Sales")}});
      Select(h, "Sales");
      const auto files_before = FilesIn(ReportsFolder(h));
      const std::string path_before = h->ViewsPath;
      h.prompter.ClearShown();
      h.prompter.QueueInput(name);

      command.click(*h);

      ASSERT_EQ(h.Messages().size(), 1u);
      EXPECT_EQ(h.prompter.Shown().back().title, "Invalid Report Name");
      EXPECT_TRUE(StartsWith(h.Messages()[0], "The name '"));
      EXPECT_EQ(FilesIn(ReportsFolder(h)), files_before);
      EXPECT_FALSE(fs::exists(h.dir.Path() / "escape.cvx"));
      EXPECT_EQ(h->ViewsPath, path_before);
      EXPECT_EQ(ProfileNames(h->ViewsDoc), (std::vector<std::string>{"Sales"}));
    }
  }
}

TEST(ReportNamesTest, OverwritingAnotherReportIsAskedFirst) {
  struct Command {
    const char* what;
    void (*click)(frmAcctViewEdit&);
    const char* title;
  };
  const std::vector<Command> commands = {{"new", cmdNewProfile_Click, "New Profile"},
                                         {"copy", cmdCopyProfile_Click, "Copy Profile"},
                                         {"rename", cmdEditProfile_Click, "Edit Profile Name"}};
  for (const Command& command : commands) {
    for (Answer answer : {Answer::kNo, Answer::kYes}) {
      SCOPED_TRACE(std::string(command.what) + " " + ui::ToString(answer));
      HeadlessEditor h;
      OpenReports(h, {{"Sales", ReportDocument("Sales")}, {"Other", ReportDocument("Other")}});
      const std::string folder = ReportsFolder(h);
      h.dir.Write("Custom Reports/Other.cvr", "<CustomReport><Name>Other</Name></CustomReport>");
      Select(h, "Sales");
      const std::string other_cvx = ReadFile(folder + "/Other.cvx");
      const std::string other_cvr = ReadFile(folder + "/Other.cvr");
      h.prompter.ClearShown();
      h.prompter.QueueInput("Other");
      h.prompter.QueueAnswer(answer);

      command.click(*h);

      const auto& shown = h.prompter.Shown();
      ASSERT_GE(shown.size(), 2u);
      EXPECT_EQ(Box(shown[1]),
                Box(command.title, "YesNo", "question",
                    "A report named 'Other' already exists.  Would you like to replace it?"));
      if (answer == Answer::kNo) {
        EXPECT_EQ(ReadFile(folder + "/Other.cvx"), other_cvx);
        EXPECT_EQ(ReadFile(folder + "/Other.cvr"), other_cvr);
        EXPECT_TRUE(fs::exists(folder + "/Sales.cvx"));
        EXPECT_EQ(h->txtCurrProf.Text(), "Sales");
      } else {
        EXPECT_NE(ReadFile(folder + "/Other.cvx"), other_cvx);
        EXPECT_EQ(ProfileNameIn(folder + "/Other.cvx"), "Other");
        EXPECT_EQ(h->ViewsPath, folder + "/Other.cvx");
      }
    }
  }
}

// --- Copy ---

TEST(CopyProfileTest, CustomisedSystemProfileGivesAUserProfileWithTheDefaultsSettings) {
  HeadlessEditor h;
  h.Open(kSaveViews, kSaveDefaults, kSaveSetup);
  Select(h, "Past Due");
  const std::string defaults_before = h->DefaultsDoc.ToString();
  h.prompter.ClearShown();
  h.prompter.QueueInput("Copy of Past Due");
  h->cmdCopyProfile.Click();

  ASSERT_FALSE(h.prompter.Shown().empty());
  EXPECT_EQ(h.prompter.Shown()[0].text, "Enter a name for the new profile:");
  EXPECT_EQ(h.prompter.Shown()[0].title, "Copy Profile");
  EXPECT_EQ(h.prompter.Shown()[0].default_text, "Copy of Past Due");
  XmlNode copy = FindProfileElement(h->ViewsDoc, "Copy of Past Due");
  ASSERT_TRUE(copy);
  // The defaults record, not the customisation ("Due Date", DoTotals 1).
  EXPECT_EQ(ChildText(copy, "DataSet"), "Accounts");
  EXPECT_EQ(ChildText(copy, "SortBy"), "Balance");
  EXPECT_EQ(ChildText(copy, "DoTotals"), "0");
  EXPECT_EQ(ChildText(copy.child("FilterChecks").child("Filter"), "Name"), "Active only");
  EXPECT_EQ(TagOf(h, "Copy of Past Due"), "2");
  EXPECT_EQ(h->txtCurrProf.Text(), "Copy of Past Due");
  EXPECT_EQ(h->lstUsedColumns.Items(), (std::vector<std::string>{"Account", "Balance"}));
  EXPECT_EQ(h->DefaultsDoc.ToString(), defaults_before);
  EXPECT_EQ(ChildText(FindProfileElement(h->ViewsDoc, "Past Due"), "SortBy"), "Due Date");
  // A deep copy: changing the copy leaves the source alone.
  SetNodeText(copy.child("FilterChecks").child("Filter").child("Name"), "changed");
  EXPECT_EQ(h->DefaultsDoc.ToString(), defaults_before);
}

TEST(CopyProfileTest, ProfileInNeitherFileIsReported) {
  HeadlessEditor h;
  h.Open(kSaveViews, kSaveDefaults, kSaveSetup);
  Select(h, "Mine");
  const XmlNode current = h->CurrentProfileNode();
  h->txtCurrProf.SetText("Nobody");
  const std::string views_before = h->ViewsDoc.ToString();
  h.prompter.QueueInput("Somebody");
  h->cmdCopyProfile.Click();

  EXPECT_EQ(h.LastMessage(), "Error copying profile:  Profile not found.");
  EXPECT_EQ(h.prompter.Shown().back().icon, "critical");
  EXPECT_EQ(h->ViewsDoc.ToString(), views_before);
  EXPECT_EQ(h->CurrentProfileNode(), current);
}

TEST(CopyProfileTest, ReportModeSavesThenCopiesTheFilePair) {
  HeadlessEditor h;
  OpenReports(h, {{"Sales", ReportDocument("Sales")}});
  const std::string folder = ReportsFolder(h);
  Select(h, "Sales");
  h->chkTotals.SetValue(1);
  h.prompter.QueueInput("Sales Copy");
  h->cmdCopyProfile.Click();

  EXPECT_TRUE(h.Messages().empty()) << ShownPrompts(h);
  EXPECT_EQ(FilesIn(folder), (std::vector<std::string>{"Sales Copy.cvr", "Sales Copy.cvx",
                                                       "Sales.cvr", "Sales.cvx", "Sales.cvx.bak"}));
  EXPECT_EQ(ProfileNameIn(folder + "/Sales.cvx"), "Sales");
  EXPECT_EQ(ProfileNameIn(folder + "/Sales Copy.cvx"), "Sales Copy");
  DocumentCursor copied, source;
  ASSERT_TRUE(copied.Load(folder + "/Sales Copy.cvr"));
  ASSERT_TRUE(source.Load(folder + "/Sales.cvr"));
  EXPECT_EQ(ChildText(copied.Root(), "Name"), "Sales Copy");
  EXPECT_EQ(ChildText(source.Root(), "Name"), "Sales");
  EXPECT_EQ(ChildText(copied.Root(), "Totals"), "1");  // saved before the copy
  EXPECT_EQ(ChildText(copied.Root(), "Statement"), ChildText(source.Root(), "Statement"));
  EXPECT_EQ(h->ViewsPath, folder + "/Sales Copy.cvx");
  EXPECT_EQ(h->txtCurrProf.Text(), "Sales Copy");
}

// --- Rename ---

TEST(RenameProfileTest, SystemProfilesKeepTheirNamesInViewMode) {
  for (const char* name : {"All Accounts", "Past Due"}) {
    SCOPED_TRACE(name);
    HeadlessEditor h;
    h.Open(kSaveViews, kSaveDefaults, kSaveSetup);
    Select(h, name);
    h.prompter.ClearShown();
    h->cmdEditProfile.Click();
    ASSERT_EQ(h.prompter.Shown().size(), 1u);  // no name is asked for
    EXPECT_EQ(h.prompter.Shown()[0].text,
              "This is a system profile.  The profile name may not be changed.");
    EXPECT_EQ(h.prompter.Shown()[0].title, "Edit Name");
    EXPECT_EQ(h.prompter.Shown()[0].icon, "exclamation");
  }
}

TEST(RenameProfileTest, EveryRecordOfTheNameIsRenamed) {
  // Only a report escapes the system-profile rule with two records of one
  // name: in a views file the second one marks the name as customised.
  HeadlessEditor h;
  const std::string columns =
      "<DataSet>Accounts</DataSet><Columns><Column><Name>Account</Name>"
      "</Column></Columns>";
  OpenReports(h, {{"Sales", "<Views><Profiles><Profile><Name>Sales</Name>" + columns +
                                "</Profile><Profile><Name>Other</Name></Profile>"
                                "<Profile><Name>Sales</Name><Marker>second</Marker></Profile>"
                                "</Profiles></Views>"}});
  const std::string folder = ReportsFolder(h);
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
  EXPECT_EQ(shown[1].title, "Edit Profile Name");
  DocumentCursor renamed;
  ASSERT_TRUE(renamed.Load(folder + "/Ours.cvx"));
  EXPECT_EQ(ProfileNames(renamed), (std::vector<std::string>{"Ours", "Other", "Ours"}));
  EXPECT_EQ(h->txtCurrProf.Text(), "Ours");
  // The rename saves the report whatever the answer was.
  EXPECT_EQ(ChildText(FindProfileElement(renamed, "Ours"), "DoTotals"), "1");
}

TEST(RenameProfileTest, ReportModeMovesTheFilePair) {
  HeadlessEditor h;
  OpenReports(h, {{"Sales", ReportDocument("Sales")}});
  const std::string folder = ReportsFolder(h);
  Select(h, "Sales");
  h->chkAverages.SetValue(1);
  h.prompter.QueueAnswer(Answer::kYes);  // save first
  h.prompter.QueueInput("Renamed");
  h->cmdEditProfile.Click();

  EXPECT_EQ(h.Messages().size(), 1u) << ShownPrompts(h);  // only the save question
  EXPECT_FALSE(fs::exists(folder + "/Sales.cvx"));
  EXPECT_FALSE(fs::exists(folder + "/Sales.cvr"));
  EXPECT_EQ(ProfileNameIn(folder + "/Renamed.cvx"), "Renamed");
  DocumentCursor definition;
  ASSERT_TRUE(definition.Load(folder + "/Renamed.cvr"));
  EXPECT_EQ(ChildText(definition.Root(), "Name"), "Renamed");
  EXPECT_EQ(ChildText(definition.Root(), "Averages"), "1");
  EXPECT_EQ(h->ViewsPath, folder + "/Renamed.cvx");
  EXPECT_EQ(h->txtCurrProf.Text(), "Renamed");
  EXPECT_NE(TagOf(h, "Renamed"), "(none)");
  EXPECT_EQ(TagOf(h, "Sales"), "(none)");
}

TEST(RenameProfileTest, ReportRenameThatCannotBeWrittenKeepsTheOldPairWhole) {
  HeadlessEditor h;
  OpenReports(h, {{"Sales", ReportDocument("Sales")}});
  const std::string folder = ReportsFolder(h);
  h.dir.Write("Custom Reports/Sales.cvr", "<CustomReport><Name>Sales</Name></CustomReport>");
  Select(h, "Sales");
  const std::string cvx_before = ReadFile(folder + "/Sales.cvx");
  const std::string cvr_before = ReadFile(folder + "/Sales.cvr");
  const std::string path_before = h->ViewsPath;
  h.prompter.ClearShown();
  h.prompter.QueueInput("Renamed");
  {
    FileSizeLimit limit(64);
    h->cmdEditProfile.Click();
  }

  EXPECT_EQ(FilesIn(folder), (std::vector<std::string>{"Sales.cvr", "Sales.cvx"}));
  EXPECT_EQ(ReadFile(folder + "/Sales.cvx"), cvx_before);
  EXPECT_EQ(ReadFile(folder + "/Sales.cvr"), cvr_before);
  EXPECT_EQ(h->ViewsPath, path_before);
  EXPECT_EQ(h->txtCurrProf.Text(), "Sales");
  EXPECT_EQ(ProfileNames(h->ViewsDoc), (std::vector<std::string>{"Sales"}));
  EXPECT_FALSE(h.Messages().empty());  // the failed writes were reported
}

// --- Delete ---

TEST(DeleteProfileTest, OnlyTheFirstRecordOfTheNameIsRemoved) {
  HeadlessEditor h;
  h.Open(kTwinViews, kSaveDefaults, kSaveSetup);
  Select(h, "Mine");
  h->chkTotals.UserClick();
  h.prompter.ClearShown();
  h.prompter.QueueAnswer(Answer::kOk);  // the second record makes the tree call it customised
  h.prompter.QueueAnswer(Answer::kYes);
  h->cmdDeleteProfile.Click();

  ASSERT_EQ(h.prompter.Shown().size(), 2u) << ShownPrompts(h);
  EXPECT_EQ(Box(h.prompter.Shown()[1]), Box("Delete Profile", "YesNo", "question",
                                            "Are you sure you want to delete the profile 'Mine'?"));
  EXPECT_EQ(ProfileNames(h->ViewsDoc), (std::vector<std::string>{"Other", "Mine"}));
  EXPECT_EQ(ChildText(FindProfileElement(h->ViewsDoc, "Mine"), "Marker"), "second");
  EXPECT_FALSE(h->ProfileChanged);
}

TEST(DeleteProfileTest, AnswerNoDeletesNothing) {
  HeadlessEditor h;
  h.Open(kTwinViews, kSaveDefaults, kSaveSetup);
  Select(h, "Mine");
  const std::string before = h->ViewsDoc.ToString();
  h.prompter.QueueAnswer(Answer::kOk);
  h.prompter.QueueAnswer(Answer::kNo);
  h->cmdDeleteProfile.Click();
  EXPECT_EQ(h->ViewsDoc.ToString(), before);
}

TEST(DeleteProfileTest, SystemProfilesAreResetNotRemoved) {
  struct Case {
    const char* name;
    const char* not_found;  // the second message, if any
    std::vector<std::string> views_after;
    const char* tag_after;
  };
  const std::vector<Case> cases = {
      {"Past Due", nullptr, {"Mine"}, "0"},
      {"All Accounts",
       "Profile not found.  The profile was not deleted.",
       {"Past Due", "Mine"},
       "0"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    HeadlessEditor h;
    h.Open(kSaveViews, kSaveDefaults, kSaveSetup);
    Select(h, c.name);
    const std::string defaults_before = h->DefaultsDoc.ToString();
    h.prompter.ClearShown();
    h.prompter.QueueAnswer(Answer::kOk);
    h.prompter.QueueAnswer(Answer::kYes);
    h->cmdDeleteProfile.Click();

    const auto messages = h.Messages();
    ASSERT_EQ(messages.size(), c.not_found ? 3u : 2u);
    EXPECT_EQ(messages[0],
              "This is a system profile.  The delete function will reset any customizations "
              "made, but will not remove the profile entirely.");
    EXPECT_EQ(h.prompter.Shown()[0].icon, "exclamation");
    EXPECT_EQ(h.prompter.Shown()[0].title, "Delete Profile");
    EXPECT_EQ(messages[1],
              std::string("Are you sure you want to delete the profile '") + c.name + "'?");
    if (c.not_found) {
      EXPECT_EQ(messages[2], c.not_found);
      EXPECT_EQ(h.prompter.Shown()[2].title, "Error");
    }
    EXPECT_EQ(ProfileNames(h->ViewsDoc), c.views_after);
    EXPECT_EQ(h->DefaultsDoc.ToString(), defaults_before);
    EXPECT_EQ(TagOf(h, c.name), c.tag_after);
  }
}

TEST(DeleteProfileTest, RemovedCurrentRecordLeavesNoHandleBehind) {
  // Without a profile in folder 0 nothing is selected after the delete, so
  // the removed record would stay current if the command did not clear it.
  HeadlessEditor h;
  h.Open(R"(<Views><Profiles><Profile><Name>Mine</Name><DataSet>Accounts</DataSet>
             <AcctViewType>1</AcctViewType></Profile></Profiles></Views>)",
         "<Views><Profiles/></Views>", kSaveSetup);
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

TEST(DeleteProfileTest, ReportModeDeletesTheFilePair) {
  HeadlessEditor h;
  OpenReports(h, {{"Sales", ReportDocument("Sales")}, {"Other", ReportDocument("Other")}});
  const std::string folder = ReportsFolder(h);
  h.dir.Write("Custom Reports/Sales.cvr", "<CustomReport/>");
  Select(h, "Sales");
  h->chkTotals.UserClick();
  h.prompter.ClearShown();
  h.prompter.QueueAnswer(Answer::kYes);
  h->cmdDeleteProfile.Click();

  ASSERT_EQ(h.Messages().size(), 1u);  // no system-profile notice for a report
  EXPECT_EQ(FilesIn(folder), (std::vector<std::string>{"Other.cvx"}));
  EXPECT_FALSE(h->ProfileChanged);
  EXPECT_EQ(TagOf(h, "Sales"), "(none)");
  EXPECT_NE(TagOf(h, "Other"), "(none)");
}

// --- Save ---

TEST(SaveProfileCommandTest, NoticeSaysWhatWasSavedAndClosesOnLostFocus) {
  struct Case {
    bool report_mode;
    const char* notice;
  };
  for (const Case& c : {Case{false, "Your view profile has been saved."},
                        Case{true, "Your report has been saved."}}) {
    SCOPED_TRACE(c.notice);
    HeadlessEditor h;
    if (c.report_mode) {
      OpenReports(h, {{"Sales", ReportDocument("Sales")}});
      Select(h, "Sales");
    } else {
      h.Open(kSaveViews, kSaveDefaults, kSaveSetup);
      Select(h, "Mine");
    }
    h->chkShowLineCount.UserClick();
    h.prompter.ClearShown();
    h->cmdSaveProfile.Click();

    EXPECT_TRUE(h.Messages().empty()) << ShownPrompts(h);
    ASSERT_EQ(h.prompter.Shown().size(), 1u);
    EXPECT_EQ(h.prompter.Shown()[0].kind, "notice");
    EXPECT_EQ(h.prompter.Shown()[0].title, "Save Profile");
    EXPECT_EQ(h.prompter.Shown()[0].text, c.notice);
    EXPECT_TRUE(h.prompter.NoticeOpen());
    EXPECT_FALSE(h.prompter.WaitCursor());
    EXPECT_FALSE(h->ProfileChanged);
    EXPECT_EQ(h->chkShowLineCount.Value(), 1);  // reloaded from the saved record

    h->cmdSaveProfile.on_lost_focus();
    EXPECT_FALSE(h.prompter.NoticeOpen());
  }
}

TEST(SaveProfileCommandTest, SaveThatStopsAnnouncesNothing) {
  HeadlessEditor h;
  h.Open(kSaveViews, kSaveDefaults, kSaveSetup);
  h->SetCurrentProfileNode({}, h->ViewsDoc);
  h.prompter.ClearShown();
  h->cmdSaveProfile.Click();
  ASSERT_EQ(h.prompter.Shown().size(), 1u);
  EXPECT_EQ(h.prompter.Shown()[0].text, "Please select a profile from above first.");
  EXPECT_FALSE(h.prompter.NoticeOpen());
  EXPECT_FALSE(h.prompter.WaitCursor());
}

}  // namespace
}  // namespace cvve
