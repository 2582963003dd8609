// The dialogs' faces and modes, the Qt DialogHost's modal runs, and the Qt
// Prompter's message boxes, input boxes and wait cursor.
#include <QApplication>
#include <QComboBox>
#include <QInputDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScreen>
#include <QTest>
#include <QTimer>

#include "filters/frm_acct_view_advanced.h"
#include "gui/advanced_filter_dialog.h"
#include "gui/qt_dialog_host.h"
#include "gui/qt_prompter.h"
#include "gui/qt_screen.h"
#include "gui/units.h"
#include "gui/variables_dialog.h"
#include "gui_fixture.h"
#include "variables/frm_variables.h"

using cvve::frmAcctViewAdvanced;
using cvve::frmVariables;
using cvve::gui::ModelDialog;
using cvve::gui::QtDialogHost;
using cvve::gui::QtPrompter;
using cvve::gui::ToPixelsX;
using cvve::gui::ToPixelsY;
namespace ui = cvve::ui;

class DialogsTest : public QObject {
  Q_OBJECT

 private slots:
  void VariablesInDefinitionMode();
  void VariablesInValueEntryMode();
  void VariablesCloseByEscapeKeepsWhatWasTyped();
  void AdvancedFilterGeometryTextAndClose();
  void AdvancedFilterFrameCloseEndsTheEdit();
  void EditorRunsModallyUntilItsFormHides();
  void MessageBoxesMapIconsButtonsAndAnswers_data();
  void MessageBoxesMapIconsButtonsAndAnswers();
  void InputBoxGivesTextOrNothing();
  void WaitCursorNests();
  void CFaceGetsTheQtScreen();
};

namespace {

QLineEdit* Field(ModelDialog& dialog, const char* name) {
  return dialog.findChild<QLineEdit*>(name);
}

// Waits for the next modal input dialog and hands it over.
void AnswerNextInputBox(std::function<void(QInputDialog*)> answer) {
  auto* poll = new QTimer;
  poll->setInterval(10);
  QObject::connect(poll, &QTimer::timeout, [poll, answer] {
    auto* box = qobject_cast<QInputDialog*>(QApplication::activeModalWidget());
    if (!box || !box->isVisible()) return;
    poll->stop();
    poll->deleteLater();
    answer(box);
  });
  poll->start();
}

}  // namespace

void DialogsTest::VariablesInDefinitionMode() {
  frmVariables form;
  form.SetVariable(0, "Start Date:", "Date", "START_DATE");
  form.InputMode(false);
  QtDialogHost host;
  bool shown = false;
  host.on_dialog_shown = [&](ModelDialog& dialog) {
    shown = true;
    QCOMPARE(dialog.windowTitle(), QString("Report Variables"));
    QCOMPARE(dialog.width(), ToPixelsX(&dialog, 6795));
    QCOMPARE(Field(dialog, "txtVariableCaption(0)")->text(), QString("Start Date:"));
    QCOMPARE(dialog.findChild<QComboBox*>("cmbVariable(0)")->currentText(), QString("Date"));
    QVERIFY(Field(dialog, "txtVariableCaption(0)")->isEnabled());
    QCOMPARE(Field(dialog, "txtVariableCaption(0)")->palette().color(QPalette::Base),
             QApplication::palette().color(QPalette::Base));
    // The value column lies beyond the definition-mode width; no message.
    QVERIFY(!Field(dialog, "txtValue(0)")->isVisible());
    QVERIFY(!dialog.findChild<QLabel*>("lblMessage")->isVisible());
    // Define slot 1 by typing and picking.
    QTest::keyClicks(Field(dialog, "txtVariableCaption(1)"), "Salesperson:");
    QTest::keyClicks(Field(dialog, "txtVariableName(1)"), "SALESMAN");
    auto* type = dialog.findChild<QComboBox*>("cmbVariable(1)");
    type->setFocus();
    type->setCurrentIndex(-1);
    QTest::keyClicks(type->lineEdit(), "Salesperson");
    QTest::mouseClick(dialog.findChild<QPushButton*>("cmdOK"), Qt::LeftButton);
  };
  host.RunModal(form);
  QVERIFY(shown);
  QVERIFY(!form.Visible());
  std::string caption, type, name;
  form.GetVariable(1, caption, type, name);
  QCOMPARE(caption, std::string("Salesperson:"));
  QCOMPARE(type, std::string("Salesperson"));
  QCOMPARE(name, std::string("SALESMAN"));
  QVERIFY(form.HasVariables());
}

