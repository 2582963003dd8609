#include "gui/results/results_pane.h"

#include <QFontDatabase>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTableWidget>
#include <QToolButton>
#include <QVBoxLayout>

#include "reportengine/value_format.h"
#include "results/results.h"

namespace cvve::gui {

namespace {

using reportengine::RunOutcome;

// A busy state only for runs a person would notice.
constexpr int kBusyAfterMs = 250;

QString CountText(long long count) {
  return count == 1 ? QStringLiteral("1 row") : QStringLiteral("%1 rows").arg(count);
}

// The message, then the statement around the place it names.
QString ErrorText(const std::string& message, const std::string& statement, long long position) {
  QString text = QString::fromStdString(message);
  const std::string excerpt = results::ErrorExcerpt(statement, position);
  if (!excerpt.empty()) text += "\n\n" + QString::fromStdString(excerpt);
  return text;
}

}  // namespace

ResultsPane::ResultsPane(reportengine::EditorDatabase database, QWidget* parent)
    : QGroupBox(parent), database_(std::move(database)) {
  setObjectName("paneResults");
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(6, 4, 6, 4);
  auto* header = new QHBoxLayout;
  toggle_ = new QToolButton(this);
  toggle_->setObjectName("cmdResultsToggle");
  toggle_->setText("Results");
  toggle_->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
  toggle_->setAutoRaise(true);
  toggle_->setCheckable(true);
  toggle_->setChecked(true);
  toggle_->setArrowType(Qt::DownArrow);
  toggle_->setToolTip("Show or hide the rows this profile selects");
  header->addWidget(toggle_);
  status_ = new QLabel(this);
  status_->setObjectName("lblResultsStatus");
  header->addWidget(status_, 1);
  cancel_ = new QPushButton("Cancel", this);
  cancel_->setObjectName("cmdResultsCancel");
  cancel_->setToolTip("Stop the statement at the database");
  cancel_->setVisible(false);
  cancel_->setFocusPolicy(Qt::ClickFocus);
  header->addWidget(cancel_);
  layout->addLayout(header);

  body_ = new QWidget(this);
  auto* body = new QVBoxLayout(body_);
  body->setContentsMargins(0, 0, 0, 0);
  table_ = new QTableWidget(body_);
  table_->setObjectName("tblResults");
  table_->setEditTriggers(QAbstractItemView::NoEditTriggers);
  table_->setSelectionBehavior(QAbstractItemView::SelectRows);
  table_->setFocusPolicy(Qt::ClickFocus);
  table_->verticalHeader()->setDefaultSectionSize(table_->fontMetrics().lineSpacing() + 4);
  table_->setMinimumHeight(table_->fontMetrics().lineSpacing() * 6);
  body->addWidget(table_);
  error_ = new QPlainTextEdit(body_);
  error_->setObjectName("txtResultsError");
  error_->setReadOnly(true);
  error_->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
  error_->setFocusPolicy(Qt::ClickFocus);
  error_->setVisible(false);
  body->addWidget(error_);
  layout->addWidget(body_);

  connect(toggle_, &QToolButton::toggled, this, [this](bool open) { SetCollapsed(!open); });
  connect(cancel_, &QPushButton::clicked, this, [this] {
    wanted_ = running_;  // not run again when it ends
    if (runner_) runner_->Cancel();
  });
  debounce_.setSingleShot(true);
  debounce_.setInterval(kDebounceMs);
  connect(&debounce_, &QTimer::timeout, this, [this] { StartPending(); });
  busy_.setSingleShot(true);
  busy_.setInterval(kBusyAfterMs);
  connect(&busy_, &QTimer::timeout, this, [this] { ShowBusy(); });

  runner_ = std::make_unique<reportengine::BackgroundRunner>(database_.url, database_.limits);
  connect(runner_.get(), &reportengine::BackgroundRunner::columnsReady, this,
          &ResultsPane::OnColumns);
  connect(runner_.get(), &reportengine::BackgroundRunner::rowsReady, this, &ResultsPane::OnRows);
  connect(runner_.get(), &reportengine::BackgroundRunner::finished, this,
          &ResultsPane::OnFinished);
}

ResultsPane::~ResultsPane() {
  // Stops what runs before the widgets its signals would reach are gone.
  runner_.reset();
}

bool ResultsPane::Busy() const { return runner_ && runner_->Running(); }
bool ResultsPane::Collapsed() const { return !body_->isVisible() && !toggle_->isChecked(); }

void ResultsPane::SetCollapsed(bool collapsed) {
  toggle_->setChecked(!collapsed);
  toggle_->setArrowType(collapsed ? Qt::RightArrow : Qt::DownArrow);
  body_->setVisible(!collapsed);
}

void ResultsPane::Show(const std::string& view_sql, const QString& problem,
                       const QStringList& names, const std::vector<std::string>& formats) {
  if (view_sql.empty()) {
    debounce_.stop();
    wanted_.clear();
    if (runner_->Running()) runner_->Cancel();
    ran_statement_.clear();
    error_position_ = -1;
    error_message_ = problem;
    table_->clear();
    table_->setRowCount(0);
    table_->setColumnCount(0);
    status_->setText("No rows: the statement cannot be built");
    error_->setPlainText(problem);
    error_->setVisible(!problem.isEmpty());
    return;
  }
  const std::string statement = reportengine::RunnableStatement(view_sql, database_.user_where);
  if (statement == wanted_ && (statement == running_ || statement == ran_statement_)) return;
  wanted_ = statement;
  wanted_names_ = names;
  wanted_formats_ = formats;
  debounce_.start();
}

void ResultsPane::StartPending() {
  if (wanted_.empty() || wanted_ == running_) return;
  if (runner_->Running()) {
    // The newer statement starts once this one has stopped.
    runner_->Cancel();
    return;
  }
  running_ = wanted_;
  running_names_ = wanted_names_;
  running_formats_ = wanted_formats_;
  shown_rows_ = 0;
  table_->setRowCount(0);
  runner_->Start(running_, kShownRows);
  busy_.start();
}

void ResultsPane::ShowBusy() {
  if (!runner_->Running()) return;
  status_->setText("Running the statement…");
  cancel_->setVisible(true);
}

void ResultsPane::OnColumns(const QStringList& names) {
  const QStringList& shown = names.size() == running_names_.size() ? running_names_ : names;
  table_->clear();
  table_->setColumnCount(static_cast<int>(shown.size()));
  table_->setHorizontalHeaderLabels(shown);
  table_->setRowCount(0);
}

void ResultsPane::OnRows(const QList<QVariantList>& rows) {
  for (const QVariantList& row : rows) {
    if (shown_rows_ >= kShownRows) return;
    table_->insertRow(shown_rows_);
    for (int c = 0; c < row.size() && c < table_->columnCount(); ++c) {
      const std::size_t at = static_cast<std::size_t>(c);
      const std::string format = at < running_formats_.size() ? running_formats_[at] : "";
      const reportengine::ValueKind kind = reportengine::KindOf(format);
      auto* item = new QTableWidgetItem(reportengine::FormatCell(row[c], kind));
      if (kind != reportengine::ValueKind::kText) {
        item->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
      }
      table_->setItem(shown_rows_, c, item);
    }
    ++shown_rows_;
  }
}

void ResultsPane::OnFinished(const RunOutcome& outcome) {
  busy_.stop();
  cancel_->setVisible(false);
  const std::string ran = std::exchange(running_, std::string());
  if (outcome.status == RunOutcome::Status::kCancelled) {
    if (!wanted_.empty() && wanted_ != ran) {
      StartPending();
      return;
    }
    status_->setText("Cancelled");
    ran_statement_ = ran;
    error_position_ = -1;
    error_message_.clear();
    error_->setVisible(false);
    if (on_finished) on_finished();
    return;
  }
  ran_statement_ = ran;
  if (outcome.Ok()) {
    error_position_ = -1;
    error_message_.clear();
    error_->setVisible(false);
    table_->resizeColumnsToContents();
    QString text = CountText(outcome.rows);
    if (outcome.rows > shown_rows_) text += QStringLiteral(" (the first %1 shown)").arg(shown_rows_);
    status_->setText(text + QStringLiteral(" · %1 ms").arg(outcome.elapsed_ms));
  } else {
    error_position_ = outcome.error_position;
    error_message_ = QString::fromStdString(outcome.error);
    table_->setRowCount(0);
    status_->setText(QStringLiteral("The database refused the statement · %1 ms")
                         .arg(outcome.elapsed_ms));
    error_->setPlainText(ErrorText(outcome.error, ran, outcome.error_position));
    error_->setVisible(true);
  }
  if (on_finished) on_finished();
  if (!wanted_.empty() && wanted_ != ran_statement_) StartPending();
}

StatementTest::StatementTest(reportengine::EditorDatabase database, QObject* parent)
    : QObject(parent), database_(std::move(database)) {}

StatementTest::~StatementTest() { runner_.reset(); }

void StatementTest::Run(const std::string& view_sql, std::function<void(const QString&)> told) {
  const std::string statement = reportengine::RunnableStatement(view_sql, database_.user_where);
  runner_ = std::make_unique<reportengine::BackgroundRunner>(database_.url, database_.limits);
  connect(runner_.get(), &reportengine::BackgroundRunner::finished, this,
          [statement, told = std::move(told)](const RunOutcome& outcome) {
            if (outcome.Ok()) {
              told(CountText(outcome.rows) + QStringLiteral(" · %1 ms").arg(outcome.elapsed_ms));
            } else {
              told(ErrorText(outcome.error, statement, outcome.error_position));
            }
          });
  // Rows are only counted here.
  runner_->Start(statement, 1 << 20);
}

}  // namespace cvve::gui
