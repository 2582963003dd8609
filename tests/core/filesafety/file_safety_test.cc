// The file-safety mechanisms on their own: the lock, temporary files and
// links, kept files, report transactions and their recovery.
#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <functional>
#include <optional>

#include "base/error.h"
#include "filesafety/atomic_file.h"
#include "filesafety/file_identity.h"
#include "filesafety/file_lock.h"
#include "filesafety/kept_file.h"
#include "filesafety/report_transaction.h"
#include "fixtures.h"

namespace cvve::testing {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using filesafety::FileLock;

std::string Slurp(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
}

TEST(FileLockTest, ASecondWriterWaitsBoundedlyAndThenGetsNothing) {
  TempDir dir;
  const std::string lock_path = (dir.Path() / ".views.xml.lock").string();
  int ready[2];
  ASSERT_EQ(::pipe(ready), 0);
  const pid_t holder = ::fork();
  ASSERT_GE(holder, 0);
  if (holder == 0) {
    std::optional<FileLock> lock = FileLock::Acquire(lock_path, 0ms);
    const char byte = lock ? 'y' : 'n';
    [[maybe_unused]] ssize_t n = ::write(ready[1], &byte, 1);
    ::usleep(600000);
    ::_exit(0);
  }
  char byte = 0;
  ASSERT_EQ(::read(ready[0], &byte, 1), 1);
  ASSERT_EQ(byte, 'y');
  std::vector<bool> waits;
  const auto start = std::chrono::steady_clock::now();
  std::string error;
  EXPECT_FALSE(FileLock::Acquire(lock_path, 150ms, [&](bool on) { waits.push_back(on); }, &error));
  EXPECT_GE(std::chrono::steady_clock::now() - start, 150ms);
  EXPECT_EQ(waits, (std::vector<bool>{true, false}));  // the wait cursor on, then off
  EXPECT_NE(error.find("held by another writer"), std::string::npos);
  // Once the holder is gone the lock is free at once.
  EXPECT_TRUE(FileLock::Acquire(lock_path, 5s));
  int status = 0;
  ::waitpid(holder, &status, 0);
  ::close(ready[0]);
  ::close(ready[1]);
}

TEST(AtomicFileTest, TemporaryNamesBelongToTheirFileOnly) {
  struct Case {
    const char* name;
    const char* leaf;
    bool temp;
  };
  for (const Case& c : {Case{".views.xml.tmp-host-12-AbCdEf", "views.xml", true},
                        Case{".views.xml.tmp-host-12-AbCdEf", "", true},
                        Case{".views.xml.tmp-host-12-AbCdEf", "views.xm", false},
                        Case{".old views.xml.tmp-h-1-x", "views.xml", false},
                        Case{"views.xml.tmp-host-12-AbCdEf", "views.xml", false},
                        Case{".views.xml.bak", "views.xml", false},
                        Case{".reports.lock", "", false}}) {
    SCOPED_TRACE(std::string(c.name) + " / " + c.leaf);
    EXPECT_EQ(filesafety::IsTempFor(c.name, c.leaf), c.temp);
  }
}

TEST(AtomicFileTest, StaleTemporaryFilesOfDeadProcessesGoWithTheNextSave) {
  TempDir dir;
  char host[256] = {};
  ::gethostname(host, sizeof host - 1);
  std::string me(host);
  for (char& c : me) {
    if (c == '-' || c == '.' || c == '/') c = '_';
  }
  // A child that exits leaves a pid nobody has.
  const pid_t dead = ::fork();
  if (dead == 0) ::_exit(0);
  ::waitpid(dead, nullptr, 0);
  const std::string stale = ".views.xml.tmp-" + me + "-" + std::to_string(dead) + "-AAAAAA";
  const std::string alive = ".views.xml.tmp-" + me + "-" + std::to_string(::getpid()) + "-BBBBBB";
  const std::string other = ".other.xml.tmp-" + me + "-" + std::to_string(dead) + "-CCCCCC";
  for (const std::string& name : {stale, alive, other}) dir.Write(name, "partial");
  filesafety::ReplaceFile((dir.Path() / "views.xml").string(), "<Views/>");
  EXPECT_EQ(FilesIn(dir.Path().string()), (Names{other, alive, "views.xml"}));
  EXPECT_EQ(filesafety::RemoveStaleTemps(dir.Path().string()), 1);  // the other file's
}

TEST(AtomicFileTest, ALinkedFileKeepsItsLinkAndItsTargetIsReplaced) {
  TempDir dir;
  const std::string target = dir.Write("shared/views.xml", "<Views>old</Views>");
  fs::create_symlink(target, dir.Path() / "views.xml");
  filesafety::ReplaceFile((dir.Path() / "views.xml").string(), "<Views>new</Views>");
  EXPECT_TRUE(fs::is_symlink(dir.Path() / "views.xml"));
  EXPECT_EQ(Slurp(target), "<Views>new</Views>");
  EXPECT_EQ(Slurp(target + ".bak"), "<Views>old</Views>");
  EXPECT_EQ(FilesIn(dir.Path().string()), (Names{"shared", "views.xml"}));
}

TEST(KeptFileTest, EveryKeepGetsANameOfItsOwn) {
  TempDir dir;
  const std::string path = dir.Write("views.xml", "<Views><Profiles><Profile>");
  const std::string first = filesafety::KeepFile(path);
  const std::string second = filesafety::KeepFile(path);
  EXPECT_NE(first, second);
  for (const std::string& kept : {first, second}) {
    EXPECT_EQ(Slurp(kept), "<Views><Profiles><Profile>");
    EXPECT_NE(kept.find("views.xml.unreadable-"), std::string::npos) << kept;
  }
  EXPECT_EQ(Slurp(path), "<Views><Profiles><Profile>");  // the original stays until replaced
}

TEST(FileIdentityTest, AnyDifferenceInSizeTimeOrBytesIsAChange) {
  TempDir dir;
  const std::string path = dir.Write("views.xml", "<Views>a</Views>");
  std::string bytes;
  const filesafety::FileIdentity first = filesafety::ReadIdentity(path, &bytes);
  EXPECT_TRUE(first.exists && first.readable);
  EXPECT_EQ(bytes, "<Views>a</Views>");
  EXPECT_EQ(filesafety::ReadIdentity(path), first);
  // Same size, time set back: only the bytes tell.
  const auto time = fs::last_write_time(path);
  dir.Write("views.xml", "<Views>b</Views>");
  fs::last_write_time(path, time);
  EXPECT_NE(filesafety::ReadIdentity(path), first);
  EXPECT_FALSE(filesafety::ReadIdentity((dir.Path() / "none.xml").string()).exists);
}

// The bytes come back whole whatever the size, and a folder or an
// unreadable path has no bytes and no hash.
TEST(FileIdentityTest, ReadsEveryByteOfFilesOfAnySize) {
  TempDir dir;
  std::string large;
  for (int i = 0; large.size() < 300000; ++i) large += "<Profile>" + std::to_string(i) + "</Profile>";
  large += std::string(1, '\0') + "after a zero byte";
  for (const std::string& content : {std::string(), std::string("x"), large}) {
    SCOPED_TRACE(content.size());
    const std::string path = dir.Write("file.xml", content);
    std::string bytes = "stale";
    const filesafety::FileIdentity id = filesafety::ReadIdentity(path, &bytes);
    EXPECT_TRUE(id.exists && id.readable);
    EXPECT_EQ(id.size, content.size());
    EXPECT_EQ(bytes, content);
    EXPECT_EQ(id.hash, filesafety::ContentHash(content));
  }
  // One byte changed anywhere changes the hash.
  std::string changed = large;
  changed[changed.size() / 2] ^= 1;
  EXPECT_NE(filesafety::ContentHash(changed), filesafety::ContentHash(large));
  const filesafety::FileIdentity folder = filesafety::ReadIdentity(dir.Path().string());
  EXPECT_TRUE(folder.exists);
  EXPECT_FALSE(folder.readable);
}

// Writes `text` over the file through its own inode, as an editor that does
// not replace files does.
void RewriteInPlace(const std::string& path, const std::string& text) {
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out << text;
}

// The bytes of a file as read come back later from its descriptor, whatever
// replaced or removed the file meanwhile; a rewrite of the same file in place
// is told, as those bytes are gone.
TEST(LoadedBytesTest, TheBytesAsReadComeBackUntilTheFileItselfIsRewritten) {
  const std::string original = "<Views><Profiles><Profile><Name>A</Name></Profile></Profiles></Views>";
  std::string same_size = original;
  same_size[same_size.find('A')] = 'B';
  struct Case {
    const char* what;
    std::function<void(const std::string& path)> meanwhile;
    bool same_bytes;
  };
  const std::vector<Case> cases = {
      {"nothing", [](const std::string&) {}, true},
      {"replaced by a new file", [](const std::string& p) { filesafety::ReplaceFile(p, "<V/>"); },
       true},
      {"removed", [](const std::string& p) { fs::remove(p); }, true},
      {"renamed away and another put there",
       [](const std::string& p) {
         fs::rename(p, p + ".old");
         std::ofstream(p) << "<Other/>";
       },
       true},
      {"the same bytes written in place",
       [&](const std::string& p) { RewriteInPlace(p, original); }, true},
      {"other bytes of the same size in place",
       [&](const std::string& p) { RewriteInPlace(p, same_size); }, false},
      {"longer in place", [&](const std::string& p) { RewriteInPlace(p, original + " "); }, false},
      {"truncated in place", [](const std::string& p) { RewriteInPlace(p, ""); }, false},
      {"appended to",
       [](const std::string& p) { std::ofstream(p, std::ios::app) << "<!-- more -->"; }, false},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    TempDir dir;
    const std::string path = dir.Write("views.xml", original);
    filesafety::FileRead read = filesafety::ReadForParse(path, true);
    ASSERT_TRUE(read.identity.readable);
    EXPECT_EQ(read.identity, filesafety::ReadIdentity(path));
    EXPECT_EQ(std::string(read.buffer, read.size), original);
    ASSERT_TRUE(read.bytes);
    c.meanwhile(path);
    const std::optional<std::string> again = read.bytes->Read();
    if (c.same_bytes) {
      EXPECT_EQ(again, original);
    } else {
      EXPECT_EQ(again, std::nullopt);
    }
  }
}

// Without asking for them the bytes are not kept; a file that is not there
// or cannot be read gives no buffer and no bytes, and an empty one an empty
// buffer; a buffer handed over is no longer freed here.
TEST(LoadedBytesTest, OnlyReadableFilesGiveBuffersAndOnlyWhenAskedBytes) {
  TempDir dir;
  const std::string path = dir.Write("views.xml", "<Views/>");
  const std::string empty = dir.Write("empty.xml", "");
  EXPECT_FALSE(filesafety::ReadForParse(path, false).bytes);
  for (const std::string& unreadable : {(dir.Path() / "none.xml").string(), dir.Path().string()}) {
    filesafety::FileRead read = filesafety::ReadForParse(unreadable, true);
    EXPECT_FALSE(read.identity.readable) << unreadable;
    EXPECT_EQ(read.buffer, nullptr);
    EXPECT_FALSE(read.bytes);
  }
  filesafety::FileRead nothing = filesafety::ReadForParse(empty, true);
  EXPECT_TRUE(nothing.identity.readable);
  EXPECT_EQ(nothing.size, 0u);
  EXPECT_EQ(nothing.bytes->Read(), std::string());

  filesafety::FileRead read = filesafety::ReadForParse(path, false);
  pugi::xml_document doc;
  const std::size_t size = read.size;
  ASSERT_TRUE(DocumentCursor::ParseInPlace(doc, read.Release(), size));
  EXPECT_EQ(read.buffer, nullptr);
  EXPECT_STREQ(doc.document_element().name(), "Views");
  filesafety::FileRead moved = std::move(read);  // nothing left to free twice
  EXPECT_EQ(moved.buffer, nullptr);
}

// A report change is interrupted after its intent file is in place: the
// next Recover finishes it. One that never got its intent file in place is
// only temporary files, which go.
TEST(ReportTransactionTest, RecoveryFinishesACommittedChangeAndDropsAnUncommittedOne) {
  TempDir dir;
  const std::string folder = dir.Path().string();
  const std::string cvx = dir.Write("A.cvx", "old cvx");
  const std::string cvr = dir.Write("A.cvr", "old cvr");
  const std::string gone = dir.Write("B.cvx", "to go");

  // Committed: the new files as temporary files, the intent naming them.
  filesafety::PreparedFile new_cvx = filesafety::Prepare(cvx, "new cvx");
  filesafety::PreparedFile new_cvr = filesafety::Prepare(cvr, "new cvr");
  filesafety::ReplaceFile(filesafety::IntentPath(folder),
                          "cvve-intent 1\nrename\t" + new_cvx.temp + "\t" + cvx + "\nrename\t" +
                              new_cvr.temp + "\t" + cvr + "\nremove\t" + gone + "\nend\n",
                          false);
  // As if the first rename had happened before the crash.
  fs::rename(new_cvx.temp, cvx);
  EXPECT_TRUE(filesafety::RecoverReports(folder));
  EXPECT_EQ(Slurp(cvx), "new cvx");
  EXPECT_EQ(Slurp(cvr), "new cvr");
  EXPECT_FALSE(fs::exists(gone));
  EXPECT_FALSE(fs::exists(filesafety::IntentPath(folder)));

  // A torn intent (no end line) is not acted on.
  filesafety::ReplaceFile(filesafety::IntentPath(folder), "cvve-intent 1\nremove\t" + cvx + "\n",
                          false);
  EXPECT_FALSE(filesafety::RecoverReports(folder));
  EXPECT_TRUE(fs::exists(cvx));
  fs::remove(filesafety::IntentPath(folder));

  // A whole transaction, then one that fails to write: nothing changes.
  filesafety::ReportTransaction change(folder);
  change.Put(cvx, "newer cvx");
  change.Put(cvr, "newer cvr");
  change.Commit();
  EXPECT_EQ(Slurp(cvx) + "|" + Slurp(cvr), "newer cvx|newer cvr");
  filesafety::ReportTransaction failing(folder);
  failing.Put(cvx, "never");
  failing.Put((dir.Path() / "missing folder" / "A.cvr").string(), "never");
  EXPECT_THROW(failing.Commit(), Error);
  EXPECT_EQ(Slurp(cvx) + "|" + Slurp(cvr), "newer cvx|newer cvr");
  EXPECT_EQ(FilesIn(folder), (Names{"A.cvr", "A.cvr.bak", "A.cvx", "A.cvx.bak"}));
}

}  // namespace
}  // namespace cvve::testing
