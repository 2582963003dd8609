// Files read ahead on another thread, by the launcher or by the editor's own
// load: the editor must end up exactly as the classic loads leave it, on good
// files and bad ones, and the file as loaded must still be there for the
// merge at OK.
#include "opening/read_ahead.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <utility>
#include <vector>

#include "component/frm_acct_view_edit.h"
#include "filesafety/file_identity.h"
#include "fixtures.h"
#include "profiles/profile_saver.h"
#include "script/editor_state.h"
#include "viewfiles/profile_record.h"

namespace cvve::testing {
namespace {

namespace fs = std::filesystem;

// An editor on the folder of `files`, opened with or without reading ahead.
struct Opened {
  Opened(const TempDir& files, bool ahead) {
    h.host.view_files_folder = files.Path().string();
    h.host.reports_base_folder = files.Path().string();
    const std::string at = files.Path().string() + "/";
    if (ahead) {
      read_ahead = std::make_unique<opening::ReadAhead>(at + "views.xml", at + "defs.xml",
                                                        at + "setup.xml");
      h->Env().read_ahead = read_ahead.get();
    }
    h->SetReportMode(0);
    h->LoadFiles("views.xml", "defs.xml", "setup.xml");
  }
  std::unique_ptr<opening::ReadAhead> read_ahead;
  HeadlessEditor h;
};

TEST(ReadAheadTest, TheEditorIsLeftExactlyAsItsOwnLoadLeavesIt) {
  struct Case {
    const char* what;
    std::string views, defaults, setup;  // "-": no such file
  };
  const std::vector<Case> cases = {
      {"the shared set", kViews, kDefaults, kSetup},
      {"a views file cut short", kViews.substr(0, kViews.size() / 2), kDefaults, kSetup},
      {"an empty views file", "", kDefaults, kSetup},
      {"a declaration only", "<?xml version=\"1.0\"?>\n", kDefaults, kSetup},
      {"no views file", "-", kDefaults, kSetup},
      {"no defaults file", kViews, "-", kSetup},
      {"a defaults file that does not parse", kViews, "<Views><Profiles>", kSetup},
      {"no setup file", kViews, kDefaults, "-"},
      {"a views folder in place of the file", "/", kDefaults, kSetup},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    TempDir files;
    for (const auto& [name, text] : {std::pair{"views.xml", c.views}, std::pair{"defs.xml", c.defaults},
                                     std::pair{"setup.xml", c.setup}}) {
      if (text == "/") {
        fs::create_directories(files.Path() / name);
      } else if (text != "-") {
        files.Write(name, text);
      }
    }
    // What the classic loads leave: each document as Load leaves it, and
    // the views file's identity and wholeness.
    auto path = [&files](const char* name) { return (files.Path() / name).string(); };
    auto loaded = [](const std::string& file, std::string* error = nullptr) {
      DocumentCursor doc;
      std::error_code ec;
      bool ok = false;
      if (fs::is_regular_file(file, ec)) ok = doc.Load(file, error);
      return std::pair{doc.ToString(), ok};
    };
    std::string error;
    const auto [views_text, views_ok] = loaded(path("views.xml"), &error);
    const filesafety::FileIdentity identity = filesafety::ReadIdentity(path("views.xml"));
    const bool by_rule = fs::is_regular_file(path("views.xml"));
    const bool whole = !identity.exists ||
                       (by_rule && identity.readable &&
                        (views_ok || error == "No document element found"));

    Opened own(files, false), ahead(files, true);
    for (const Opened* opened : {&own, &ahead}) {
      const frmAcctViewEdit& e = *opened->h.ed;
      EXPECT_EQ(e.ViewsDoc.ToString(), views_text);
      EXPECT_EQ(e.DefaultsDoc.ToString(), loaded(path("defs.xml")).first);
      EXPECT_EQ(e.SetupDoc.ToString(), loaded(path("setup.xml")).first);
      EXPECT_EQ(e.views_loaded.identity, identity);
      EXPECT_EQ(e.views_loaded.whole, whole);
      EXPECT_EQ(static_cast<bool>(e.views_loaded.bytes), identity.readable);
    }
    EXPECT_EQ(script::EditorState(*ahead.h, ahead.h.prompter),
              script::EditorState(*own.h, own.h.prompter));
    EXPECT_EQ(ahead.h.Messages(), own.h.Messages());
  }
}

// Each file is given once, and only for a path of the set; a file that is
// not there is not given at all, nor anything after a drop.
TEST(ReadAheadTest, EachFileIsGivenOnceAndOnlyForItsPath) {
  TempDir files;
  const std::string at = files.Path().string() + "/";
  files.Write("views.xml", kViews);
  files.Write("setup.xml", kSetup);
  opening::ReadAhead read_ahead(at + "views.xml", at + "defs.xml", at + "setup.xml");
  EXPECT_EQ(read_ahead.Take(at + "other.xml"), nullptr);
  EXPECT_EQ(read_ahead.Take(at + "defs.xml"), nullptr);  // not there
  std::unique_ptr<opening::ParsedFile> views = read_ahead.Take(at + "views.xml");
  ASSERT_NE(views, nullptr);
  EXPECT_TRUE(views->parsed);
  EXPECT_TRUE(views->read.bytes);  // the views file keeps its bytes for the merge
  EXPECT_EQ(views->read.bytes->Read(), kViews);
  EXPECT_EQ(read_ahead.Take(at + "views.xml"), nullptr);
  std::unique_ptr<opening::ParsedFile> setup = read_ahead.Take(at + "setup.xml");
  ASSERT_NE(setup, nullptr);
  EXPECT_FALSE(setup->read.bytes);
  EXPECT_STREQ(setup->document.document_element().name(), "ViewSetup");

  // Dropped before a file is taken: nothing is given any more.
  opening::ReadAhead dropped(at + "views.xml", "", at + "setup.xml");
  dropped.Drop();
  EXPECT_EQ(dropped.Take(at + "views.xml"), nullptr);
  EXPECT_EQ(dropped.Take(""), nullptr);
}

// The views file as it was read ahead is the base of the merge at OK: a
// change of another profile by another editor merges without a question; a
// rewrite in place of the file leaves no base, and the profile changed here
// is asked about.
TEST(ReadAheadTest, TheFileAsReadAheadIsTheBaseOfTheMerge) {
  for (const bool in_place : {false, true}) {
    SCOPED_TRACE(in_place ? "rewritten in place" : "replaced");
    TempDir files;
    files.Write("views.xml", kViews);
    files.Write("defs.xml", kDefaults);
    files.Write("setup.xml", kSetup);
    Opened ours(files, true);
    ours.h->Show();
    {
      Opened theirs(files, false);
      Select(theirs.h, "Past Due");
      theirs.h->chkShowLineCount.SetValue(1);
      ASSERT_TRUE(SaveProfile(*theirs.h));
      if (in_place) {
        std::ofstream(files.Path() / "views.xml", std::ios::binary | std::ios::trunc)
            << theirs.h->ViewsDoc.ToString();
      } else {
        theirs.h->cmdOK.Click();
      }
    }
    Select(ours.h, "Mine");
    ours.h->chkTotals.SetValue(1);
    ASSERT_TRUE(SaveProfile(*ours.h));
    const std::size_t shown = ours.h.prompter.Shown().size();
    ours.h.prompter.QueueAnswer(ui::Answer::kYes);
    ours.h->cmdOK.Click();
    EXPECT_FALSE(ours.h->Visible());
    EXPECT_EQ(ours.h.prompter.Shown().size(), shown + (in_place ? 1 : 0)) << ShownPrompts(ours.h);
    DocumentCursor merged;
    ASSERT_TRUE(merged.Load((files.Path() / "views.xml").string()));
    EXPECT_EQ(ChildText(FindProfileElement(merged, "Past Due"), "DoLineCount"), "1");
    EXPECT_EQ(ChildText(FindProfileElement(merged, "Mine"), "DoTotals"), "1");
  }
}

}  // namespace
}  // namespace cvve::testing
