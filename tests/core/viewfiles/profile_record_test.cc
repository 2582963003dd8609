#include "viewfiles/profile_record.h"

#include <gtest/gtest.h>

#include "fixtures.h"

namespace cvve::testing {
namespace {

// Records are found by walking them; what is found must be what the path
// expression "./Profiles/Profile[Name='...']" selects: the first of equal
// names, nothing for a name with an apostrophe.
TEST(ProfileRecordTest, WalkFindsWhatTheExpressionSelects) {
  HeadlessEditor h;
  h.Open(
      "<Views><Profiles>"
      "<Profile><Name>Split<![CDATA[ Name]]></Name><SortBy>cdata</SortBy></Profile>"
      "<Profile><Name>First</Name><Name>Alias</Name><SortBy>two names</SortBy></Profile>"
      "<Profile><Name><b>Deep</b></Name></Profile><Other><Name>NotAProfile</Name></Other>"
      "<Profile><Name>Bob's</Name></Profile>"
      "</Profiles><Profiles><Profile><Name>Second Section</Name></Profile>"
      "<Profile><Name>Alias</Name><SortBy>later</SortBy></Profile></Profiles></Views>",
      "", kSetup);
  const XmlNode root = h->ViewsDoc.Root();
  for (const char* name : {"Split Name", "First", "Alias", "Deep", "Second Section", "NotAProfile",
                           "Split", "", "Bob's", "x' or 'a'='a"}) {
    SCOPED_TRACE(name);
    std::vector<XmlNode> expected = SelectNodes(root, ProfilePath(name));
    XmlNode found = SelectProfileCustom(*h, name);
    EXPECT_EQ(found, expected.empty() ? XmlNode() : expected.front());
    EXPECT_EQ(h->ViewsDoc.CurrentNode(), found);
    EXPECT_EQ(h->CurrentProfileNode(), found);
  }
  EXPECT_EQ(ChildText(SelectProfileCustom(*h, "Alias"), "SortBy"), "two names");
  EXPECT_TRUE(SelectProfileCustom(*h, "x' or 'a'='a"));  // the pasted name rules
  EXPECT_FALSE(SelectProfileCustom(*h, "Bob's"));
  EXPECT_TRUE(FindProfileElement(h->ViewsDoc, "Bob's"));  // walking finds it
}

TEST(ProfileRecordTest, EachFileIsSearchedOnItsOwnAndReloadsDropTheRecord) {
  HeadlessEditor h;
  h.Open(kViews, kDefaults, kSetup);
  XmlNode sys = SelectProfile(*h, "All Accounts");
  ASSERT_TRUE(sys);
  EXPECT_EQ(h->CurrentProfileNode(), sys);
  EXPECT_EQ(h->DefaultsDoc.GetValue("SQL"), "CQ:SELECT stored");
  EXPECT_FALSE(SelectProfile(*h, "Mine"));  // only in the views file
  EXPECT_FALSE(h->CurrentProfileNode());
  EXPECT_FALSE(h->DefaultsDoc.CurrentNode());

  ASSERT_TRUE(SelectProfileCustom(*h, "Mine"));
  h->ViewsDoc.Load(h->ViewsPath);
  EXPECT_FALSE(h->CurrentProfileNode());  // the old handle is not handed out
  ASSERT_TRUE(SelectProfileCustom(*h, "Mine"));
  h->ViewsDoc.Reset();
  EXPECT_FALSE(h->CurrentProfileNode());
}

}  // namespace
}  // namespace cvve::testing
