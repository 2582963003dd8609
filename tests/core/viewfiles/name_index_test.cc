#include "viewfiles/name_index.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "fixtures.h"
#include "profiles/profile_commands.h"
#include "viewfiles/profile_record.h"

namespace cvve::testing {
namespace {

using ui::Answer;

// What the classic look-up finds: the first node the path expression selects.
XmlNode ByExpression(const DocumentCursor& doc, const std::string& name) {
  std::vector<XmlNode> found = SelectNodes(doc.Root(), ProfilePath(name));
  return found.empty() ? XmlNode() : found.front();
}

void ExpectAgrees(ProfileIndex& index, const DocumentCursor& doc,
                  std::initializer_list<const char*> names) {
  for (const char* name : names) {
    SCOPED_TRACE(name);
    EXPECT_EQ(index.Find(doc, name), ByExpression(doc, name));
  }
}

TEST(ProfileIndexTest, FindsTheFirstRecordTheExpressionSelects) {
  DocumentCursor doc;
  ASSERT_TRUE(doc.LoadText(
      "<Views><Profiles>"
      "<Profile><Name>Split<![CDATA[ Name]]></Name></Profile>"
      "<Profile><Name>First</Name><Name>Alias</Name></Profile>"
      "<Profile><Name><b>Deep</b></Name></Profile><Other><Name>NotAProfile</Name></Other>"
      "<Profile><Name/></Profile><Profile><Name>Twice</Name><Name>Twice</Name></Profile>"
      "</Profiles><Extra><Profile><Name>Outside</Name></Profile></Extra>"
      "<Profiles><Profile><Name>Second Section</Name></Profile>"
      "<Profile><Name>Alias</Name></Profile><Profile><Name>First</Name></Profile></Profiles>"
      "</Views>"));
  ProfileIndex index;
  ExpectAgrees(index, doc,
               {"Split Name", "First", "Alias", "Deep", "", "Twice", "Second Section",
                "NotAProfile", "Outside", "Split", "first", " First"});
  EXPECT_EQ(ChildText(index.Find(doc, "Alias"), "Name"), "First");

  // The first look-up in a freshly loaded document walks the records rather
  // than building the index: each name as that first look-up.
  const std::string text = doc.ToString();
  for (const char* name : {"Split Name", "First", "Alias", "Deep", "", "Twice", "Second Section",
                           "NotAProfile", "Outside", "first"}) {
    SCOPED_TRACE(name);
    ASSERT_TRUE(doc.LoadText(text));
    EXPECT_EQ(index.Find(doc, name), ByExpression(doc, name));
    EXPECT_EQ(index.Find(doc, name), ByExpression(doc, name));  // now through the index
  }

  // Another document, or the same one loaded again, is indexed afresh.
  ASSERT_TRUE(doc.LoadText("<Views><Profiles><Profile><Name>Alias</Name></Profile>"
                           "</Profiles></Views>"));
  ExpectAgrees(index, doc, {"Alias", "First", "Deep"});
  DocumentCursor other;
  ASSERT_TRUE(other.LoadText("<Views><Profiles><Profile><Name>Deep</Name></Profile>"
                             "</Profiles></Views>"));
  ExpectAgrees(index, other, {"Alias", "Deep"});
  doc.Reset();
  EXPECT_FALSE(index.Find(doc, "Alias"));
}

// Look-ups take records in only as far as they walk: whatever the order of
// the names asked for (before the walk's place, beyond it, absent, in a
// later Profiles element, twice), and with records added or changed while
// the walk is half way, each answer is the expression's.
TEST(ProfileIndexTest, AnyOrderOfLookUpsAgreesWithTheExpression) {
  const std::string text =
      "<Views><Profiles><Profile><Name>A</Name></Profile><Profile><Name>B</Name>"
      "<Name>C</Name></Profile><Profile><Name>C</Name></Profile><Profile><Name>D</Name>"
      "</Profile></Profiles><Profiles><Profile><Name>B</Name></Profile><Profile>"
      "<Name>E</Name></Profile></Profiles></Views>";
  std::vector<std::string> names = {"A", "B", "C", "D", "E", "none"};
  std::sort(names.begin(), names.end());
  int orders = 0;
  do {
    SCOPED_TRACE(::testing::PrintToString(names));
    DocumentCursor doc;
    ASSERT_TRUE(doc.LoadText(text));
    ProfileIndex index;
    for (const std::string& name : names) {
      EXPECT_EQ(index.Find(doc, name), ByExpression(doc, name)) << name;
      EXPECT_EQ(index.Find(doc, name), ByExpression(doc, name)) << name << " again";
    }
    ++orders;
  } while (std::next_permutation(names.begin(), names.end()));
  EXPECT_EQ(orders, 720);

  // Half way through the walk (at "B"), a record is put first, or one is
  // renamed: the walk starts again.
  for (const bool added : {true, false}) {
    SCOPED_TRACE(added ? "added" : "renamed");
    DocumentCursor doc;
    ASSERT_TRUE(doc.LoadText(text));
    ProfileIndex index;
    ASSERT_EQ(index.Find(doc, "B"), ByExpression(doc, "B"));
    XmlNode first = doc.Root().child("Profiles");
    if (added) {
      XmlNode r = first.prepend_child("Profile");
      SetNodeText(r.append_child("Name"), "D");
      index.Added(r);
    } else {
      SetNodeText(first.child("Profile").child("Name"), "E");
      index.Changed();
    }
    for (const char* name : {"A", "B", "D", "E"}) {
      EXPECT_EQ(index.Find(doc, name), ByExpression(doc, name)) << name;
    }
  }
}

// Records added, renamed and removed behind the index's back, each followed
// by the call the commands make.
TEST(ProfileIndexTest, StaysTrueThroughAddedRenamedAndRemovedRecords) {
  DocumentCursor doc;
  ASSERT_TRUE(doc.LoadText("<Views><Profiles><Profile><Name>A</Name></Profile>"
                           "<Profile><Name>B</Name></Profile></Profiles>"
                           "<Profiles><Profile><Name>C</Name></Profile></Profiles></Views>"));
  ProfileIndex index;
  ASSERT_TRUE(index.Find(doc, "A"));
  XmlNode first = doc.Root().child("Profiles");
  XmlNode a = first.first_child();

  const struct {
    const char* what;
    XmlNode (*change)(XmlNode first_profiles);
    bool added;  // told through Added, otherwise through Changed
  } steps[] = {
      {"new name appended",
       [](XmlNode p) {
         XmlNode r = p.append_child("Profile");
         SetNodeText(r.append_child("Name"), "D");
         return r;
       },
       true},
      {"known name put before the first of it",
       [](XmlNode p) {
         XmlNode r = p.prepend_child("Profile");
         SetNodeText(r.append_child("Name"), "B");
         return r;
       },
       true},
      {"known name appended after it",
       [](XmlNode p) {
         XmlNode r = p.append_child("Profile");
         SetNodeText(r.append_child("Name"), "A");
         return r;
       },
       true},
      {"new name in a second Profiles",
       [](XmlNode p) {
         XmlNode r = p.next_sibling("Profiles").prepend_child("Profile");
         SetNodeText(r.append_child("Name"), "E");
         return r;
       },
       true},
      {"new name outside any Profiles",
       [](XmlNode p) {
         XmlNode r = p.parent().append_child("Other").append_child("Profile");
         SetNodeText(r.append_child("Name"), "F");
         return r;
       },
       true},
      {"rename",
       [](XmlNode p) {
         for (XmlNode r = p.child("Profile"); r; r = r.next_sibling("Profile")) {
           if (ChildText(r, "Name") == "D") SetNodeText(r.child("Name"), "C");
         }
         return XmlNode();
       },
       false},
      {"remove",
       [](XmlNode p) {
         for (XmlNode r = p.child("Profile"); r; r = r.next_sibling("Profile")) {
           if (ChildText(r, "Name") != "A") continue;
           p.remove_child(r);
           break;
         }
         return XmlNode();
       },
       false},
  };
  for (const auto& step : steps) {
    SCOPED_TRACE(step.what);
    const XmlNode record = step.change(first);
    if (step.added) {
      index.Added(record);
    } else {
      index.Changed();
    }
    ExpectAgrees(index, doc, {"A", "B", "C", "D", "E", "F"});
  }
  ASSERT_TRUE(index.Find(doc, "A"));
  EXPECT_NE(index.Find(doc, "A"), a);  // the later A, now the first
}

// Columns of a data set: the union over every data set of the name, first
// in document order, as the setup file's expression selects them.
TEST(ColumnIndexTest, FindsTheFirstColumnTheExpressionSelects) {
  DocumentCursor setup;
  ASSERT_TRUE(setup.LoadText(
      "<Setup><DataSets>"
      "<DataSet><Name>Accounts</Name><Columns><Column><Name>Account</Name><F>1</F></Column>"
      "<Column><Name>Bal<![CDATA[ance]]></Name></Column></Columns>"
      "<Columns><Column><Name>Second Columns</Name></Column></Columns></DataSet>"
      "<DataSet><Name>Deals</Name><Columns><Column><Name>Account</Name><F>2</F></Column>"
      "<Column><Name>Only In Deals</Name></Column></Columns></DataSet>"
      "<DataSet><Name>Accounts</Name><Name>Both</Name><Columns>"
      "<Column><Name>Account</Name><F>3</F></Column><Column><Name>Later</Name></Column>"
      "<Column><Name>Alias</Name><Name>Twice</Name></Column></Columns></DataSet>"
      "</DataSets><DataSets><DataSet><Name>Deals</Name><Columns>"
      "<Column><Name>Far</Name></Column></Columns></DataSet></DataSets></Setup>"));
  ColumnIndex index;
  for (const char* data_set : {"Accounts", "Deals", "Both", "None", ""}) {
    for (const char* column : {"Account", "Balance", "Second Columns", "Only In Deals", "Later",
                               "Alias", "Twice", "Far", "Bal", ""}) {
      SCOPED_TRACE(std::string(data_set) + " / " + column);
      const XmlNode expected =
          SelectSingleNode(setup.Root(), std::string("./DataSets/DataSet[Name='") + data_set +
                                             "']/Columns/Column[Name='" + column + "']");
      EXPECT_EQ(index.Find(setup, data_set, column), expected);
    }
    EXPECT_EQ(index.DataSet(setup, data_set),
              SelectSingleNode(setup.Root(), std::string("DataSets/DataSet[Name='") + data_set +
                                                 "']"));
  }
  EXPECT_EQ(ChildText(index.Find(setup, "Both", "Account"), "F"), "3");
  // A setup file loaded again is indexed afresh.
  ASSERT_TRUE(setup.LoadText("<Setup><DataSets><DataSet><Name>Both</Name><Columns><Column>"
                             "<Name>Account</Name><F>4</F></Column></Columns></DataSet>"
                             "</DataSets></Setup>"));
  EXPECT_EQ(ChildText(index.Find(setup, "Both", "Account"), "F"), "4");
  EXPECT_FALSE(index.Find(setup, "Both", "Later"));
}

// The editor's own commands keep both documents' look-ups what the
// expression finds, through a run of them.
TEST(ProfileIndexTest, EditorCommandsKeepLookUpsTrue) {
  HeadlessEditor h;
  h.Open(ViewsFile({{"Mine", "<DataSet>Accounts</DataSet><AcctViewType>1</AcctViewType>"},
                    {"Other", "<AcctViewType>1</AcctViewType>"},
                    {"Twin", "<AcctViewType>1</AcctViewType>"},
                    {"Twin", "<AcctViewType>1</AcctViewType><Marker>second</Marker>"}}),
         kDefaults, kSetup);
  auto agrees = [&](const char* after) {
    SCOPED_TRACE(after);
    for (const char* name : {"Mine", "Other", "Twin", "Fresh", "Mine Copy", "Renamed",
                             "All Accounts", "Past Due", "My Accounts"}) {
      SCOPED_TRACE(name);
      EXPECT_EQ(h->ProfilesIn(h->ViewsDoc).Find(h->ViewsDoc, name),
                ByExpression(h->ViewsDoc, name));
      EXPECT_EQ(h->ProfilesIn(h->DefaultsDoc).Find(h->DefaultsDoc, name),
                ByExpression(h->DefaultsDoc, name));
    }
  };
  agrees("open");

  h.prompter.QueueInput("Fresh");
  h->cmdNewProfile.Click();
  agrees("new");
  ASSERT_TRUE(SelectProfileCustom(*h, "Fresh"));

  Select(h, "Mine");
  h.prompter.QueueInput("Mine Copy");
  h->cmdCopyProfile.Click();
  agrees("copy");
  ASSERT_TRUE(SelectProfileCustom(*h, "Mine Copy"));

  Select(h, "Mine");
  h.prompter.QueueInput("Renamed");
  h->cmdEditProfile.Click();
  agrees("rename");
  EXPECT_FALSE(SelectProfileCustom(*h, "Mine"));

  Select(h, "Other");
  h.prompter.QueueAnswer(Answer::kYes);
  h->cmdDeleteProfile.Click();
  agrees("delete");
  EXPECT_FALSE(SelectProfileCustom(*h, "Other"));

  // A system profile's first save adds its record to the views file.
  ASSERT_FALSE(SelectProfileCustom(*h, "All Accounts"));
  Select(h, "All Accounts");
  h->chkTotals.UserClick();
  h->cmdSaveProfile.Click();
  agrees("save");
  EXPECT_TRUE(SelectProfileCustom(*h, "All Accounts"));

  // The first of two records of a name stays the one found.
  const XmlNode twin = SelectProfileCustom(*h, "Twin");
  ASSERT_TRUE(twin);
  EXPECT_EQ(ChildText(twin, "Marker"), "");
}

}  // namespace
}  // namespace cvve::testing