void DialogsTest::VariablesInValueEntryMode() {
  frmVariables form;
  form.SetVariable(0, "Start Date:", "Date", "START_DATE");
  form.InputMode(true);
  QtDialogHost host;
  bool shown = false;
  host.on_dialog_shown = [&](ModelDialog& dialog) {
    shown = true;
    QCOMPARE(dialog.width(), ToPixelsX(&dialog, 8400));
    auto* message = dialog.findChild<QLabel*>("lblMessage");
    QVERIFY(message->isVisible());
    QCOMPARE(message->text(), QString(cvve::kVariablesMessage));
    for (const char* name : {"txtVariableCaption(0)", "txtVariableName(0)"}) {
      QLineEdit* field = Field(dialog, name);
      QVERIFY(!field->isEnabled());
      QCOMPARE(field->palette().color(QPalette::Base),
               QApplication::palette().color(QPalette::Button));
    }
    QVERIFY(!dialog.findChild<QComboBox*>("cmbVariable(0)")->isEnabled());
    QLineEdit* value = Field(dialog, "txtValue(0)");
    QVERIFY(value->isVisible());
    QVERIFY(value->isEnabled());
    QTest::keyClicks(value, "2026-03-01");
    // Enter presses the default button, OK.
    QTest::keyClick(value, Qt::Key_Return);
  };
  host.RunModal(form);
  QVERIFY(shown);
  QVERIFY(!form.Visible());
  QCOMPARE(form.GetValue(0), std::string("2026-03-01"));
}

void DialogsTest::VariablesCloseByEscapeKeepsWhatWasTyped() {
  frmVariables form;
  form.InputMode(false);
  QtDialogHost host;
  host.on_dialog_shown = [&](ModelDialog& dialog) {
    QTest::keyClicks(Field(dialog, "txtVariableName(2)"), "LOT");
    QTest::keyClick(&dialog, Qt::Key_Escape);
  };
  host.RunModal(form);
  QVERIFY(!form.Visible());
  std::string caption, type, name;
  form.GetVariable(2, caption, type, name);
  QCOMPARE(name, std::string("LOT"));  // the dialog has no cancel
}

void DialogsTest::AdvancedFilterGeometryTextAndClose() {
  frmAcctViewAdvanced form;
  form.SetSQL("CQ:SELECT a FROM b WHERE CQ:x=1");
  QtDialogHost host;
  bool shown = false;
  host.on_dialog_shown = [&](ModelDialog& dialog) {
    shown = true;
    QCOMPARE(dialog.windowTitle(), QString("Advanced Filter"));
    auto* sql = dialog.findChild<QPlainTextEdit*>("txtSQL");
    QVERIFY(sql);
    QCOMPARE(sql->geometry(), QRect(ToPixelsX(&dialog, 120), ToPixelsY(&dialog, 120),
                                    ToPixelsX(&dialog, 6375), ToPixelsY(&dialog, 1815)));
    QCOMPARE(sql->toPlainText(), QString("SELECT a FROM b WHERE x=1"));
    // Centred on the screen, worked out in twips as the form does.
    const QRect screen = dialog.screen()->geometry();
    const int tx = cvve::gui::TwipsPerPixelX(&dialog);
    const int ty = cvve::gui::TwipsPerPixelY(&dialog);
    QCOMPARE(dialog.pos().x(),
             screen.left() + frmAcctViewAdvanced::CentredLeft(screen.width() * tx) / tx);
    QCOMPARE(dialog.pos().y(),
             screen.top() + frmAcctViewAdvanced::CentredTop(screen.height() * ty) / ty);
    sql->moveCursor(QTextCursor::End);
    QTest::keyClicks(sql, " AND y=2");
    auto* close = dialog.findChild<QPushButton*>("cmdClose");
    QCOMPARE(close->text(), QString("Close"));
    QTest::mouseClick(close, Qt::LeftButton);
  };
  host.RunModal(form);
  QVERIFY(shown);
  QVERIFY(!form.Visible());
  QCOMPARE(form.SQL(), std::string("SELECT a FROM b WHERE x=1 AND y=2"));
}

