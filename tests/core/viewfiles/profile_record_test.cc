#include "viewfiles/profile_record.h"

#include <gtest/gtest.h>

#include "test_support.h"

namespace cvve {
namespace {

using testing::HeadlessEditor;

TEST(ProfileRecordTest, FindsTheFirstOfEqualNamesInEachFile) {
  HeadlessEditor h;
  h.Open(
      "<Views><Profiles><Profile><Name>A</Name><SortBy>first</SortBy></Profile>"
      "<Profile><Name>A</Name><SortBy>second</SortBy></Profile></Profiles></Views>",
      "<Views><Profiles><Profile><Name>Sys</Name><DataSet>Accounts</DataSet></Profile>"
      "</Profiles></Views>",
      "<ViewSetup/>");
  XmlNode a = SelectProfileCustom(*h, "A");
  ASSERT_TRUE(a);
  EXPECT_EQ(ChildText(a, "SortBy"), "first");
  EXPECT_EQ(h->ViewsDoc.CurrentNode(), a);
  EXPECT_EQ(h->CurrentProfileNode(), a);
  EXPECT_EQ(h->ViewsDoc.GetValue("SortBy"), "first");

  XmlNode sys = SelectProfile(*h, "Sys");
  ASSERT_TRUE(sys);
  EXPECT_EQ(h->CurrentProfileNode(), sys);
  EXPECT_FALSE(SelectProfile(*h, "A"));  // only in the views file
  EXPECT_FALSE(h->CurrentProfileNode());
  EXPECT_FALSE(h->DefaultsDoc.CurrentNode());
  EXPECT_EQ(FindProfileElement(h->ViewsDoc, "A"), a);
}

TEST(ProfileRecordTest, ApostrophesAndReloadsLoseTheRecord) {
  HeadlessEditor h;
  h.Open("<Views><Profiles><Profile><Name>Bob's</Name></Profile></Profiles></Views>", "",
         "<ViewSetup/>");
  EXPECT_FALSE(SelectProfileCustom(*h, "Bob's"));
  EXPECT_TRUE(FindProfileElement(h->ViewsDoc, "Bob's"));  // walking finds it
  std::string path =
      h.dir.Write("views.xml", "<Views><Profiles><Profile><Name>X</Name></Profile></Profiles></Views>");
  h->ViewsDoc.Load(path);
  ASSERT_TRUE(SelectProfileCustom(*h, "X"));
  h->ViewsDoc.Load(path);
  EXPECT_FALSE(h->CurrentProfileNode());  // the old handle is not handed out
}

}  // namespace
}  // namespace cvve
