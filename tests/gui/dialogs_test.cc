// The dialogs' faces and modes, the Qt DialogHost's modal runs, and the Qt
// Prompter's message boxes, input boxes and wait cursor.
#include <QComboBox>
#include <QInputDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScreen>
#include <QTest>

#include "filters/frm_acct_view_advanced.h"
#include "gui/model_dialog.h"
#include "gui/qt_screen.h"
#include "gui/units.h"
#include "gui_fixture.h"
#include "variables/frm_variables.h"

using cvve::frmAcctViewAdvanced;
using cvve::frmVariables;
using cvve::gui::ModelDialog;
using cvve::gui::QtDialogHost;
using cvve::gui::QtPrompter;
using cvve::gui::ToPixelsX;
using cvve::gui::ToPixelsY;

class DialogsTest : public QObject {
  Q_OBJECT

 private slots:
  void VariablesDialogModes();
  void AdvancedFilterGeometryTextAndClose();
  void EditorRunsModallyUntilItsFormHides();
  void MessageBoxesMapIconsButtonsAndAnswers();
  void InputBoxGivesTextOrNothing();
  void WaitCursorNests();
};

namespace {

QLineEdit* Field(ModelDialog& dialog, const char* name) {
  return dialog.findChild<QLineEdit*>(name);
}

// Runs `form` modally; `user` acts on the dialog once it is shown, and the
// form must be hidden when the run returns.
template <class Form>
void RunModal(Form& form, std::function<void(ModelDialog&)> user) {
  QtDialogHost host;
  bool shown = false;
  host.on_dialog_shown = [&](ModelDialog& dialog) {
    shown = true;
    user(dialog);
  };
  host.RunModal(form);
  QVERIFY(shown);
  QVERIFY(!form.Visible());
}

}  // namespace

void DialogsTest::VariablesDialogModes() {
  frmVariables form;
  form.SetVariable(0, "Start Date:", "Date", "START_DATE");
  // The face of each mode: definition (false) and value entry (true).
  for (bool input : {false, true}) {
    form.InputMode(input);
    RunModal(form, [input](ModelDialog& dialog) {
      QCOMPARE(dialog.windowTitle(), QString("Report Variables"));
      QCOMPARE(dialog.width(), ToPixelsX(&dialog, input ? 8400 : 6795));
      QCOMPARE(Field(dialog, "txtVariableCaption(0)")->text(), QString("Start Date:"));
      QCOMPARE(dialog.findChild<QComboBox*>("cmbVariable(0)")->currentText(), QString("Date"));
      QCOMPARE(dialog.findChild<QComboBox*>("cmbVariable(0)")->isEnabled(), !input);
      for (const char* name : {"txtVariableCaption(0)", "txtVariableName(0)"}) {
        QCOMPARE(Field(dialog, name)->isEnabled(), !input);
        QCOMPARE(Field(dialog, name)->palette().color(QPalette::Base),
                 QApplication::palette().color(input ? QPalette::Button : QPalette::Base));
      }
      // The value column lies beyond the definition-mode width; so does the message.
      auto* message = dialog.findChild<QLabel*>("lblMessage");
      QCOMPARE(message->isVisible(), input);
      QCOMPARE(message->text(), QString(cvve::kVariablesMessage));
      QLineEdit* value = Field(dialog, "txtValue(0)");
      QCOMPARE(value->isVisible(), input);
      if (input) {
        QVERIFY(value->isEnabled());
        QTest::keyClicks(value, "2026-03-01");
        QTest::keyClick(value, Qt::Key_Return);  // presses the default button, OK
        return;
      }
      // Define slot 1 by typing and picking.
      QTest::keyClicks(Field(dialog, "txtVariableCaption(1)"), "Salesperson:");
      QTest::keyClicks(Field(dialog, "txtVariableName(1)"), "SALESMAN");
      auto* type = dialog.findChild<QComboBox*>("cmbVariable(1)");
      type->setFocus();
      type->setCurrentIndex(-1);
      QTest::keyClicks(type->lineEdit(), "Salesperson");
      QTest::mouseClick(dialog.findChild<QPushButton*>("cmdOK"), Qt::LeftButton);
    });
  }
  QCOMPARE(form.GetValue(0), std::string("2026-03-01"));
  std::string caption, type, name;
  form.GetVariable(1, caption, type, name);
  QCOMPARE(caption + "/" + type + "/" + name, std::string("Salesperson:/Salesperson/SALESMAN"));
  QVERIFY(form.HasVariables());

  // Escape closes it too and keeps what was typed: the dialog has no cancel.
  form.InputMode(false);
  RunModal(form, [](ModelDialog& dialog) {
    QTest::keyClicks(Field(dialog, "txtVariableName(2)"), "LOT");
    QTest::keyClick(&dialog, Qt::Key_Escape);
  });
  form.GetVariable(2, caption, type, name);
  QCOMPARE(name, std::string("LOT"));
}

