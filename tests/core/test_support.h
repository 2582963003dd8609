#pragma once
// The headless editor for tests: demo-free by default, working on file sets
// written into a temporary folder, with the recorded messages at hand.
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>

#include "component/editor_environment.h"
#include "component/frm_acct_view_edit.h"
#include "host/host_services.h"
#include "ui/headless_dialog_host.h"
#include "ui/headless_prompter.h"

namespace cvve::testing {

// A folder that is removed with its contents when the object goes.
class TempDir {
 public:
  TempDir();
  ~TempDir();
  TempDir(const TempDir&) = delete;
  TempDir& operator=(const TempDir&) = delete;
  const std::filesystem::path& Path() const { return path_; }
  // Writes a file (folders created) and returns its full path.
  std::string Write(const std::string& relative, const std::string& text) const;
  std::string Read(const std::string& relative) const;

 private:
  std::filesystem::path path_;
};

// An editor on a temporary view-file folder, with a headless screen.
struct HeadlessEditor {
  HeadlessEditor();
  TempDir dir;
  DefaultHostServices host;
  ui::HeadlessPrompter prompter;
  ui::HeadlessDialogHost dialogs;
  EditorEnvironment env{host, prompter, dialogs, nullptr};
  std::unique_ptr<frmAcctViewEdit> ed;

  frmAcctViewEdit& operator*() { return *ed; }
  frmAcctViewEdit* operator->() { return ed.get(); }
  // Writes the three files (empty text: no file) and runs LoadFiles in view mode.
  void Open(const std::string& views, const std::string& defaults, const std::string& setup);
  // The texts of the message boxes shown so far.
  std::vector<std::string> Messages() const;
  std::string LastMessage() const;
};

// The demo data folder the build knows.
std::string DemoFolder();

}  // namespace cvve::testing