void DialogsTest::AdvancedFilterFrameCloseEndsTheEdit() {
  frmAcctViewAdvanced form;
  form.SetSQL("SELECT 1");
  QtDialogHost host;
  host.on_dialog_shown = [&](ModelDialog& dialog) { dialog.close(); };
  host.RunModal(form);
  QVERIFY(!form.Visible());
  QCOMPARE(form.SQL(), std::string("SELECT 1"));
}

void DialogsTest::EditorRunsModallyUntilItsFormHides() {
  cvve::guitest::GuiEditor g;
  g.dir.Write("views.xml", cvve::guitest::kViews);
  g.dir.Write("defs.xml", cvve::guitest::kDefaults);
  g.dir.Write("setup.xml", cvve::guitest::kSetup);
  g->SetReportMode(0);
  g->LoadFiles("views.xml", "defs.xml", "setup.xml");
  int dialogs_seen = 0;
  int variables_width = 0;
  g.dialogs.on_dialog_shown = [&](ModelDialog& dialog) {
    ++dialogs_seen;
    variables_width = dialog.width();
    QTest::mouseClick(dialog.findChild<QPushButton*>("cmdOK"), Qt::LeftButton);
  };
  // Should OK ask about unsaved changes, the answer is No.
  g.recorded.QueueAnswer(ui::Answer::kNo);
  bool editor_shown = false;
  g.dialogs.on_editor_shown = [&](cvve::gui::EditorWindow& window) {
    editor_shown = true;
    QVERIFY(window.isVisible());
    QCOMPARE(window.windowModality(), Qt::ApplicationModal);
    QCOMPARE(g.dialogs.OpenEditors().size(), std::size_t(1));
    // A dialog opened from the editor runs modally over it and returns.
    QTest::mouseClick(window.findChild<QPushButton*>("cmdEditVariables"), Qt::LeftButton);
    QTest::mouseClick(window.findChild<QPushButton*>("cmdOK"), Qt::LeftButton);
  };
  g.dialogs.RunModal(*g);
  QVERIFY(editor_shown);
  QCOMPARE(dialogs_seen, 1);
  QCOMPARE(variables_width, ToPixelsX(nullptr, 6795));
  QVERIFY(!g->Visible());
  QVERIFY(g.dialogs.OpenEditors().empty());
  // OK wrote the views file (view mode).
  QVERIFY(!g.ViewsFileText().empty());
}

void DialogsTest::MessageBoxesMapIconsButtonsAndAnswers_data() {
  QTest::addColumn<int>("buttons");
  QTest::addColumn<int>("icon");
  QTest::addColumn<int>("click");  // a QMessageBox::StandardButton, or 0 for Escape
  QTest::addColumn<int>("answer");
  QTest::addColumn<int>("qt_icon");
  using B = ui::Buttons;
  using I = ui::Icon;
  using A = ui::Answer;
  QTest::newRow("yes") << int(B::kYesNoCancel) << int(I::kQuestion) << int(QMessageBox::Yes)
                       << int(A::kYes) << int(QMessageBox::Question);
  QTest::newRow("cancel") << int(B::kYesNoCancel) << int(I::kQuestion) << int(QMessageBox::Cancel)
                          << int(A::kCancel) << int(QMessageBox::Question);
  QTest::newRow("escape yes/no") << int(B::kYesNo) << int(I::kQuestion) << 0 << int(A::kNo)
                                 << int(QMessageBox::Question);
  QTest::newRow("escape yes/no/cancel") << int(B::kYesNoCancel) << int(I::kQuestion) << 0
                                        << int(A::kCancel) << int(QMessageBox::Question);
  QTest::newRow("critical ok") << int(B::kOk) << int(I::kCritical) << int(QMessageBox::Ok)
                               << int(A::kOk) << int(QMessageBox::Critical);
  QTest::newRow("exclamation") << int(B::kOk) << int(I::kExclamation) << int(QMessageBox::Ok)
                               << int(A::kOk) << int(QMessageBox::Warning);
  QTest::newRow("information") << int(B::kOk) << int(I::kInformation) << 0 << int(A::kOk)
                               << int(QMessageBox::Information);
}

