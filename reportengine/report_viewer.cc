#include "reportengine/report_viewer.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QFileDialog>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPointer>
#include <QPrintDialog>
#include <QPrinter>
#include <QProgressDialog>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QShortcut>
#include <QSpinBox>
#include <QTimer>
#include <QToolButton>
#include <QVBoxLayout>
#include <algorithm>
#include <cmath>
#include <vector>

#include "reportengine/export/csv_writer.h"
#include "reportengine/export/xlsx_writer.h"
#include "reportengine/page_renderer.h"
#include "reportengine/page_search.h"

namespace cvve::reportengine {

namespace {

constexpr double kScreenDpi = 96;
constexpr double kMinZoom = 0.1;
constexpr double kMaxZoom = 8.0;
constexpr int kProgressDelayMs = 400;
constexpr int kRefreshMs = 100;  // how often a live report's new pages are taken in

struct ProgressState {
  QPointer<QWidget> parent;
  QString title;
  QElapsedTimer timer;
  std::unique_ptr<QProgressDialog> dialog;
};

}  // namespace

ProgressFunction GuiProgress(QWidget* parent, const QString& title) {
  auto state = std::make_shared<ProgressState>();
  state->parent = parent;
  state->title = title;
  return [state](const QString& stage, long long done, long long total) {
    // The moment counts from the first report of progress, not from creation.
    if (!state->timer.isValid()) state->timer.start();
    if (!state->dialog) {
      if (state->timer.elapsed() < kProgressDelayMs) return true;
      state->dialog = std::make_unique<QProgressDialog>(stage, QStringLiteral("Cancel"), 0, 0,
                                                        state->parent.data());
      state->dialog->setWindowTitle(state->title);
      state->dialog->setWindowModality(Qt::WindowModal);
      state->dialog->setMinimumDuration(0);
      state->dialog->setAutoClose(false);
      state->dialog->setAutoReset(false);
    }
    QProgressDialog& dialog = *state->dialog;
    dialog.setLabelText(total > 0 ? QStringLiteral("%1 (%2 of %3)").arg(stage).arg(done).arg(total)
                                  : QStringLiteral("%1 (%2)").arg(stage).arg(done));
    // The range is int; the step counts are scaled to it.
    if (total > 0) {
      dialog.setMaximum(1000);
      dialog.setValue(static_cast<int>(std::min<long long>(1000, done * 1000 / total)));
    } else {
      dialog.setMaximum(0);
      dialog.setValue(0);
    }
    QCoreApplication::processEvents();
    return !dialog.wasCanceled();
  };
}

ReportViewerWindow::ReportViewerWindow(std::shared_ptr<const ReportLayout> layout, QWidget* parent)
    : QDialog(parent), layout_(std::move(layout)) {
  Build();
}

ReportViewerWindow::ReportViewerWindow(std::shared_ptr<LivePages> pages,
                                       std::function<void()> cancel, QWidget* parent)
    : QDialog(parent),
      layout_(std::make_shared<const ReportLayout>(pages->Frame())),
      live_(std::move(pages)),
      cancel_(std::move(cancel)) {
  live_count_ = live_->Count();
  Build();
  refresh_ = new QTimer(this);
  refresh_->setInterval(kRefreshMs);
  connect(refresh_, &QTimer::timeout, this, &ReportViewerWindow::Refresh);
  refresh_->start();
  Refresh();
}

void ReportViewerWindow::Build() {
  setWindowTitle(layout_->title.isEmpty() ? QStringLiteral("Report") : layout_->title);
  auto* bar = new QHBoxLayout;
  auto button = [this, bar](const QString& text, const QString& tip, auto slot) {
    auto* b = new QToolButton(this);
    b->setText(text);
    b->setToolTip(tip);
    b->setAutoRaise(true);
    connect(b, &QToolButton::clicked, this, slot);
    bar->addWidget(b);
    return b;
  };
  first_ =
      button(QStringLiteral("|<"), QStringLiteral("First page"), &ReportViewerWindow::FirstPage);
  previous_ = button(QStringLiteral("<"), QStringLiteral("Previous page"),
                     &ReportViewerWindow::PreviousPage);
  page_box_ = new QSpinBox(this);
  page_box_->setRange(1, std::max(1, PageCount()));
  page_box_->setAccelerated(true);
  connect(page_box_, &QSpinBox::valueChanged, this, [this](int value) { ShowPage(value - 1); });
  bar->addWidget(new QLabel(QStringLiteral("Page"), this));
  bar->addWidget(page_box_);
  page_count_ = new QLabel(PageCountText(), this);
  page_count_->setObjectName(QStringLiteral("lblPageCount"));
  bar->addWidget(page_count_);
  if (live_) {
    cancel_button_ = button(QStringLiteral("Cancel"), QStringLiteral("Stop the report's run"),
                            &ReportViewerWindow::CancelRun);
  }
  next_ = button(QStringLiteral(">"), QStringLiteral("Next page"), &ReportViewerWindow::NextPage);
  last_ = button(QStringLiteral(">|"), QStringLiteral("Last page"), &ReportViewerWindow::LastPage);
  bar->addSpacing(16);
  button(QStringLiteral("-"), QStringLiteral("Zoom out"), &ReportViewerWindow::ZoomOut);
  zoom_label_ = new QLabel(this);
  zoom_label_->setMinimumWidth(48);
  zoom_label_->setAlignment(Qt::AlignCenter);
  bar->addWidget(zoom_label_);
  button(QStringLiteral("+"), QStringLiteral("Zoom in"), &ReportViewerWindow::ZoomIn);
  button(QStringLiteral("Fit Width"), QStringLiteral("Zoom to the window's width"),
         &ReportViewerWindow::FitWidth);
  button(QStringLiteral("Fit Page"), QStringLiteral("Zoom to show the whole page"),
         &ReportViewerWindow::FitPage);
  bar->addSpacing(16);
  find_box_ = new QLineEdit(this);
  find_box_->setObjectName(QStringLiteral("txtFind"));
  find_box_->setPlaceholderText(QStringLiteral("Find text"));
  find_box_->setToolTip(QStringLiteral("Enter or F3: the next page with this text (Ctrl+F)"));
  find_box_->setClearButtonEnabled(true);
  auto* find_label = new QLabel(QStringLiteral("&Find:"), this);
  find_label->setBuddy(find_box_);
  bar->addWidget(find_label);
  bar->addWidget(find_box_);
  connect(find_box_, &QLineEdit::returnPressed, this, &ReportViewerWindow::FindNext);
  find_result_ = new QLabel(this);
  find_result_->setObjectName(QStringLiteral("lblFindResult"));
  bar->addWidget(find_result_);
  bar->addStretch();
  print_ = button(QStringLiteral("Print..."), QStringLiteral("Print the report (Ctrl+P)"),
                 &ReportViewerWindow::Print);
  save_ = button(QStringLiteral("Save as..."),
         QStringLiteral("Save the report as a PDF file, an Excel workbook or CSV"),
         &ReportViewerWindow::SaveAsDialog);
  button(QStringLiteral("Close"), QStringLiteral("Close the viewer"), &QDialog::accept);

  canvas_ = new QLabel(this);
  canvas_->setAlignment(Qt::AlignCenter);
  scroll_ = new QScrollArea(this);
  scroll_->setWidget(canvas_);
  scroll_->setWidgetResizable(false);  // the canvas takes the page's size (Render)
  scroll_->setAlignment(Qt::AlignCenter);
  scroll_->setBackgroundRole(QPalette::Dark);

  auto* column = new QVBoxLayout(this);
  column->addLayout(bar);
  column->addWidget(scroll_, 1);

  const struct {
    QKeySequence keys;
    void (ReportViewerWindow::*slot)();
  } kKeys[] = {
      {QKeySequence(Qt::CTRL | Qt::Key_P), &ReportViewerWindow::Print},
      {QKeySequence(Qt::CTRL | Qt::Key_F), &ReportViewerWindow::FocusFind},
      {QKeySequence(Qt::Key_F3), &ReportViewerWindow::FindNext},
      {QKeySequence(Qt::CTRL | Qt::Key_0), &ReportViewerWindow::FitWidth},
  };
  for (const auto& key : kKeys) {
    auto* shortcut = new QShortcut(key.keys, this);
    connect(shortcut, &QShortcut::activated, this, key.slot);
  }

  resize(1000, 800);
  fit_ = Fit::kWidth;  // applied when the page area gets its size
  scroll_->viewport()->installEventFilter(this);
  Render();
}

ReportViewerWindow::~ReportViewerWindow() {
  if (Running()) CancelRun();
}

int ReportViewerWindow::PageCount() const {
  return live_ ? live_count_ : static_cast<int>(layout_->pages.size());
}

QString ReportViewerWindow::PageCountText() const {
  if (!live_) return QStringLiteral("of %1").arg(PageCount());
  if (live_->Now() == LivePages::State::kRunning) {
    return QStringLiteral("of %1 so far").arg(PageCount());
  }
  return QStringLiteral("of %1 (stopped: %2)").arg(PageCount()).arg(live_->Why());
}

void ReportViewerWindow::CancelRun() {
  if (cancel_) cancel_();
}

void ReportViewerWindow::Refresh() {
  if (!live_) return;
  const LivePages::State state = live_->Now();  // before the count: no page added after it is missed
  const int count = live_->Count();
  const bool grew = count != live_count_;
  live_count_ = count;
  if (state == LivePages::State::kComplete) {
    // Every page has its total now; the window holds the whole layout.
    layout_ = live_->TakeWhole();
    live_.reset();
    refresh_->stop();
  } else if (state == LivePages::State::kStopped) {
    refresh_->stop();
  }
  if (state != LivePages::State::kRunning && cancel_button_ != nullptr) {
    cancel_button_->setEnabled(false);
  }
  {
    const QSignalBlocker block(page_box_);
    page_box_->setRange(1, std::max(1, PageCount()));
  }
  page_count_->setText(PageCountText());
  // The page shown gets its total (or its first look, when it came now).
  if (state != LivePages::State::kRunning || (grew && image_shown_empty_)) {
    Render();
  } else {
    UpdateControls();
  }
}
void ReportViewerWindow::ShowPage(int index) {
  index = std::clamp(index, 0, std::max(0, PageCount() - 1));
  if (index == page_ && !image_.isNull()) return;
  page_ = index;
  Render();
  scroll_->verticalScrollBar()->setValue(0);
}

void ReportViewerWindow::FocusFind() {
  find_box_->setFocus(Qt::ShortcutFocusReason);
  find_box_->selectAll();
}

void ReportViewerWindow::FindNext() {
  const QString needle = find_box_->text();
  // A new text is looked for from the page shown; the same text again from
  // the page after it.
  const int from = needle == last_found_ ? page_ + 1 : page_;
  const int found = FindPageWithText(*layout_, needle, from);
  last_found_ = found < 0 ? QString() : needle;
  find_result_->setText(found < 0 && !needle.isEmpty() ? QStringLiteral("Not found") : QString());
  if (found >= 0) ShowPage(found);
}

void ReportViewerWindow::NextPage() { ShowPage(page_ + 1); }
void ReportViewerWindow::PreviousPage() { ShowPage(page_ - 1); }
void ReportViewerWindow::FirstPage() { ShowPage(0); }
void ReportViewerWindow::LastPage() { ShowPage(PageCount() - 1); }
void ReportViewerWindow::ZoomIn() { SetZoom(zoom_ * 1.25); }
void ReportViewerWindow::ZoomOut() { SetZoom(zoom_ / 1.25); }

void ReportViewerWindow::SetZoom(double zoom) {
  fit_ = Fit::kNone;
  zoom_ = std::clamp(zoom, kMinZoom, kMaxZoom);
  Render();
}

double ReportViewerWindow::FitZoom(Fit fit) const {
  // Room for the vertical scroll bar too: a page fitted to the width is
  // usually taller than the window.
  const int bar = scroll_->verticalScrollBar()->isVisible()
                      ? 0
                      : scroll_->verticalScrollBar()->sizeHint().width();
  const QSize room = scroll_->viewport()->size() - QSize(24 + bar, 24);
  const double page_width = layout_->width / 1440.0 * kScreenDpi;
  const double page_height = layout_->height / 1440.0 * kScreenDpi;
  const double by_width = room.width() / page_width;
  const double by_height = room.height() / page_height;
  const double zoom = fit == Fit::kPage ? std::min(by_width, by_height) : by_width;
  return std::clamp(zoom, kMinZoom, kMaxZoom);
}

void ReportViewerWindow::FitWidth() {
  zoom_ = FitZoom(Fit::kWidth);
  Render();
  fit_ = Fit::kWidth;
}

void ReportViewerWindow::FitPage() {
  zoom_ = FitZoom(Fit::kPage);
  Render();
  fit_ = Fit::kPage;
}

void ReportViewerWindow::Render() {
  const double ratio = devicePixelRatioF();
  if (live_) {
    image_shown_empty_ = page_ >= live_count_;
    image_ = RenderPageImage(*layout_, live_->Page(page_), kScreenDpi * zoom_ * ratio);
  } else {
    image_shown_empty_ = false;
    image_ = RenderPageImage(*layout_, page_, kScreenDpi * zoom_ * ratio);
  }
  image_.setDevicePixelRatio(ratio);
  canvas_->setPixmap(QPixmap::fromImage(image_));
  canvas_->resize(image_.size() / ratio);
  UpdateControls();
}

void ReportViewerWindow::UpdateControls() {
  const QSignalBlocker block(page_box_);
  page_box_->setValue(page_ + 1);
  first_->setEnabled(page_ > 0);
  previous_->setEnabled(page_ > 0);
  next_->setEnabled(page_ + 1 < PageCount());
  last_->setEnabled(page_ + 1 < PageCount());
  // Printing, saving and finding take the whole report.
  print_->setEnabled(!live_);
  save_->setEnabled(!live_);
  find_box_->setEnabled(!live_);
  zoom_label_->setText(QStringLiteral("%1%").arg(std::lround(zoom_ * 100)));
}

void ReportViewerWindow::Print() {
  QPrinter printer(QPrinter::HighResolution);
  printer.setPageLayout(layout_->PageLayout());
  printer.setDocName(layout_->title);
  QPrintDialog dialog(&printer, this);
  dialog.setMinMax(1, PageCount());
  dialog.setOption(QAbstractPrintDialog::PrintPageRange);
  if (dialog.exec() != QDialog::Accepted) return;
  int first = 0;
  int last = 0;
  if (printer.printRange() == QPrinter::PageRange) {
    first = printer.fromPage();
    last = printer.toPage();
  } else if (printer.printRange() == QPrinter::CurrentPage) {
    first = last = page_ + 1;
  }
  try {
    PrintLayout(*layout_, printer, first, last, GuiProgress(this, QStringLiteral("Print")));
  } catch (const Cancelled&) {
  } catch (const std::exception& e) {
    QMessageBox::critical(this, QStringLiteral("Print"), QString::fromStdString(e.what()));
  }
}

bool ReportViewerWindow::SaveAsPdf(const QString& path) {
  if (live_) return false;  // the report is not complete
  try {
    WritePdf(*layout_, path, GuiProgress(this, QStringLiteral("Save as PDF")));
    return true;
  } catch (const Cancelled&) {
    return false;
  } catch (const std::exception& e) {
    QMessageBox::critical(this, QStringLiteral("Save as PDF"), QString::fromStdString(e.what()));
    return false;
  }
}

void ReportViewerWindow::SetRows(const ReportDefinition* definition, const ReportData* rows) {
  def_ = definition;
  data_ = rows;
}

bool ReportViewerWindow::SaveAs(const QString& path) {
  if (live_) return false;  // the report is not complete
  const bool rows = def_ != nullptr && data_ != nullptr;
  const bool xlsx = rows && path.endsWith(QStringLiteral(".xlsx"), Qt::CaseInsensitive);
  const bool csv = rows && path.endsWith(QStringLiteral(".csv"), Qt::CaseInsensitive);
  if (!xlsx && !csv) return SaveAsPdf(path);
  try {
    if (xlsx) {
      WriteXlsxFile(*def_, *data_, path.toStdString());
    } else {
      WriteCsvFile(*def_, *data_, path.toStdString());
    }
    return true;
  } catch (const std::exception& e) {
    QMessageBox::critical(this, QStringLiteral("Save as"), QString::fromStdString(e.what()));
    return false;
  }
}

void ReportViewerWindow::SaveAsDialog() {
  QString name = layout_->title.isEmpty() ? QStringLiteral("report") : layout_->title;
  name.replace(QLatin1Char('/'), QLatin1Char('-'));
  struct Type {
    QString filter, suffix;
  };
  std::vector<Type> types = {{QStringLiteral("PDF files (*.pdf)"), QStringLiteral(".pdf")}};
  if (def_ != nullptr && data_ != nullptr) {
    types.push_back({QStringLiteral("Excel workbooks (*.xlsx)"), QStringLiteral(".xlsx")});
    types.push_back({QStringLiteral("CSV files (*.csv)"), QStringLiteral(".csv")});
  }
  QStringList filters;
  for (const Type& type : types) filters << type.filter;
  QString chosen;
  const QString path =
      QFileDialog::getSaveFileName(this, QStringLiteral("Save as"), name + types[0].suffix,
                                   filters.join(QStringLiteral(";;")), &chosen);
  if (path.isEmpty()) return;
  // The chosen type's suffix unless the name already ends in one of them.
  QString suffix = types[0].suffix;
  for (const Type& type : types) {
    if (type.filter == chosen) suffix = type.suffix;
  }
  for (const Type& type : types) {
    if (path.endsWith(type.suffix, Qt::CaseInsensitive)) {
      SaveAs(path);
      return;
    }
  }
  SaveAs(path + suffix);
}

void ReportViewerWindow::keyPressEvent(QKeyEvent* event) {
  switch (event->key()) {
    case Qt::Key_PageDown:
      NextPage();
      return;
    case Qt::Key_PageUp:
      PreviousPage();
      return;
    case Qt::Key_Home:
      FirstPage();
      return;
    case Qt::Key_End:
      LastPage();
      return;
    case Qt::Key_Plus:
    case Qt::Key_Equal:
      ZoomIn();
      return;
    case Qt::Key_Minus:
      ZoomOut();
      return;
    default:
      QDialog::keyPressEvent(event);
  }
}

bool ReportViewerWindow::eventFilter(QObject* watched, QEvent* event) {
  // The page area's own resize, not the window's: the area gets its size
  // after the window (when the window is first shown, well after), so a fit
  // worked out in the window's resize would use the old size.
  if (watched == scroll_->viewport() && event->type() == QEvent::Resize && fit_ != Fit::kNone) {
    const double zoom = FitZoom(fit_);
    if (std::fabs(zoom - zoom_) > 0.005) {
      zoom_ = zoom;
      Render();
    }
  }
  return QDialog::eventFilter(watched, event);
}

}  // namespace cvve::reportengine