void DialogsTest::AdvancedFilterGeometryTextAndClose() {
  frmAcctViewAdvanced form;
  form.SetSQL("CQ:SELECT a FROM b WHERE CQ:x=1");
  RunModal(form, [](ModelDialog& dialog) {
    QCOMPARE(dialog.windowTitle(), QString("Advanced Filter"));
    auto* sql = dialog.findChild<QPlainTextEdit*>("txtSQL");
    QCOMPARE(sql->geometry(), QRect(ToPixelsX(&dialog, 120), ToPixelsY(&dialog, 120),
                                    ToPixelsX(&dialog, 6375), ToPixelsY(&dialog, 1815)));
    QCOMPARE(sql->toPlainText(), QString("SELECT a FROM b WHERE x=1"));
    // Centred on the screen, worked out in twips as the form does.
    const QRect screen = dialog.screen()->geometry();
    const int tx = cvve::gui::TwipsPerPixelX(&dialog);
    const int ty = cvve::gui::TwipsPerPixelY(&dialog);
    QCOMPARE(dialog.pos(),
             screen.topLeft() + QPoint(frmAcctViewAdvanced::CentredLeft(screen.width() * tx) / tx,
                                       frmAcctViewAdvanced::CentredTop(screen.height() * ty) / ty));
    sql->moveCursor(QTextCursor::End);
    QTest::keyClicks(sql, " AND y=2");
    auto* close = dialog.findChild<QPushButton*>("cmdClose");
    QCOMPARE(close->text(), QString("Close"));
    QTest::mouseClick(close, Qt::LeftButton);
  });
  QCOMPARE(form.SQL(), std::string("SELECT a FROM b WHERE x=1 AND y=2"));
  // The frame's close ends the edit the same way.
  RunModal(form, [](ModelDialog& dialog) { dialog.close(); });
  QCOMPARE(form.SQL(), std::string("SELECT a FROM b WHERE x=1 AND y=2"));
}

void DialogsTest::EditorRunsModallyUntilItsFormHides() {
  cvve::guitest::GuiEditor g;
  g.Load();
  int dialogs_seen = 0;
  int variables_width = 0;
  g.dialogs.on_dialog_shown = [&](ModelDialog& dialog) {
    ++dialogs_seen;
    variables_width = dialog.width();
    QTest::mouseClick(dialog.findChild<QPushButton*>("cmdOK"), Qt::LeftButton);
  };
  g.recorded.QueueAnswer(cvve::ui::Answer::kNo);  // should OK ask about unsaved changes
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
  g.dialogs.RunModal(*g.ed);
  QVERIFY(editor_shown);
  QCOMPARE(dialogs_seen, 1);
  QCOMPARE(variables_width, ToPixelsX(nullptr, 6795));
  QVERIFY(!g->Visible());
  QVERIFY(g.dialogs.OpenEditors().empty());
  QVERIFY(!g.ViewsFileText().empty());  // OK wrote the views file (view mode)
}

void DialogsTest::MessageBoxesMapIconsButtonsAndAnswers() {
  using B = cvve::ui::Buttons;
  using I = cvve::ui::Icon;
  using A = cvve::ui::Answer;
  const struct {
    B buttons;
    I icon;
    int click;  // a QMessageBox::StandardButton, or 0 for Escape
    A answer;
    QMessageBox::Icon qt_icon;
  } kCases[] = {
      {B::kYesNoCancel, I::kQuestion, QMessageBox::Yes, A::kYes, QMessageBox::Question},
      {B::kYesNoCancel, I::kQuestion, QMessageBox::Cancel, A::kCancel, QMessageBox::Question},
      {B::kYesNo, I::kQuestion, 0, A::kNo, QMessageBox::Question},
      {B::kYesNoCancel, I::kQuestion, 0, A::kCancel, QMessageBox::Question},
      {B::kOk, I::kCritical, QMessageBox::Ok, A::kOk, QMessageBox::Critical},
      {B::kOk, I::kExclamation, QMessageBox::Ok, A::kOk, QMessageBox::Warning},
      {B::kOk, I::kInformation, 0, A::kOk, QMessageBox::Information},
  };
  QtPrompter prompter;
  for (const auto& c : kCases) {
    QString text, title;
    QMessageBox::Icon seen_icon = QMessageBox::NoIcon;
    cvve::guitest::AnswerNext<QMessageBox>([&](QMessageBox* box) {
      text = box->text();
      title = box->windowTitle();
      seen_icon = box->icon();
      if (c.click == 0) {
        QTest::keyClick(box, Qt::Key_Escape);
      } else {
        box->button(QMessageBox::StandardButton(c.click))->click();
      }
    });
    const A got = prompter.MsgBox("First line.\r\n\r\nSecond line.", c.buttons, c.icon, "Title");
    QCOMPARE(got, c.answer);
    QCOMPARE(seen_icon, c.qt_icon);
    QCOMPARE(text, QString("First line.\n\nSecond line."));
    QCOMPARE(title, QString("Title"));
  }
}

void DialogsTest::InputBoxGivesTextOrNothing() {
  QtPrompter prompter;
  QString label, title, shown_default;
  cvve::guitest::AnswerNext<QInputDialog>([&](QInputDialog* box) {
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

  cvve::guitest::AnswerNext<QInputDialog>([](QInputDialog* box) {
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

QTEST_MAIN(DialogsTest)
#include "dialogs_test.moc"
