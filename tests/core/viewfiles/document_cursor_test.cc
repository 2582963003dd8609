#include "viewfiles/document_cursor.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "base/error.h"
#include "test_support.h"

namespace cvve {
namespace {

using testing::TempDir;

TEST(DocumentCursorTest, KeepsCommentsAsSiblingsAndDropsBlankText) {
  DocumentCursor doc;
  ASSERT_TRUE(doc.LoadText(
      "<R>\n  <A>1</A>\n  <!-- note -->\n  <?pi x?>\n  <B>  two  </B>\n</R>"));
  XmlNode a = doc.Root().first_child();
  ASSERT_EQ(std::string(a.name()), "A");
  EXPECT_EQ(NextSibling(a).type(), pugi::node_comment);
  EXPECT_EQ(NextSibling(NextSibling(a)).type(), pugi::node_pi);
  EXPECT_EQ(ChildText(doc.Root(), "B"), "  two  ");  // text with content keeps its blanks
  EXPECT_EQ(ChildText(NextSibling(a), "Name"), "");  // a comment has no children
}

TEST(DocumentCursorTest, PathsThatDoNotCompileFindNothing) {
  DocumentCursor doc;
  ASSERT_TRUE(doc.LoadText("<R><P><Name>O'Brien</Name></P><P><Name>x</Name></P></R>"));
  EXPECT_TRUE(SelectNodes(doc.Root(), "P[Name='O'Brien']").empty());
  EXPECT_FALSE(SelectSingleNode(doc.Root(), "P[Name='O'Brien']"));
  EXPECT_EQ(SelectNodes(doc.Root(), "P[Name='x']").size(), 1u);
  EXPECT_TRUE(SelectNodes(XmlNode(), "P").empty());
}

TEST(DocumentCursorTest, NavigatesAndWritesByChildName) {
  DocumentCursor doc;
  ASSERT_TRUE(doc.LoadText("<Views><Profiles/></Views>"));
  EXPECT_EQ(std::string(doc.GoToChild("").name()), "Views");
  ASSERT_TRUE(doc.GoToChild("Profiles"));
  doc.AddChild("Profile");
  doc.SetValue("Name", "A");
  doc.SetValue("Name", "B");  // replaces, does not add a second element
  EXPECT_EQ(doc.GetValue("Name"), "B");
  EXPECT_EQ(doc.GetValue("Missing"), "");
  EXPECT_EQ(SelectNodes(doc.CurrentNode(), "Name").size(), 1u);
  EXPECT_FALSE(doc.GoToChild("Nowhere"));
  EXPECT_FALSE(doc.CurrentNode());
  EXPECT_THROW(doc.GetValue("Name"), Error);
  EXPECT_THROW(doc.SetValue("Name", "x"), Error);
  EXPECT_THROW(doc.AddChild("X"), Error);
}

TEST(DocumentCursorTest, CreatesRootAndPathOnlyWhenAsked) {
  DocumentCursor doc;
  EXPECT_FALSE(doc.GoToChild(""));
  ASSERT_TRUE(doc.GoToChild("", true));
  EXPECT_FALSE(doc.GoToChild("Profiles"));
  doc.GoToChild("");
  ASSERT_TRUE(doc.GoToChild("Profiles", true));
  EXPECT_EQ(doc.ToString().find("<Views>") != std::string::npos, true);
}

TEST(DocumentCursorTest, ValuesRoundTripThroughAFile) {
  const std::string values[] = {
      "O'Brien & Sons <Lot 2>",
      "a ]]> b ]]]]> c",
      "Ünïcødé – 日本語",
      "CQ:SELECT * FROM ACCTS WHERE x #@!= 3 AND y=\"q\"",
      std::string(100000, 'x') + "]]>",
  };
  TempDir dir;
  for (bool block : {false, true}) {
    DocumentCursor doc;
    doc.GoToChild("", true);
    for (std::size_t i = 0; i < std::size(values); ++i) {
      std::string name = "V" + std::to_string(i);
      block ? doc.SetValueBlock(name, values[i]) : doc.SetValue(name, values[i]);
    }
    std::string path = (dir.Path() / "round.xml").string();
    doc.Save(path);
    DocumentCursor back;
    ASSERT_TRUE(back.Load(path));
    back.GoToChild("");
    for (std::size_t i = 0; i < std::size(values); ++i) {
      EXPECT_EQ(back.GetValue("V" + std::to_string(i)), values[i]) << "block=" << block << " #" << i;
    }
  }
}

TEST(DocumentCursorTest, SaveKeepsOnePreviousVersionAndLeavesNoTemporaries) {
  TempDir dir;
  std::string path = dir.Write("views.xml", "<Views><V>old</V></Views>");
  DocumentCursor doc;
  ASSERT_TRUE(doc.LoadText("<Views><V>new</V></Views>"));
  doc.Save(path);
  doc.GoToChild("");
  doc.SetValue("V", "newer");
  doc.Save(path);
  EXPECT_NE(dir.Read("views.xml").find("newer"), std::string::npos);
  EXPECT_NE(dir.Read("views.xml.bak").find("<V>new</V>"), std::string::npos);
  int files = 0;
  for (const auto& entry : std::filesystem::directory_iterator(dir.Path())) {
    (void)entry;
    ++files;
  }
  EXPECT_EQ(files, 2);
}

TEST(DocumentCursorTest, AFailedSaveLeavesTheOldFileWhole) {
  TempDir dir;
  DocumentCursor doc;
  ASSERT_TRUE(doc.LoadText("<Views/>"));
  // The target is a folder that is not empty: the final rename fails after
  // the temporary file was written.
  dir.Write("target.xml/keep.txt", "keep");
  EXPECT_THROW(doc.Save((dir.Path() / "target.xml").string()), Error);
  EXPECT_EQ(dir.Read("target.xml/keep.txt"), "keep");
  int files = 0;
  for (const auto& entry : std::filesystem::directory_iterator(dir.Path())) {
    EXPECT_EQ(entry.path().filename(), "target.xml");
    ++files;
  }
  EXPECT_EQ(files, 1);
  // A folder that does not exist.
  EXPECT_THROW(doc.Save((dir.Path() / "no" / "such.xml").string()), Error);
}

TEST(DocumentCursorTest, HostileFilesNeitherCrashNorThrow) {
  TempDir dir;
  std::string deep;
  for (int i = 0; i < 20000; ++i) deep += "<a>";
  deep += "x";
  for (int i = 0; i < 20000; ++i) deep += "</a>";
  const std::string inputs[] = {"", std::string("\0\x01\xff<<>", 6), "<R><unclosed>", deep,
                                "<R>" + std::string(5'000'000, 'v') + "</R>"};
  for (const auto& text : inputs) {
    DocumentCursor doc;
    doc.LoadText(text);
    doc.GoToChild("");
    EXPECT_NO_THROW(NodeText(doc.Root()));
    EXPECT_TRUE(SelectNodes(doc.Root(), "DataSets/DataSet").empty());
  }
  DocumentCursor doc;
  ASSERT_TRUE(doc.LoadText(deep));
  EXPECT_EQ(NodeText(doc.Root()), "x");
}

TEST(DocumentCursorTest, GenerationTellsThatNodesAreGone) {
  DocumentCursor doc;
  auto first = doc.Generation();
  doc.LoadText("<R/>");
  EXPECT_NE(doc.Generation(), first);
  auto second = doc.Generation();
  doc.Reset();
  EXPECT_NE(doc.Generation(), second);
}

}  // namespace
}  // namespace cvve
