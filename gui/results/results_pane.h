#pragma once
// The rows of the profile on screen, beside its statement: after each change
// (debounced) its view statement runs in the background on the editor's
// database and the pane shows the total count, the first rows in the used
// columns with the report engine's formats, the time the database took, or
// the database's message with the place it names. A newer statement cancels
// the run still going; a slow one shows a busy state with Cancel. Nothing
// here touches the editor's state.
#include <QGroupBox>
#include <QString>
#include <QStringList>
#include <QTimer>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "reportengine/guard/background_runner.h"
#include "reportengine/results/guarded_source.h"

class QLabel;
class QPlainTextEdit;
class QPushButton;
class QTableWidget;
class QToolButton;

namespace cvve::gui {

class ResultsPane : public QGroupBox {
  Q_OBJECT

 public:
  static constexpr int kShownRows = 200;
  static constexpr int kDebounceMs = 300;

  ResultsPane(reportengine::EditorDatabase database, QWidget* parent = nullptr);
  ~ResultsPane() override;

  // The statement of the profile on screen (as the editor builds it; "" when
  // it cannot be built, with `problem` saying why), the used columns' names
  // and formats. Runs it after the debounce unless it is the one shown.
  void Show(const std::string& view_sql, const QString& problem, const QStringList& names,
            const std::vector<std::string>& formats);
  // In report mode: the report definition the editor would write for the
  // profile on screen ("" when it cannot be built, with `problem` saying
  // why). The pane shows the report's rows as the report engine runs them.
  void ShowReport(const std::string& definition, const QString& problem);

  bool Busy() const;
  bool Collapsed() const;
  void SetCollapsed(bool collapsed);
  QTableWidget* table() const { return table_; }
  QLabel* status() const { return status_; }
  QPlainTextEdit* errorText() const { return error_; }
  QPushButton* cancelButton() const { return cancel_; }
  // The statement that ran last and where the database said it failed (-1).
  const std::string& lastStatement() const { return ran_statement_; }
  long long errorPosition() const { return error_position_; }
  const QString& errorMessage() const { return error_message_; }

  // After each run, with the statement as it ran (the window marks the
  // failing filter value and the statement's place).
  std::function<void()> on_finished;

 private:
  // What to run: a runnable statement, or a report definition.
  struct Request {
    std::string text;
    bool report = false;
    QStringList names;
    std::vector<std::string> formats;
  };

  void Want(Request request);
  void ShowProblem(const QString& problem);
  void StartPending();
  void ShowReportRows(const results::Table& table);
  void OnColumns(const QStringList& names);
  void OnRows(const QList<QVariantList>& rows);
  void OnFinished(const reportengine::RunOutcome& outcome);
  void ShowBusy();
  void ShowErrorText(bool shown);

  reportengine::EditorDatabase database_;
  std::unique_ptr<reportengine::BackgroundRunner> runner_;
  QTimer debounce_;
  QTimer busy_;
  QToolButton* toggle_ = nullptr;
  QWidget* body_ = nullptr;
  QLabel* status_ = nullptr;
  QPushButton* cancel_ = nullptr;
  QTableWidget* table_ = nullptr;
  QPlainTextEdit* error_ = nullptr;

  Request wanted_;             // what to show ("" none)
  Request running_;            // what runs now ("" none)
  std::string shown_;          // the text of the request shown
  std::shared_ptr<results::Table> report_rows_;  // filled by a report's run
  std::string ran_statement_;  // the statement the rows or the error belong to
  long long error_position_ = -1;
  QString error_message_;
  int shown_rows_ = 0;
};

// Runs a statement once in the background for a dialog's "Test" button and
// tells its count or error as one line of text.
class StatementTest : public QObject {
  Q_OBJECT

 public:
  StatementTest(reportengine::EditorDatabase database, QObject* parent = nullptr);
  ~StatementTest() override;
  void Run(const std::string& view_sql, std::function<void(const QString&)> told);

 private:
  reportengine::EditorDatabase database_;
  std::unique_ptr<reportengine::BackgroundRunner> runner_;
};

}  // namespace cvve::gui
