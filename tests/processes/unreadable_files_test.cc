// Views files the editor cannot read keep their bytes; links stay links;
// writes that fail make `viewedit script` fail, and lose nothing.
#include <gtest/gtest.h>

#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>

#include "process_support.h"

namespace cvve::processes {
namespace {

namespace fs = std::filesystem;

// The kept files beside `name` in the folder.
std::vector<fs::path> Kept(const fs::path& folder, const std::string& name) {
  std::vector<fs::path> kept;
  for (const auto& entry : fs::directory_iterator(folder)) {
    if (entry.path().filename().string().starts_with(name + ".unreadable-")) {
      kept.push_back(entry.path());
    }
  }
  return kept;
}

std::string Slurp(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
}

// A mistyped end tag halfway: only the profiles before it load.
std::string Broken(const std::string& views) {
  std::string text = views;
  const std::size_t tag = text.find("</Profile>", text.size() / 2);
  return text.replace(tag, 10, "</Profle>");
}

TEST(UnreadableFilesTest, BytesTheEditorCouldNotReadAreKeptBeforeOkWritesOverThem) {
  struct Case {
    const char* what;
    std::string file;
    std::string open;
    bool as_nobody;
  };
  const std::vector<Case> cases = {
      {"partial", "acctviews.xml", "open acct", false},
      {"not .xml", "acctviews.txt", "open edit acctviews.txt acctviewsdef.xml viewsetup.xml",
       false},
      {"unreadable", "acctviews.xml", "open acct", true},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    DemoCopy demo;
    const std::string original =
        c.file == "acctviews.txt" ? demo.Read("acctviews.xml") : Broken(demo.Read("acctviews.xml"));
    demo.Write(c.file, original);
    if (c.as_nobody) {
      fs::permissions(demo.Path() / c.file, fs::perms::owner_read | fs::perms::owner_write);
      fs::permissions(demo.Path(), fs::perms::all);
    }
    const Outcome first = RunScript(demo.Path(), c.open + "\nclick cmdOK\n", {{}, c.as_nobody});
    ASSERT_EQ(first.code, 0) << first.err;
    std::vector<fs::path> kept = Kept(demo.Path(), c.file);
    ASSERT_EQ(kept.size(), 1u) << first.err;
    EXPECT_EQ(Slurp(kept[0]), original);
    EXPECT_NE(first.err.find(kept[0].string()), std::string::npos) << first.err;
    // The document written over it loads whole; a second OK keeps nothing
    // more and leaves the kept bytes alone.
    const Outcome second = RunScript(demo.Path(), c.open + "\nclick cmdOK\n", {{}, c.as_nobody});
    ASSERT_EQ(second.code, 0) << second.err;
    if (c.file != "acctviews.txt") {
      EXPECT_EQ(Kept(demo.Path(), c.file).size(), 1u);
    }
    EXPECT_EQ(Slurp(kept[0]), original);
  }
}

TEST(UnreadableFilesTest, ALinkedViewsFileStaysALink) {
  DemoCopy demo;
  const fs::path shared = demo.Path().parent_path() / "shared";
  fs::create_directories(shared);
  fs::rename(demo.Path() / "acctviews.xml", shared / "acctviews.xml");
  fs::create_symlink(shared / "acctviews.xml", demo.Path() / "acctviews.xml");
  const std::string before = Slurp(shared / "acctviews.xml");
  const Outcome run = RunScript(demo.Path(),
                                "open acct\nselect tvwViews Big Cash Receipts\nclick "
                                "chkTotals\nclick cmdSaveProfile\nclick cmdOK\n");
  ASSERT_EQ(run.code, 0) << run.err;
  EXPECT_TRUE(fs::is_symlink(demo.Path() / "acctviews.xml"));
  EXPECT_NE(Slurp(shared / "acctviews.xml"), before);
  EXPECT_EQ(Leftovers(demo.Path()), std::vector<std::string>{});
}

TEST(UnreadableFilesTest, AFailedWriteFailsTheScriptAndLosesNothing) {
  const std::string script =
      "open acct\nselect tvwViews Big Cash Receipts\nclick chkTotals\nclick "
      "cmdSaveProfile\nclick cmdOK\nclick cmdCancel\n";
  {
    SCOPED_TRACE("read-only folder");
    DemoCopy demo;
    const std::string before = demo.Read("acctviews.xml");
    fs::permissions(demo.Path(), fs::perms::owner_all | fs::perms::group_read |
                                     fs::perms::group_exec | fs::perms::others_read |
                                     fs::perms::others_exec);
    const Outcome run = RunScript(demo.Path(), script, {{}, true});
    EXPECT_EQ(run.code, 1);
    EXPECT_NE(run.err.find("line 5: could not write"), std::string::npos) << run.err;
    EXPECT_EQ(demo.Read("acctviews.xml"), before);
  }
  {
    SCOPED_TRACE("full disk");
    DemoCopy demo;
    const fs::path disk = demo.Path().parent_path() / "disk";
    fs::create_directories(disk);
    if (::mount("tmpfs", disk.c_str(), "tmpfs", 0, "size=2m") != 0) {
      GTEST_SKIP() << "a small tmpfs cannot be mounted here (" << std::strerror(errno)
                   << "); the full disk case needs root with mount rights";
    }
    fs::copy(demo.Path(), disk / "views", fs::copy_options::recursive);
    const std::string before = Slurp(disk / "views" / "acctviews.xml");
    {
      // Fill what is left.
      std::ofstream filler(disk / "filler", std::ios::binary);
      const std::string block(4096, 'x');
      while (filler.write(block.data(), block.size())) {
      }
    }
    const Outcome run = RunScript(disk / "views", script);
    EXPECT_EQ(run.code, 1);
    EXPECT_NE(run.err.find("line 5: could not write"), std::string::npos) << run.err;
    EXPECT_EQ(Slurp(disk / "views" / "acctviews.xml"), before);
    ::umount2(disk.c_str(), MNT_DETACH);
  }
}

TEST(ScriptExitTest, AFolderGivenAsTheScriptCannotStart) {
  DemoCopy demo;
  const pid_t pid = ::fork();
  if (pid == 0) {
    ::execl(CVVE_VIEWEDIT, "viewedit", "--views-folder", demo.Path().c_str(), "script",
            demo.Path().c_str(), static_cast<char*>(nullptr));
    ::_exit(127);
  }
  int status = 0;
  ::waitpid(pid, &status, 0);
  ASSERT_TRUE(WIFEXITED(status));
  EXPECT_EQ(WEXITSTATUS(status), 2);
}

}  // namespace
}  // namespace cvve::processes
