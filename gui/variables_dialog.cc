#include "gui/variables_dialog.h"

#include <QApplication>
#include <QComboBox>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include "gui/units.h"

namespace cvve::gui {

VariablesDialog::VariablesDialog(frmVariables& form, QWidget* parent)
    : ModelDialog(form, parent), form_(form) {
  setWindowTitle("Report Variables");
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(12, 12, 12, 12);
  layout->setSpacing(10);

  message_ = new QLabel(this);
  message_->setObjectName("lblMessage");
  message_->setWordWrap(true);
  layout->addWidget(message_);

  auto* grid = new QGridLayout;
  grid->setHorizontalSpacing(6);
  grid->setVerticalSpacing(6);
  const char* headings[] = {"Variable Caption", "Variable Type", "Variable Name", "Value:"};
  for (int c = 0; c < 4; ++c) {
    auto* heading = new QLabel(headings[c], this);
    QFont bold = heading->font();
    bold.setBold(true);
    heading->setFont(bold);
    grid->addWidget(heading, 0, c);
    if (c == 3) value_heading_ = heading;
  }
  for (int slot = 0; slot < kVariableSlots; ++slot) {
    const auto s = static_cast<std::size_t>(slot);
    captions_[s] = new QLineEdit(this);
    types_[s] = new QComboBox(this);
    names_[s] = new QLineEdit(this);
    values_[s] = new QLineEdit(this);
    grid->addWidget(captions_[s], slot + 1, 0);
    grid->addWidget(types_[s], slot + 1, 1);
    grid->addWidget(names_[s], slot + 1, 2);
    grid->addWidget(values_[s], slot + 1, 3);
    binder().Bind(form.txtVariableCaption[s], captions_[s], true);
    binder().Bind(form.cmbVariable[s], types_[s]);
    binder().Bind(form.txtVariableName[s], names_[s], true);
    binder().Bind(form.txtValue[s], values_[s], true);
    types_[s]->setMinimumContentsLength(9);
  }
  grid->setColumnStretch(0, 3);
  grid->setColumnStretch(1, 2);
  grid->setColumnStretch(2, 3);
  grid->setColumnStretch(3, 3);
  layout->addLayout(grid);

  auto* buttons = new QHBoxLayout;
  buttons->addStretch();
  auto* ok = new QPushButton(this);
  binder().Bind(form.cmdOK, ok);
  // Connected after the binding, so it runs once OK's check has spoken.
  connect(ok, &QPushButton::clicked, this, [this] {
    const int slot = form_.BadValueSlot();
    if (slot < 0 || slot >= kVariableSlots) return;
    QLineEdit* field = values_[static_cast<std::size_t>(slot)];
    field->setFocus();
    field->selectAll();
  });
  ok->setDefault(true);
  ok->setAutoDefault(true);
  ok->setMinimumWidth(88);
  buttons->addWidget(ok);
  layout->addLayout(buttons);
  binder().Watch(form.lblMessage,
                 [this] { message_->setText(QString::fromStdString(form_.lblMessage.Text())); });
  // Tab order follows the rows: caption, type, name (and value) of each slot.
  QWidget* previous = nullptr;
  for (int slot = 0; slot < kVariableSlots; ++slot) {
    const auto s = static_cast<std::size_t>(slot);
    for (QWidget* w : {static_cast<QWidget*>(captions_[s]), static_cast<QWidget*>(types_[s]),
                       static_cast<QWidget*>(names_[s]), static_cast<QWidget*>(values_[s])}) {
      if (previous) setTabOrder(previous, w);
      previous = w;
    }
  }
  setTabOrder(previous, ok);
}

void VariablesDialog::AfterRefresh() {
  const bool value_entry = form_.InValueEntryMode();
  // Read-only definitions take the button-face colour of the window.
  for (int slot = 0; slot < kVariableSlots; ++slot) {
    const auto s = static_cast<std::size_t>(slot);
    for (QWidget* w : {static_cast<QWidget*>(captions_[s]), static_cast<QWidget*>(types_[s]),
                       static_cast<QWidget*>(names_[s])}) {
      QPalette palette = w->palette();
      const QColor base = form_.definition_fields_window_colour
                              ? QApplication::palette().color(QPalette::Base)
                              : QApplication::palette().color(QPalette::Button);
      palette.setColor(QPalette::All, QPalette::Base, base);
      palette.setColor(QPalette::All, QPalette::Button, base);
      w->setPalette(palette);
    }
    // The value column lies beyond the narrower definition-mode width.
    values_[s]->setVisible(value_entry);
  }
  value_heading_->setVisible(value_entry);
  message_->setVisible(value_entry);
  setFixedWidth(ToPixelsX(this, form_.width_twips));
  adjustSize();
  setFixedHeight(sizeHint().height());
}

}  // namespace cvve::gui
