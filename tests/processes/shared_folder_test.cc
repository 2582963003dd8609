// Two `viewedit` processes on one views folder, as two workstations: one
// loads, the other saves and closes, then the first saves and closes.
#include <gtest/gtest.h>

#include <functional>

#include "process_support.h"

namespace cvve::processes {
namespace {

constexpr const char* kMine = "North Lot Weekly Payers";
constexpr const char* kOther = "Big Cash Receipts";

std::string Flipped(const std::string& value) { return value == "1" ? "0" : "1"; }

// A opens the account views and changes kMine's totals, and waits.
std::string OpenAndChange(LiveScript& a) {
  return a.Send(std::string("open acct\nselect tvwViews ") + kMine +
                "\nclick chkTotals\nclick cmdSaveProfile\nstate ProfileChanged\n");
}

TEST(SharedFolderTest, ChangesOfBothWorkstationsSurvive) {
  struct Case {
    const char* what;
    std::string theirs;  // B's whole session
    std::function<void(const std::string& before, const std::string& after)> check;
  };
  const std::vector<Case> cases = {
      {"different profiles",
       std::string("open acct\nselect tvwViews ") + kOther +
           "\nclick chkShowLineCount\nclick cmdSaveProfile\nclick cmdOK\n",
       [](const std::string& before, const std::string& after) {
         EXPECT_EQ(ProfileValue(after, kOther, "DoLineCount"),
                   Flipped(ProfileValue(before, kOther, "DoLineCount")));
       }},
      {"a new profile", "open acct\ninput Night Shift\nclick cmdNewProfile\nclick cmdOK\n",
       [](const std::string&, const std::string& after) {
         EXPECT_EQ(ProfileValue(after, "Night Shift", "AcctViewType"), "0");
       }},
      {"a deletion",
       std::string("open acct\nselect tvwViews ") + kOther +
           "\nanswer Yes\nclick cmdDeleteProfile\nclick cmdOK\n",
       [](const std::string&, const std::string& after) {
         EXPECT_EQ(ProfileValue(after, kOther, "Name"), "<none>");
       }},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    DemoCopy demo;
    const std::string before = demo.Read("acctviews.xml");
    LiveScript a(demo.Path());
    ASSERT_NE(OpenAndChange(a), "");
    const Outcome b = RunScript(demo.Path(), c.theirs);
    ASSERT_EQ(b.code, 0) << b.err;
    const Outcome done = a.Finish("click cmdOK\nmessages\n");
    ASSERT_EQ(done.code, 0) << done.err;
    EXPECT_EQ(done.out.find("Save Changes"), std::string::npos) << done.out;  // no question
    const std::string after = demo.Read("acctviews.xml");
    EXPECT_EQ(ProfileValue(after, kMine, "DoTotals"),
              Flipped(ProfileValue(before, kMine, "DoTotals")));
    c.check(before, after);
  }
}

TEST(SharedFolderTest, TheSameProfileAsksAndEachAnswerDoesWhatItSays) {
  struct Case {
    const char* answer;
    bool mine_kept;
    bool closed;
  };
  for (const Case& c : {Case{"Yes", true, true}, Case{"No", false, true},
                        Case{"Cancel", false, false}}) {
    SCOPED_TRACE(c.answer);
    DemoCopy demo;
    const std::string before = demo.Read("acctviews.xml");
    LiveScript a(demo.Path());
    ASSERT_NE(OpenAndChange(a), "");
    const Outcome b = RunScript(demo.Path(), std::string("open acct\nselect tvwViews ") + kMine +
                                                 "\nclick chkShowLineCount\nclick "
                                                 "cmdSaveProfile\nclick cmdOK\n");
    ASSERT_EQ(b.code, 0) << b.err;
    const Outcome done =
        a.Finish(std::string("answer ") + c.answer + "\nclick cmdOK\nstate editorOpen\n");
    ASSERT_EQ(done.code, 0) << done.err;
    EXPECT_NE(done.out.find(c.closed ? "false" : "true"), std::string::npos) << done.out;
    const std::string after = demo.Read("acctviews.xml");
    const std::string totals = ProfileValue(before, kMine, "DoTotals");
    const std::string lines = ProfileValue(before, kMine, "DoLineCount");
    EXPECT_EQ(ProfileValue(after, kMine, "DoTotals"), c.mine_kept ? Flipped(totals) : totals);
    EXPECT_EQ(ProfileValue(after, kMine, "DoLineCount"), c.mine_kept ? lines : Flipped(lines));
  }
}

TEST(SharedFolderTest, ReportsAskOnlyWhenTheSameReportChanged) {
  struct Case {
    const char* what;
    const char* theirs;  // the report B saves
    bool asked;
  };
  for (const Case& c : {Case{"the same report", "Past Due Accounts", true},
                        Case{"different reports", "Inventory Aging", false}}) {
    SCOPED_TRACE(c.what);
    DemoCopy demo;
    LiveScript a(demo.Path());
    ASSERT_NE(a.Send("open report\nselect tvwViews Past Due Accounts\nclick "
                     "chkTotals\nstate ProfileChanged\n"),
              "");
    const Outcome b =
        RunScript(demo.Path(), std::string("open report\nselect tvwViews ") + c.theirs +
                                   "\nclick chkShowLineCount\nclick cmdSaveProfile\n");
    ASSERT_EQ(b.code, 0) << b.err;
    const std::string theirs_cvr = demo.Read(std::string("Custom Reports/") + c.theirs + ".cvr");
    const Outcome done =
        a.Finish(std::string(c.asked ? "answer Yes\n" : "") + "click cmdSaveProfile\nmessages\n");
    ASSERT_EQ(done.code, 0) << done.err;
    EXPECT_EQ(done.out.find("was changed by another user") != std::string::npos, c.asked)
        << done.out;
    // Ours is written; theirs, when it was another report, is untouched.
    const std::string cvx = demo.Read("Custom Reports/Past Due Accounts.cvx");
    EXPECT_EQ(ProfileValue(cvx, "Past Due Accounts", "DoTotals"), "0") << cvx;
    if (!c.asked) {
      EXPECT_EQ(demo.Read(std::string("Custom Reports/") + c.theirs + ".cvr"), theirs_cvr);
    }
  }
}

}  // namespace
}  // namespace cvve::processes
