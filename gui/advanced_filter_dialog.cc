#include "gui/advanced_filter_dialog.h"

#include <QFontDatabase>
#include <QGuiApplication>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScreen>

#include "gui/results/results_pane.h"
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

  auto* close = close_ = new QPushButton(this);
  binder().Bind(form.cmdClose, close);
  close->setDefault(true);
  close->setAutoDefault(true);
  const int width = 96;
  const int top = sql_->geometry().bottom() + 1 + ToPixelsY(this, 120);
  close->setGeometry(sql_->geometry().right() + 1 - width, top, width,
                     std::min(close->sizeHint().height(), height() - top - 6));
}

void AdvancedFilterDialog::OfferTest(const reportengine::EditorDatabase& database) {
  if (test_) return;
  tester_ = new StatementTest(database, this);
  test_ = new QPushButton("Test", this);
  test_->setObjectName("cmdTest");
  test_->setToolTip("Run this statement on the database and show how many rows it selects");
  const QRect close = close_->geometry();
  test_->setGeometry(close.left() - close.width() - 8, close.top(), close.width(), close.height());
  test_->setAutoDefault(false);
  test_result_ = new QLabel(this);
  test_result_->setObjectName("lblTestResult");
  test_result_->setWordWrap(true);
  test_result_->setTextInteractionFlags(Qt::TextSelectableByMouse);
  test_result_->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
  // Room under the buttons for a message and the statement around its place.
  const int lines = test_result_->fontMetrics().lineSpacing() * 4;
  const int top = close.bottom() + 6;
  setFixedSize(width(), top + lines + 8);
  test_result_->setGeometry(sql_->geometry().left(), top, sql_->geometry().width(), lines);
  test_result_->setAlignment(Qt::AlignLeft | Qt::AlignTop);
  connect(test_, &QPushButton::clicked, this, [this] {
    test_result_->setText("Running…");
    test_->setEnabled(false);
    tester_->Run(sql_->toPlainText().toStdString(), [this](const QString& told) {
      test_result_->setText(told);
      test_result_->setToolTip(told);
      test_->setEnabled(true);
    });
  });
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
