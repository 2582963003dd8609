#include "gui/advanced_filter_dialog.h"

#include <QFontDatabase>
#include <QGuiApplication>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScreen>

#include "gui/units.h"

namespace cvve::gui {

AdvancedFilterDialog::AdvancedFilterDialog(frmAcctViewAdvanced& form, QWidget* parent)
    : ModelDialog(form, parent), form_(form) {
  setWindowTitle("Advanced Filter");
  using F = frmAcctViewAdvanced;
  setFixedSize(ToPixelsX(this, F::kWidthTwips), ToPixelsY(this, F::kHeightTwips));

  sql_ = new QPlainTextEdit(this);
  sql_->setGeometry(ToPixelsX(this, F::kTextLeft), ToPixelsY(this, F::kTextTop),
                    ToPixelsX(this, F::kTextWidth), ToPixelsY(this, F::kTextHeight));
  sql_->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
  sql_->setTabChangesFocus(true);
  binder().Bind(form.txtSQL, sql_);

  auto* close = new QPushButton(this);
  binder().Bind(form.cmdClose, close);
  close->setDefault(true);
  close->setAutoDefault(true);
  const int width = 96;
  const int top = sql_->geometry().bottom() + 1 + ToPixelsY(this, 120);
  close->setGeometry(sql_->geometry().right() + 1 - width, top, width,
                     std::min(close->sizeHint().height(), height() - top - 6));
}

void AdvancedFilterDialog::showEvent(QShowEvent* event) {
  ModelDialog::showEvent(event);
  // Centred on the screen: (screen - dialog) / 2, computed in twips.
  QScreen* screen = this->screen() ? this->screen() : QGuiApplication::primaryScreen();
  if (!screen) return;
  const QRect area = screen->geometry();
  const int left = frmAcctViewAdvanced::CentredLeft(area.width() * TwipsPerPixelX(this));
  const int top = frmAcctViewAdvanced::CentredTop(area.height() * TwipsPerPixelY(this));
  move(area.left() + left / TwipsPerPixelX(this), area.top() + top / TwipsPerPixelY(this));
}

}  // namespace cvve::gui
