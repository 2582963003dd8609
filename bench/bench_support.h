#pragma once
// What the core's benchmarks share: a scratch folder for generated file sets,
// a headless editor on a file set, and the bare parse of a file set's three
// documents, the anchor the editor's own work is measured against.
#include <chrono>
#include <memory>
#include <string>

#include "component/editor_environment.h"
#include "component/frm_acct_view_edit.h"
#include "fileset_generator.h"
#include "host/host_services.h"
#include "opening/read_ahead.h"
#include "ui/headless_dialog_host.h"
#include "ui/headless_prompter.h"

namespace cvve::bench {

using Clock = std::chrono::steady_clock;
inline double Seconds(Clock::duration d) { return std::chrono::duration<double>(d).count(); }

// A folder of this process under the temporary folder, removed at exit.
std::string ScratchFolder(const std::string& name);

// The file set of `profiles` profiles in the default shape, written once per process.
const FileSet& GeneratedSet(int profiles);

struct HeadlessEditor {
  // With `read_ahead`, the first LoadFiles takes the files read ahead there.
  explicit HeadlessEditor(const FileSet& set, opening::ReadAhead* read_ahead = nullptr);
  DefaultHostServices host;
  ui::HeadlessPrompter prompter;
  ui::HeadlessDialogHost dialogs;
  EditorEnvironment env{host, prompter, dialogs, nullptr};
  std::unique_ptr<frmAcctViewEdit> ed;
};

// Seconds to parse the set's three files as the editor's documents do, with
// nothing else: three documents kept between calls, each emptied and loaded
// again. Aborts when a file does not parse.
double BareParseSeconds(const FileSet& set);

}  // namespace cvve::bench
