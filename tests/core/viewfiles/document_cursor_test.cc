#include "viewfiles/document_cursor.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "base/error.h"
#include "fixtures.h"

namespace cvve::testing {
namespace {

TEST(DocumentCursorTest, KeepsCommentsAsSiblingsAndDropsBlankText) {
  DocumentCursor doc;
  ASSERT_TRUE(doc.LoadText("<R>\n  <A>1</A>\n  <!-- note -->\n  <?pi x?>\n  <B>  two  </B>\n</R>"));
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

TEST(DocumentCursorTest, NavigatesAndWritesByChildNameCreatingOnlyWhenAsked) {
  DocumentCursor doc;
  EXPECT_FALSE(doc.GoToChild(""));
  ASSERT_TRUE(doc.GoToChild("", true));
  EXPECT_EQ(std::string(doc.CurrentNode().name()), "Views");
  EXPECT_FALSE(doc.GoToChild("Profiles"));
  doc.GoToChild("");
  ASSERT_TRUE(doc.GoToChild("Profiles", true));
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

TEST(DocumentCursorTest, ValuesRoundTripThroughAFile) {
  const std::string values[] = {
      "O'Brien & Sons <Lot 2>",
      "a ]]> b ]]]]> c",
      "Ünïcødé – 日本語",
      "CQ:SELECT * FROM ACCTS WHERE x #@!= 3 AND y=\"q\"",
      std::string(100000, 'x') + "]]>",
  };
  TempDir dir;
  const std::string path = (dir.Path() / "round.xml").string();
  for (bool block : {false, true}) {
    DocumentCursor doc;
    doc.GoToChild("", true);
    for (std::size_t i = 0; i < std::size(values); ++i) {
      std::string name = "V" + std::to_string(i);
      block ? doc.SetValueBlock(name, values[i]) : doc.SetValue(name, values[i]);
    }
    doc.Save(path);
    DocumentCursor back;
    ASSERT_TRUE(back.Load(path));
    back.GoToChild("");
    for (std::size_t i = 0; i < std::size(values); ++i) {
      EXPECT_EQ(back.GetValue("V" + std::to_string(i)), values[i]) << "block=" << block << i;
    }
  }
}

TEST(DocumentCursorTest, SaveKeepsOnePreviousVersionAndFailsWithoutHarm) {
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
  EXPECT_EQ(FilesIn(dir.Path().string()),
            (std::vector<std::string>{"views.xml", "views.xml.bak"}));  // no temporaries

  // The target is a folder that is not empty: the final rename fails after
  // the temporary file was written; nothing is left behind.
  TempDir other;
  other.Write("target.xml/keep.txt", "keep");
  EXPECT_THROW(doc.Save((other.Path() / "target.xml").string()), Error);
  EXPECT_EQ(other.Read("target.xml/keep.txt"), "keep");
  EXPECT_EQ(FilesIn(other.Path().string()), std::vector<std::string>{"target.xml"});
  EXPECT_THROW(doc.Save((other.Path() / "no" / "such.xml").string()), Error);
}

TEST(DocumentCursorTest, HostileFilesNeitherCrashNorThrow) {
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

}  // namespace
}  // namespace cvve::testing

namespace cvve {
namespace {

// A record of `count` elements E0, E1, ... each holding its number.
std::string WideRecord(int count) {
  std::string text = "<P>";
  for (int i = 0; i < count; ++i) {
    text += "<E" + std::to_string(i) + ">" + std::to_string(i) + "</E" + std::to_string(i) + ">";
  }
  return text + "</P>";
}

TEST(RecordValuesTest, ReadsWhatGetValueReadsOnEveryRecordShape) {
  DocumentCursor doc;
  ASSERT_TRUE(doc.LoadText(
      "<R><P><A>1</A><!-- c --><B>two<X>!</X></B><A>later</A><C><![CDATA[<c>]]></C><D/>"
      "<?pi p?><a>low</a><AA>double</AA></P>"
      "<P><B>second</B></P>"
      // Names alike in length and in their first, fourth and last letters.
      "<P><K1aXz>1</K1aXz><K2bXz>2</K2bXz><K3cXz>3</K3cXz><K2bXz>again</K2bXz><Kz>z</Kz></P>" +
      WideRecord(200) + "<P/></R>"));
  const std::vector<std::string> names = {"A",  "B",  "C",   "D",    "a",    "AA", "X",
                                          "",   "Z",  "E0",  "E127", "E128", "E199",
                                          "E200", std::string("A\0B", 3), "K1aXz", "K2bXz",
                                          "K3cXz", "K9zXz", "Kz"};
  RecordValues values;
  std::vector<XmlNode> records;
  for (XmlNode p = doc.Root().first_child(); p; p = p.next_sibling()) records.push_back(p);
  // Back and forth, so that each record is read after another one.
  for (int round = 0; round < 2; ++round) {
    for (XmlNode record : records) {
      doc.SetCurrentNode(record);
      for (const std::string& name : names) {
        EXPECT_EQ(values.Get(doc, name), doc.GetValue(name)) << record.path() << " " << name;
      }
    }
    std::reverse(records.begin(), records.end());
  }
  doc.SetCurrentNode(XmlNode());
  EXPECT_THROW(values.Get(doc, "A"), Error);
}

}  // namespace
}  // namespace cvve
