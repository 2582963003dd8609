#pragma once
// The file sets the headless commands read, and a headless editor on one.
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "commands.h"
#include "component/editor_environment.h"
#include "component/frm_acct_view_edit.h"
#include "ui/headless_dialog_host.h"
#include "ui/headless_prompter.h"

namespace viewedit {

struct FileSet {
  std::string label;
  std::string folder;  // empty: the views folder of the options
  std::string views, defaults, setup;
};

// The entry methods' file sets, or three file names given as VIEWS,DEFAULTS,SETUP.
// Throws std::runtime_error for anything else.
FileSet ParseFileSet(const std::string& argument);

// Profile names of the file set in tree order with their kinds: the defaults
// file's (0, or 1 when the views file customises it), then the views file's own (2).
std::vector<std::pair<std::string, int>> ProfilesOf(cvve::frmAcctViewEdit& ed);

// A headless editor in view mode with the file set loaded; its messages are
// kept by `prompter`.
struct LoadedFileSet {
  LoadedFileSet(const FileSet& set, const HostOptions& options);
  cvve::DefaultHostServices host;
  cvve::ui::HeadlessPrompter prompter;
  cvve::ui::HeadlessDialogHost dialogs;
  cvve::EditorEnvironment env;
  std::unique_ptr<cvve::frmAcctViewEdit> editor;
};

}  // namespace viewedit
