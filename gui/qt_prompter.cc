#include "gui/qt_prompter.h"

#include <QApplication>
#include <QFrame>
#include <QInputDialog>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QScreen>
#include <QTimer>
#include <QVBoxLayout>
#include <cstdio>

namespace cvve::gui {

namespace {

QString Q(const std::string& text) {
  // The editor's texts break lines with CR LF.
  return QString::fromStdString(text).replace("\r\n", "\n");
}

QMessageBox::Icon ToQt(ui::Icon icon) {
  switch (icon) {
    case ui::Icon::kCritical:
      return QMessageBox::Critical;
    case ui::Icon::kQuestion:
      return QMessageBox::Question;
    case ui::Icon::kExclamation:
      return QMessageBox::Warning;
    case ui::Icon::kInformation:
      return QMessageBox::Information;
    case ui::Icon::kNone:
      break;
  }
  return QMessageBox::NoIcon;
}

QMessageBox::StandardButtons ToQt(ui::Buttons buttons) {
  switch (buttons) {
    case ui::Buttons::kOk:
      return QMessageBox::Ok;
    case ui::Buttons::kOkCancel:
      return QMessageBox::Ok | QMessageBox::Cancel;
    case ui::Buttons::kYesNo:
      return QMessageBox::Yes | QMessageBox::No;
    case ui::Buttons::kYesNoCancel:
      return QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel;
  }
  return QMessageBox::Ok;
}

}  // namespace

QWidget* DialogParent() {
  if (QWidget* modal = QApplication::activeModalWidget()) return modal;
  return QApplication::activeWindow();
}

QtPrompter::~QtPrompter() {
  CloseNotice();
  while (wait_depth_ > 0) SetWaitCursor(false);
}

ui::Answer QtPrompter::MsgBox(const std::string& text, ui::Buttons buttons, ui::Icon icon,
                              const std::string& title) {
  QMessageBox box(ToQt(icon), Q(title), Q(text), ToQt(buttons), DialogParent());
  box.setObjectName("msgbox");
  // The first button is the default one, as in the host's message boxes.
  const bool yes_no = buttons == ui::Buttons::kYesNo || buttons == ui::Buttons::kYesNoCancel;
  box.setDefaultButton(yes_no ? QMessageBox::Yes : QMessageBox::Ok);
  if (buttons == ui::Buttons::kYesNo) box.setEscapeButton(QMessageBox::No);
  // The wait cursor must not hide that the box wants an answer.
  const bool waiting = wait_depth_ > 0;
  if (waiting) QApplication::setOverrideCursor(Qt::ArrowCursor);
  box.exec();
  if (waiting) QApplication::restoreOverrideCursor();
  switch (box.standardButton(box.clickedButton())) {
    case QMessageBox::Yes:
      return ui::Answer::kYes;
    case QMessageBox::No:
      return ui::Answer::kNo;
    case QMessageBox::Cancel:
      return ui::Answer::kCancel;
    case QMessageBox::Ok:
      return ui::Answer::kOk;
    default:
      break;
  }
  // Closed without a button: the box's escape answer.
  switch (buttons) {
    case ui::Buttons::kOk:
      return ui::Answer::kOk;
    case ui::Buttons::kYesNo:
      return ui::Answer::kNo;
    case ui::Buttons::kOkCancel:
    case ui::Buttons::kYesNoCancel:
      break;
  }
  return ui::Answer::kCancel;
}

std::string QtPrompter::InputBox(const std::string& prompt, const std::string& title,
                                 const std::string& default_text) {
  QInputDialog dialog(DialogParent());
  dialog.setObjectName("inputbox");
  dialog.setWindowTitle(Q(title));
  dialog.setLabelText(Q(prompt));
  dialog.setTextValue(Q(default_text));
  dialog.setMinimumWidth(360);
  const bool waiting = wait_depth_ > 0;
  if (waiting) QApplication::setOverrideCursor(Qt::ArrowCursor);
  const int result = dialog.exec();
  if (waiting) QApplication::restoreOverrideCursor();
  return result == QDialog::Accepted ? dialog.textValue().toStdString() : std::string();
}

void QtPrompter::ShowStatus(const std::string& text) {
  QWidget* window = DialogParent();
  QLabel* status = window ? window->findChild<QLabel*>("lblStatus") : nullptr;
  if (!status) {
    std::fprintf(stderr, "viewedit: %s\n", text.c_str());
    return;
  }
  status->setText(Q(text));
  status->setToolTip(Q(text));
  status->setVisible(true);
}

void QtPrompter::SetWaitCursor(bool on) {
  if (on) {
    QApplication::setOverrideCursor(Qt::WaitCursor);
    ++wait_depth_;
  } else if (wait_depth_ > 0) {
    QApplication::restoreOverrideCursor();
    --wait_depth_;
  }
}

void QtPrompter::ShowNotice(const std::string& title, const std::string& text) {
  CloseNotice();
  QWidget* owner = DialogParent();
  auto* notice = new QFrame(owner, Qt::ToolTip | Qt::FramelessWindowHint);
  notice->setObjectName("notice");
  notice->setAttribute(Qt::WA_DeleteOnClose);
  notice->setAttribute(Qt::WA_ShowWithoutActivating);
  notice->setFrameShape(QFrame::Box);
  notice->setStyleSheet(
      "QFrame#notice { background: #fdfbe8; border: 1px solid #b8a95a; }"
      "QLabel { background: transparent; }");
  auto* layout = new QVBoxLayout(notice);
  layout->setContentsMargins(16, 10, 16, 12);
  auto* heading = new QLabel(Q(title), notice);
  heading->setObjectName("noticeTitle");
  QFont bold = heading->font();
  bold.setBold(true);
  heading->setFont(bold);
  auto* body = new QLabel(Q(text), notice);
  body->setObjectName("noticeText");
  layout->addWidget(heading);
  layout->addWidget(body);
  notice->adjustSize();
  // Centred near the bottom of the window that saved.
  QRect area =
      owner ? owner->frameGeometry()
            : (QApplication::primaryScreen() ? QApplication::primaryScreen()->availableGeometry()
                                             : QRect(0, 0, 800, 600));
  notice->move(area.center().x() - notice->width() / 2, area.bottom() - notice->height() - 90);
  notice->show();
  notice_ = notice;
  if (notice_timeout_ms > 0) {
    QPointer<QWidget> guard = notice;
    QTimer::singleShot(notice_timeout_ms, notice, [guard] {
      if (guard) guard->close();
    });
  }
}

void QtPrompter::CloseNotice() {
  if (notice_) notice_->close();
  notice_ = nullptr;
}

}  // namespace cvve::gui
