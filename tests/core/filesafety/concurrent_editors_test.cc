// Two editors on one views folder, one after the other at OK, as two
// workstations are: the second one's OK merges record by record.
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <functional>

#include "filesafety/file_lock.h"

#include "fixtures.h"
#include "profiles/profile_commands.h"
#include "profiles/profile_saver.h"
#include "viewfiles/profile_record.h"

namespace cvve::testing {
namespace {

// A second editor on the folder of `first`.
struct Neighbour {
  explicit Neighbour(HeadlessEditor& first) {
    h.host.view_files_folder = first.host.view_files_folder;
    h.host.reports_base_folder = first.host.reports_base_folder;
    h->SetReportMode(0);
    h->LoadFiles("views.xml", "defs.xml", "setup.xml");
  }
  HeadlessEditor h;
};

std::string Element(HeadlessEditor& h, const std::string& name, const char* element) {
  DocumentCursor doc;
  EXPECT_TRUE(doc.Load((h.dir.Path() / "views.xml").string()));
  XmlNode record = FindProfileElement(doc, name);
  return record ? ChildText(record, element) : "<none>";
}

void Ok(HeadlessEditor& h) {
  h->cmdOK.Click();
  EXPECT_FALSE(h->Visible()) << ShownPrompts(h);
}

TEST(ConcurrentEditorsTest, ChangesOfTheOtherEditorSurviveInOtherRecords) {
  struct Case {
    const char* what;
    std::function<void(HeadlessEditor&)> theirs;        // saved and OK first
    std::function<void(HeadlessEditor&)> check_after;  // after our OK
  };
  const std::vector<Case> cases = {
      {"different profiles",
       [](HeadlessEditor& b) {
         Select(b, "Past Due");
         b->chkShowLineCount.UserClick();
         ASSERT_TRUE(SaveProfile(*b));
       },
       [](HeadlessEditor& a) { EXPECT_EQ(Element(a, "Past Due", "DoLineCount"), "1"); }},
      {"a new profile",
       [](HeadlessEditor& b) {
         b.prompter.QueueInput("Fresh");
         b->cmdNewProfile.Click();
       },
       [](HeadlessEditor& a) { EXPECT_EQ(Element(a, "Fresh", "AcctViewType"), "0"); }},
      {"a deletion",
       [](HeadlessEditor& b) {
         Select(b, "Past Due");
         b.prompter.QueueAnswer(ui::Answer::kOk);  // the system profile's notice
         b.prompter.QueueAnswer(ui::Answer::kYes);
         b->cmdDeleteProfile.Click();
       },
       [](HeadlessEditor& a) { EXPECT_EQ(Element(a, "Past Due", "Name"), "<none>"); }},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    HeadlessEditor a;
    a.Open(kViews, kDefaults, kSetup);
    Neighbour b(a);
    c.theirs(b.h);
    Ok(b.h);
    Select(a, "All Accounts");
    a->chkTotals.UserClick();
    ASSERT_TRUE(SaveProfile(*a));
    Ok(a);
    EXPECT_EQ(Element(a, "All Accounts", "DoTotals"), a->chkTotals.Value() ? "1" : "0");
    c.check_after(a);
    EXPECT_TRUE(a.Messages().empty()) << ShownPrompts(a);  // no conflict, no question
  }
}

TEST(ConcurrentEditorsTest, TheSameProfileAsksAndEachAnswerDoesWhatItSays) {
  struct Case {
    ui::Answer answer;
    bool ours;              // ours changed DoTotals to 1
    const char* linecount;  // theirs changed DoLineCount
    bool closed;
  };
  for (const Case& c : {Case{ui::Answer::kYes, true, "0", true},
                        Case{ui::Answer::kNo, false, "1", true},
                        Case{ui::Answer::kCancel, false, "1", false}}) {
    SCOPED_TRACE(ui::ToString(c.answer));
    HeadlessEditor a;
    a.Open(kViews, kDefaults, kSetup);
    a->Show();
    Neighbour b(a);
    Select(b.h, "Past Due");
    b.h->chkShowLineCount.SetValue(1);
    b.h->chkTotals.SetValue(0);
    ASSERT_TRUE(SaveProfile(*b.h));
    Ok(b.h);

    Select(a, "Past Due");
    a->chkTotals.SetValue(1);
    a->chkShowLineCount.SetValue(0);
    ASSERT_TRUE(SaveProfile(*a));
    a.prompter.QueueAnswer(c.answer);
    a->cmdOK.Click();
    EXPECT_EQ(a->Visible(), !c.closed);
    ASSERT_FALSE(a.prompter.Shown().empty());
    EXPECT_EQ(Box(a.prompter.Shown().back()),
              Box("Save Changes", "YesNoCancel", "question",
                  "The profile 'Past Due' was also changed by another user since you opened "
                  "these views.  Would you like to keep your changes?\r\n\r\nYes keeps your "
                  "version, No keeps the other user's version, Cancel returns to the editor."));
    EXPECT_EQ(Element(a, "Past Due", "DoTotals"), c.ours ? "1" : "0");
    EXPECT_EQ(Element(a, "Past Due", "DoLineCount"), c.linecount);
  }
}

// Another program rewrote the file in place (not replacing it, as editors
// here do): the file as it was loaded cannot be had any more, so every
// profile changed here is asked about, even one the other program left alone,
// and the answer decides; the other program's changes elsewhere survive.
TEST(ConcurrentEditorsTest, AFileRewrittenInPlaceAsksForEveryProfileChangedHere) {
  struct Case {
    ui::Answer answer;
    const char* totals;  // ours customised "All Accounts" with DoTotals 1
    bool closed;
  };
  for (const Case& c : {Case{ui::Answer::kYes, "1", true}, Case{ui::Answer::kNo, "<none>", true},
                        Case{ui::Answer::kCancel, "<none>", false}}) {
    SCOPED_TRACE(ui::ToString(c.answer));
    HeadlessEditor a;
    a.Open(kViews, kDefaults, kSetup);
    a->Show();
    // The other program: Past Due's line count, written through the same inode.
    {
      DocumentCursor theirs;
      ASSERT_TRUE(theirs.Load((a.dir.Path() / "views.xml").string()));
      XmlNode record = FindProfileElement(theirs, "Past Due");
      ASSERT_TRUE(record);
      theirs.SetCurrentNode(record);
      theirs.SetValue("DoLineCount", "1");
      std::ofstream((a.dir.Path() / "views.xml"), std::ios::binary | std::ios::trunc)
          << theirs.ToString();
    }
    Select(a, "All Accounts");
    a->chkTotals.SetValue(1);
    ASSERT_TRUE(SaveProfile(*a));
    const std::size_t shown = a.prompter.Shown().size();
    a.prompter.QueueAnswer(c.answer);
    a->cmdOK.Click();
    EXPECT_EQ(a->Visible(), !c.closed);
    ASSERT_EQ(a.prompter.Shown().size(), shown + 1) << ShownPrompts(a);
    EXPECT_NE(a.prompter.Shown().back().text.find("The profile 'All Accounts' was also changed"),
              std::string::npos);
    EXPECT_EQ(Element(a, "All Accounts", "DoTotals"), c.totals);
    EXPECT_EQ(Element(a, "Past Due", "DoLineCount"), "1");
  }
}

TEST(ConcurrentEditorsTest, AnUnchangedFileGetsExactlyTheClassicBytes) {
  HeadlessEditor a;
  a.Open(kViews, kDefaults, kSetup);
  Select(a, "All Accounts");
  a->chkTotals.UserClick();
  ASSERT_TRUE(SaveProfile(*a));
  const std::string expected = a->ViewsDoc.ToString();
  Ok(a);
  EXPECT_EQ(a.dir.Read("views.xml"), expected);
}

TEST(ConcurrentEditorsTest, RenamedHereAndChangedThereAsksUnderTheNewName) {
  HeadlessEditor a;
  a.Open(ViewsFile({{"Mine", "<DataSet>Accounts</DataSet><AcctViewType>0</AcctViewType>"},
                    {"Other", "<DataSet>Accounts</DataSet><AcctViewType>0</AcctViewType>"}}),
         kDefaults, kSetup);
  Neighbour b(a);
  Select(b.h, "Mine");
  b.h->chkTotals.SetValue(1);
  ASSERT_TRUE(SaveProfile(*b.h));
  Ok(b.h);

  Select(a, "Mine");
  a.prompter.QueueInput("Renamed");
  a->cmdEditProfile.Click();
  a.prompter.QueueAnswer(ui::Answer::kNo);  // keep theirs: "Mine" stays as they left it
  a->cmdOK.Click();
  EXPECT_FALSE(a->Visible());
  EXPECT_NE(a.prompter.Shown().back().text.find("'Renamed'"), std::string::npos);
  EXPECT_EQ(Element(a, "Mine", "DoTotals"), "1");
  EXPECT_EQ(Element(a, "Renamed", "Name"), "<none>");
}

TEST(ConcurrentEditorsTest, AWriterHeldTooLongGetsAClearMessageAndNothingIsWritten) {
  HeadlessEditor a;
  a.Open(kViews, kDefaults, kSetup);
  a->Show();
  Select(a, "All Accounts");
  a->chkTotals.UserClick();
  ASSERT_TRUE(SaveProfile(*a));
  const std::string path = (a.dir.Path() / "views.xml").string();
  // Another writer: a lock of its own open file, which this one must wait for.
  std::optional<filesafety::FileLock> other =
      filesafety::FileLock::Acquire(filesafety::LockPathFor(path), std::chrono::milliseconds(0));
  ASSERT_TRUE(other);
  ::setenv("CVVE_LOCK_WAIT_MS", "100", 1);
  a->cmdOK.Click();
  ::unsetenv("CVVE_LOCK_WAIT_MS");
  EXPECT_TRUE(a->Visible());
  EXPECT_FALSE(a.prompter.WaitCursor());
  EXPECT_EQ(Box(a.prompter.Shown().back()),
            Box("File In Use", "OK", "exclamation",
                "The file '" + path +
                    "' is being saved by another user.  Nothing was written; please try again "
                    "in a moment."));
  EXPECT_EQ(a.dir.Read("views.xml"), kViews);
  ASSERT_EQ(a.prompter.WriteFailures().size(), 1u);
  // Once the other writer is done, OK goes through.
  other.reset();
  a->cmdOK.Click();
  EXPECT_FALSE(a->Visible());
  EXPECT_NE(a.dir.Read("views.xml"), kViews);
}

}  // namespace
}  // namespace cvve::testing
