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

#include "base/error.h"
#include "reportengine/guard/guarded_connection.h"
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
  // The header and a few rows at least; the splitter gives it more. More
  // would make the editor scroll on a 1024x768 screen.
  table_->setMinimumHeight(table_->fontMetrics().lineSpacing() * 4);
  body->addWidget(table_);
  error_ = new QPlainTextEdit(body_);
  error_->setObjectName("txtResultsError");
  error_->setReadOnly(true);
  error_->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
  error_->setFocusPolicy(Qt::ClickFocus);
  ShowErrorText(false);
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
    ShowProblem(problem);
    return;
  }
  Want({reportengine::RunnableStatement(view_sql, database_.user_where), false, names, formats});
}

void ResultsPane::ShowReport(const std::string& definition, const QString& problem) {
  if (definition.empty()) {
    ShowProblem(problem);
    return;
  }
  Want({definition, true, {}, {}});
}

void ResultsPane::ShowProblem(const QString& problem) {
  debounce_.stop();
  wanted_ = {};
  if (runner_->Running()) runner_->Cancel();
  shown_.clear();
  ran_statement_.clear();
  error_position_ = -1;
  error_message_ = problem;
  table_->clear();
  table_->setRowCount(0);
  table_->setColumnCount(0);
  status_->setText("No rows: the statement cannot be built");
  error_->setPlainText(problem);
  ShowErrorText(!problem.isEmpty());
}

void ResultsPane::Want(Request request) {
  if (request.text == wanted_.text && request.report == wanted_.report &&
      (request.text == running_.text || request.text == shown_)) {
    return;
  }
  wanted_ = std::move(request);
  debounce_.start();
}

void ResultsPane::StartPending() {
  if (wanted_.text.empty() || wanted_.text == running_.text) return;
  if (runner_->Running()) {
    // The newer one starts once this one has stopped.
    runner_->Cancel();
    return;
  }
  running_ = wanted_;
  shown_rows_ = 0;
  table_->setRowCount(0);
  if (running_.report) {
    // The report engine runs the report on the runner's connection; its
    // rows are shown when it ends.
    auto rows = std::make_shared<results::Table>();
    report_rows_ = rows;
    runner_->StartJob([definition = running_.text, user_where = database_.user_where,
                       rows](reportengine::GuardedConnection& connection) {
      *rows = reportengine::RunReportTable(definition, connection, user_where, kShownRows);
      // A failure the Cancel caused then ends the run as cancelled.
      if (!rows->error.empty()) throw Error(rows->error);
    });
  } else {
    runner_->Start(running_.text, kShownRows);
  }
  busy_.start();
}

// The message takes the table's place: in a low pane an empty table above
// it would push it out of sight.
void ResultsPane::ShowErrorText(bool shown) {
  error_->setVisible(shown);
  table_->setVisible(!shown);
}

void ResultsPane::ShowBusy() {
  if (!runner_->Running()) return;
  status_->setText("Running the statement…");
  cancel_->setVisible(true);
}

void ResultsPane::OnColumns(const QStringList& names) {
  const QStringList& shown = names.size() == running_.names.size() ? running_.names : names;
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
      const std::string format = at < running_.formats.size() ? running_.formats[at] : "";
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

void ResultsPane::ShowReportRows(const results::Table& rows) {
  QStringList names;
  for (const std::string& name : rows.columns) names << QString::fromStdString(name);
  OnColumns(names);
  table_->setRowCount(static_cast<int>(rows.shown.size()));
  for (std::size_t r = 0; r < rows.shown.size(); ++r) {
    for (std::size_t c = 0; c < rows.shown[r].size() && c < rows.formats.size(); ++c) {
      auto* item = new QTableWidgetItem(QString::fromStdString(rows.shown[r][c]));
      if (reportengine::KindOf(rows.formats[c]) != reportengine::ValueKind::kText) {
        item->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
      }
      table_->setItem(static_cast<int>(r), static_cast<int>(c), item);
    }
  }
  shown_rows_ = static_cast<int>(rows.shown.size());
}

void ResultsPane::OnFinished(const RunOutcome& finished) {
  busy_.stop();
  cancel_->setVisible(false);
  const Request ran = std::exchange(running_, Request());
  const std::shared_ptr<results::Table> report = std::exchange(report_rows_, nullptr);
  if (finished.status == RunOutcome::Status::kCancelled) {
    if (!wanted_.text.empty() && wanted_.text != ran.text) {
      StartPending();
      return;
    }
    status_->setText("Cancelled");
    shown_ = ran.text;
    ran_statement_.clear();
    error_position_ = -1;
    error_message_.clear();
    ShowErrorText(false);
    if (on_finished) on_finished();
    return;
  }
  // A report's rows and its failure's place come in its table.
  RunOutcome outcome = finished;
  shown_ = ran.text;
  ran_statement_ = ran.report ? std::string() : ran.text;
  if (report && outcome.Ok()) {
    outcome.rows = report->count;
    ShowReportRows(*report);
  } else if (report && !report->error.empty()) {
    outcome.error = report->error;
    outcome.error_position = report->error_position;
    ran_statement_ = report->statement;
  }
  if (outcome.Ok()) {
    error_position_ = -1;
    error_message_.clear();
    ShowErrorText(false);
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
    error_->setPlainText(ErrorText(outcome.error, ran_statement_, outcome.error_position));
    ShowErrorText(true);
  }
  if (on_finished) on_finished();
  if (!wanted_.text.empty() && wanted_.text != shown_) StartPending();
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
