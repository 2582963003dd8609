// SIGKILL at random moments during the writes of real `viewedit` processes:
// after each kill and the next opening, every file is old or new, never a
// mix, and the next save leaves no temporary file behind.
#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <iostream>
#include <cstdlib>
#include <algorithm>
#include <random>
#include <thread>

#include "process_support.h"

namespace cvve::processes {
namespace {

using Files = std::map<std::string, std::string>;

constexpr const char* kStepDelay = "CVVE_TEST_STEP_DELAY_US=5000";

int Rounds() {
  const char* text = std::getenv("CVVE_KILL_ROUNDS");
  return text ? std::atoi(text) : 40;
}

struct Operation {
  const char* name;
  std::string opening;  // the same files opened and closed, nothing written
  std::string script;
  std::string next_save;  // a save after the recovery, on other files
  bool has_middle;        // a report copy saves its source first, then copies
};

const std::string kOpenReports = "open report\nclick cmdCancel\n";
const std::string kReportSave =
    "open report\nselect tvwViews Past Due Accounts\nclick chkTotals\nclick cmdSaveProfile\n";
const std::string kOtherReportSave =
    "open report\nselect tvwViews Inventory Aging\nclick chkTotals\nclick cmdSaveProfile\n";
const std::string kViewSave =
    "open acct\nselect tvwViews North Lot Weekly Payers\nclick chkTotals\nclick "
    "cmdSaveProfile\nclick cmdOK\n";

// What kOtherReportSave writes, left out of the comparison.
const char* const kNextSaveWrites[] = {"Custom Reports/Inventory Aging.cvx",
                                       "Custom Reports/Inventory Aging.cvr"};

std::vector<Operation> Operations() {
  return {
      {"view save", "open acct\nclick cmdCancel\n", kViewSave, kViewSave, false},
      {"report save", kOpenReports, kReportSave, kOtherReportSave, false},
      {"report copy", kOpenReports,
       "open report\nselect tvwViews Past Due Accounts\nclick chkTotals\ninput Copied "
       "Report\nclick cmdCopyProfile\n",
       kOtherReportSave, true},
      {"report rename", kOpenReports,
       "open report\nselect tvwViews Past Due Accounts\ninput Renamed Report\nclick "
       "cmdEditProfile\n",
       kOtherReportSave, false},
  };
}

// The folder after a copy's first step: the source saved, no copy yet.
Files Middle(const Files& before, const Files& after) {
  Files middle = before;
  for (const char* file : {"Custom Reports/Past Due Accounts.cvx",
                           "Custom Reports/Past Due Accounts.cvr"}) {
    middle[file] = after.at(file);
  }
  return middle;
}

std::string Describe(const Files& files, const Files& before, const Files& after) {
  std::string text;
  for (const auto& [name, bytes] : files) {
    const bool old_bytes = before.count(name) && before.at(name) == bytes;
    const bool new_bytes = after.count(name) && after.at(name) == bytes;
    text += name + (old_bytes ? " old" : "") + (new_bytes ? " new" : "") + "\n";
  }
  return text;
}

TEST(KillHarnessTest, EveryFileIsOldOrNewAfterAKillAtAnyMoment) {
  const int rounds = Rounds();
  std::mt19937 random(20261122);
  DemoCopy demo;
  for (const Operation& op : Operations()) {
    SCOPED_TRACE(op.name);
    // The two ends, and when the writes start and end: kills are spread
    // over the writing, after the loading that writes nothing.
    demo.Reset();
    const Files before = Snapshot(demo.Path());
    const auto load_start = std::chrono::steady_clock::now();
    ASSERT_EQ(RunScript(demo.Path(), op.opening).code, 0);
    const auto loading = std::chrono::steady_clock::now() - load_start;
    // The quickest of three runs: a run slowed by the machine's load would
    // put most kills after the process has ended.
    auto took = std::chrono::steady_clock::duration::max();
    for (int run = 0; run < 3; ++run) {
      demo.Reset();
      const auto start = std::chrono::steady_clock::now();
      const Outcome full = RunScript(demo.Path(), op.script, {{kStepDelay}});
      took = std::min(took, std::chrono::steady_clock::now() - start);
      ASSERT_EQ(full.code, 0) << full.err;
    }
    const Files after = Snapshot(demo.Path());
    ASSERT_NE(before, after);
    std::vector<Files> allowed = {before, after};
    if (op.has_middle) allowed.push_back(Middle(before, after));

    using std::chrono::microseconds;
    const long span = std::chrono::duration_cast<microseconds>(took).count();
    const long quiet = std::chrono::duration_cast<microseconds>(loading).count() * 8 / 10;
    std::uniform_int_distribution<long> moment(std::min(quiet, span / 2), span);
    int interrupted = 0;
    std::vector<int> landed(allowed.size());  // rounds that ended old, new (, middle)
    for (int round = 0; round < rounds; ++round) {
      SCOPED_TRACE("round " + std::to_string(round));
      demo.Reset();
      const pid_t pid = StartScript(demo.Path(), op.script, {{kStepDelay}});
      std::this_thread::sleep_for(std::chrono::microseconds(moment(random)));
      ::kill(pid, SIGKILL);
      int status = 0;
      ::waitpid(pid, &status, 0);
      if (WIFSIGNALED(status)) ++interrupted;
      // The next save opens the files again (the opening of the reports
      // finishes or drops what was under way) and writes other files than
      // the ones looked at; a views file is looked at before it.
      Files now = Snapshot(demo.Path());
      if (op.next_save != kViewSave) {
        const Outcome next = RunScript(demo.Path(), op.next_save);
        ASSERT_EQ(next.code, 0) << next.err;
        now = Snapshot(demo.Path());
        for (const char* file : kNextSaveWrites) now[file] = before.at(file);
      }
      std::size_t state = 0;
      while (state < allowed.size() && now != allowed[state]) ++state;
      ASSERT_LT(state, allowed.size()) << Describe(now, before, after);
      ++landed[state];
      if (op.next_save == kViewSave) {
        const Outcome next = RunScript(demo.Path(), op.next_save);
        ASSERT_EQ(next.code, 0) << next.err;
      }
      EXPECT_EQ(Leftovers(demo.Path()), std::vector<std::string>{});
    }
    // Most kills must have landed while the process ran, or the test shows nothing.
    EXPECT_GT(interrupted, rounds / 2);
    std::cout << op.name << ": " << interrupted << " of " << rounds << " killed; ended old "
              << landed[0] << ", new " << landed[1]
              << (op.has_middle ? ", saved but not copied " + std::to_string(landed[2]) : "")
              << "\n";
  }
}

}  // namespace
}  // namespace cvve::processes
