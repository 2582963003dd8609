#pragma once
// An editor window on a small inline file set in a temporary folder, with
// either a recording prompter (answers queued beforehand) or the Qt one, and
// helpers that click and type the way a user does.
#include <QAbstractItemModelTester>
#include <QApplication>
#include <QTimer>
#include <QTreeView>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "component/editor_environment.h"
#include "component/frm_acct_view_edit.h"
#include "gui/editor_window.h"
#include "gui/qt_dialog_host.h"
#include "gui/qt_prompter.h"
#include "host/host_services.h"
#include "test_support.h"
#include "ui/headless_prompter.h"

namespace cvve::guitest {

// Setup: folders 0 "All Accounts" and 1 "Collections"; data set "Accounts"
// with columns "Account #", "Balance", "Last Name" and the filters
// 1 "Active accounts" (no value), 2 "Balance" (one value, default 0),
// 3 "Next payment due" (two values); tabs 1 "General", 2 "Payments".
// Defaults: the system profile "Account Lookup" in folder 0. Views: the user
// profiles "My Accounts" and "Old Accounts" in folder 1.
extern const char* const kSetup;
extern const std::string kDefaults;
extern const std::string kViews;

struct GuiEditor {
  enum class Prompts { kRecorded, kQt };
  explicit GuiEditor(Prompts prompts = Prompts::kRecorded, std::string executable = "viewedit");
  ~GuiEditor();

  // Writes the file set and runs LoadFiles in view mode.
  void Load();
  // Load, then shows the window, puts testers on its item models and
  // clicks `profile` when one is given.
  void Open(const char* profile = nullptr);

  frmAcctViewEdit* operator->() { return ed.get(); }
  template <class W>
  W* Find(const char* name) const {
    return window->findChild<W*>(name);
  }

  // User actions, each followed by the queued work they start.
  void ClickNode(const std::string& text);
  void ClickNodeKey(const std::string& key);
  // A cell of lstFilters: 1-based row as the model counts, 0-based column.
  void ClickFilterCell(int row, int column);
  QRect FilterCellRect(int row, int column) const;  // in the viewport
  void ClickButton(const char* name);
  void ClickCheck(const char* name);
  void Press(QWidget* on, Qt::Key key, Qt::KeyboardModifiers modifiers = {});
  void Settle() const;
  std::string ViewsFileText() const { return dir.Read("views.xml"); }

  testing::TempDir dir;
  DefaultHostServices host;
  ui::HeadlessPrompter recorded;
  gui::QtPrompter qt_prompter;
  gui::QtDialogHost dialogs;
  EditorEnvironment env;
  std::unique_ptr<frmAcctViewEdit> ed;
  std::unique_ptr<gui::EditorWindow> window;
  QTreeView* filters = nullptr;
  std::vector<std::unique_ptr<QAbstractItemModelTester>> testers;
};

// Waits in the event loop for the next visible modal W (a QMessageBox, a
// QInputDialog) and hands it to `answer`, which closes it.
template <class W>
void AnswerNext(std::function<void(W*)> answer) {
  auto* poll = new QTimer;
  poll->setInterval(10);
  QObject::connect(poll, &QTimer::timeout, [poll, answer] {
    auto* box = qobject_cast<W*>(QApplication::activeModalWidget());
    if (!box || !box->isVisible()) return;
    poll->stop();
    poll->deleteLater();
    answer(box);
  });
  poll->start();
}

}  // namespace cvve::guitest
