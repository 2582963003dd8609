#pragma once
// The report viewer: one page at a time, zoom in and out or to the window,
// page navigation, find text, Print (through the print dialog) and "Save as"
// PDF, or, given the report's rows, an Excel workbook or CSV.
#include <QDialog>
#include <functional>
#include <memory>

#include "reportengine/live_pages.h"
#include "reportengine/paginator.h"

class QLabel;
class QLineEdit;
class QScrollArea;
class QSpinBox;
class QTimer;
class QToolButton;

namespace cvve::reportengine {

// The window's own progress dialog for long writes and prints: shown only
// when the work lasts longer than a moment; cancel stops it.
ProgressFunction GuiProgress(QWidget* parent, const QString& title);

class ReportViewerWindow : public QDialog {
  Q_OBJECT

 public:
  explicit ReportViewerWindow(std::shared_ptr<const ReportLayout> layout,
                              QWidget* parent = nullptr);
  // A report still being laid out: the window shows the pages there are,
  // how many so far, and Cancel (which calls `cancel`); printing, saving and
  // finding wait for the end. Closing the window cancels the run.
  ReportViewerWindow(std::shared_ptr<LivePages> pages, std::function<void()> cancel,
                     QWidget* parent = nullptr);
  ~ReportViewerWindow() override;

  int CurrentPage() const { return page_; }  // 0-based
  int PageCount() const;
  // Whether pages are still coming.
  bool Running() const { return live_ != nullptr && live_->Now() == LivePages::State::kRunning; }
  // "of 12", "of 12 so far", "of 12 (stopped: ...)".
  QString PageCountText() const;
  // Takes in the pages laid out since the last look (the window does so
  // every moment by itself).
  void Refresh();
  // Stops the run that still lays out pages.
  void CancelRun();
  double Zoom() const { return zoom_; }  // 1.0: actual size
  // The page as the window shows it now.
  const QImage& ShownImage() const { return image_; }

  // The report's definition and rows, for saving it as a spreadsheet; both
  // must outlive the window.
  void SetRows(const ReportDefinition* definition, const ReportData* rows);

  // Writes the report as PDF without asking; false (with a message box)
  // when it fails or is cancelled.
  bool SaveAsPdf(const QString& path);
  // The same by the file's suffix: .xlsx an Excel workbook, .csv CSV (both
  // only with the rows), anything else PDF.
  bool SaveAs(const QString& path);

 public slots:
  void ShowPage(int index);  // clamped to the pages
  void NextPage();
  void PreviousPage();
  void FirstPage();
  void LastPage();
  void ZoomIn();
  void ZoomOut();
  void SetZoom(double zoom);  // clamped to 10%..800%
  void FitWidth();
  void FitPage();
  void Print();            // the print dialog, then the chosen pages
  void FocusFind();        // to the find box, its text selected
  void FindNext();         // the next page with the find box's text
  void SaveAsDialog();     // asks for the file and its type

 protected:
  void keyPressEvent(QKeyEvent* event) override;
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  enum class Fit { kNone, kWidth, kPage };
  void Build();
  void Render();
  void UpdateControls();
  double FitZoom(Fit fit) const;

  std::shared_ptr<const ReportLayout> layout_;  // while live: the frame, without pages
  std::shared_ptr<LivePages> live_;             // until the run completes
  std::function<void()> cancel_;
  int live_count_ = 0;                          // pages taken in so far
  bool image_shown_empty_ = false;              // the page shown had not come yet
  QTimer* refresh_ = nullptr;
  QToolButton* cancel_button_ = nullptr;
  QToolButton* print_ = nullptr;
  QToolButton* save_ = nullptr;
  const ReportDefinition* def_ = nullptr;
  const ReportData* data_ = nullptr;
  int page_ = 0;
  double zoom_ = 1.0;
  Fit fit_ = Fit::kNone;
  QImage image_;
  QScrollArea* scroll_ = nullptr;
  QLabel* canvas_ = nullptr;
  QSpinBox* page_box_ = nullptr;
  QLabel* page_count_ = nullptr;
  QLabel* zoom_label_ = nullptr;
  QToolButton* first_ = nullptr;
  QToolButton* previous_ = nullptr;
  QToolButton* next_ = nullptr;
  QToolButton* last_ = nullptr;
  QLineEdit* find_box_ = nullptr;
  QLabel* find_result_ = nullptr;
  QString last_found_;
};

}  // namespace cvve::reportengine