void DialogsTest::MessageBoxesMapIconsButtonsAndAnswers() {
  QFETCH(int, buttons);
  QFETCH(int, icon);
  QFETCH(int, click);
  QFETCH(int, answer);
  QFETCH(int, qt_icon);
  QtPrompter prompter;
  QString text, title;
  int seen_icon = -1;
  cvve::guitest::AnswerNextMessageBox([&](QMessageBox* box) {
    text = box->text();
    title = box->windowTitle();
    seen_icon = box->icon();
    if (click == 0) {
      QTest::keyClick(box, Qt::Key_Escape);
    } else {
      box->button(QMessageBox::StandardButton(click))->click();
    }
  });
  const ui::Answer got = prompter.MsgBox("First line.\r\n\r\nSecond line.", ui::Buttons(buttons),
                                         ui::Icon(icon), "Title");
  QCOMPARE(int(got), answer);
  QCOMPARE(seen_icon, qt_icon);
  QCOMPARE(text, QString("First line.\n\nSecond line."));
  QCOMPARE(title, QString("Title"));
}

void DialogsTest::InputBoxGivesTextOrNothing() {
  QtPrompter prompter;
  QString label, title, shown_default;
  AnswerNextInputBox([&](QInputDialog* box) {
    label = box->labelText();
    title = box->windowTitle();
    shown_default = box->textValue();
    box->setTextValue("Copy of Past Due 2");
    box->accept();
  });
  QCOMPARE(
      prompter.InputBox("Enter a name for the new profile:", "Copy Profile", "Copy of Past Due"),
      std::string("Copy of Past Due 2"));
  QCOMPARE(label, QString("Enter a name for the new profile:"));
  QCOMPARE(title, QString("Copy Profile"));
  QCOMPARE(shown_default, QString("Copy of Past Due"));

  AnswerNextInputBox([](QInputDialog* box) {
    box->setTextValue("typed, then cancelled");
    box->reject();
  });
  QCOMPARE(prompter.InputBox("Enter a new name for the profile:", "Edit Profile Name", "x"),
           std::string());
}

void DialogsTest::WaitCursorNests() {
  QtPrompter prompter;
  QVERIFY(!QApplication::overrideCursor());
  prompter.SetWaitCursor(true);
  prompter.SetWaitCursor(true);
  QCOMPARE(QApplication::overrideCursor()->shape(), Qt::WaitCursor);
  prompter.SetWaitCursor(false);
  QVERIFY(QApplication::overrideCursor());
  prompter.SetWaitCursor(false);
  QVERIFY(!QApplication::overrideCursor());
  prompter.SetWaitCursor(false);  // an extra "off" restores nothing it did not set
  QVERIFY(!QApplication::overrideCursor());
}

void DialogsTest::CFaceGetsTheQtScreen() {
  // Linking the window library registers its screen for hosts that use the
  // C face; with a QApplication running it is the Qt one.
  std::unique_ptr<cvve::Screen> screen = cvve::MakeDefaultScreen();
  auto* qt = dynamic_cast<cvve::gui::QtScreen*>(screen.get());
  QVERIFY(qt);
  QVERIFY(dynamic_cast<QtPrompter*>(&qt->prompter()));
  QVERIFY(dynamic_cast<QtDialogHost*>(&qt->dialogs()));
}

QTEST_MAIN(DialogsTest)
#include "dialogs_test.moc"
