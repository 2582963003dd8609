#include "reportengine/qt_report_engine.h"

#include <QPointer>
#include <QWidget>

#include "base/error.h"
#include "reportengine/background_report.h"
#include "reportengine/report_viewer.h"

namespace cvve::reportengine {

LaidOutResult::LaidOutResult(ReportDefinition def, ReportData data,
                             std::shared_ptr<const ReportLayout> layout,
                             std::vector<std::string> variables)
    : def_(std::move(def)),
      data_(std::move(data)),
      layout_(std::move(layout)),
      variables_(std::move(variables)) {}

LiveResult::LiveResult(std::unique_ptr<LiveReport> live, std::vector<std::string> variables)
    : live_(std::move(live)), variables_(std::move(variables)) {}

LiveResult::~LiveResult() = default;

int LiveResult::Count() const {
  if (live_->Finished() && live_->Outcome()->Ok() && live_->Data().RowCount() == 0) return 0;
  return live_->Pages()->Count();
}

int LaidOutResult::Count() const {
  return data_.RowCount() == 0 ? 0 : static_cast<int>(layout_->pages.size());
}

SqlReport::SqlReport(EngineSettings settings, ProgressFunction progress, bool in_background,
                     QWidget* window)
    : settings_(std::move(settings)),
      progress_(std::move(progress)),
      in_background_(in_background),
      window_(window) {}

void SqlReport::Load(const std::string& path) {
  def_ = LoadReportDefinition(path);
  values_.assign(def_.variables.size(), std::string());
  loaded_ = true;
}

int SqlReport::VariableCount() const { return static_cast<int>(def_.variables.size()); }

void SqlReport::CheckPosition(int position) const {
  if (position < 1 || position > VariableCount()) {
    throw Error("the report has no variable at position " + std::to_string(position) + " (it has " +
                std::to_string(VariableCount()) + ")");
  }
}

std::string SqlReport::VariableName(int position) const {
  CheckPosition(position);
  return def_.variables[static_cast<std::size_t>(position - 1)].name;
}

std::string SqlReport::VariableValue(int position) const {
  CheckPosition(position);
  return values_[static_cast<std::size_t>(position - 1)];
}

void SqlReport::SetVariableValue(int position, const std::string& value) {
  CheckPosition(position);
  values_[static_cast<std::size_t>(position - 1)] = value;
}

std::unique_ptr<ReportResult> SqlReport::Run() {
  if (!loaded_) throw Error("no report definition is loaded");
  RunSettings run;
  run.user_where = settings_.user_where;
  run.progress = progress_;
  std::vector<std::string> used;
  for (std::size_t i = 0; i < def_.variables.size(); ++i) {
    // An empty value counts as none: the run warns about it.
    if (!values_[i].empty()) run.variables[def_.variables[i].name] = values_[i];
    used.push_back(def_.variables[i].name + "=" + values_[i]);
  }
  if (in_background_) {
    auto live = std::make_unique<LiveReport>(def_, run, settings_.database, settings_.limits);
    live->WaitForFirstPage(window_);
    warnings_ = live->Finished() ? live->Data().warnings : std::vector<std::string>();
    return std::make_unique<LiveResult>(std::move(live), std::move(used));
  }
  ReportData data;
  {
    GuardedConnection db(settings_.database, settings_.limits);
    data = RunReport(def_, db, run);
  }
  warnings_ = data.warnings;
  auto layout = std::make_shared<const ReportLayout>(Paginate(def_, data, progress_));
  return std::make_unique<LaidOutResult>(def_, std::move(data), std::move(layout), std::move(used));
}

namespace {

class WindowViewer : public ReportViewer {
 public:
  explicit WindowViewer(QWidget* parent) : parent_(parent) {}
  void SetResult(std::unique_ptr<ReportResult> result) override { result_ = std::move(result); }
  void Show() override {
    if (const auto* live = dynamic_cast<const LiveResult*>(result_.get())) {
      ShowLiveReport(live->Live(), parent_.data());
      return;
    }
    const auto* laid_out = dynamic_cast<const LaidOutResult*>(result_.get());
    if (laid_out == nullptr) return;
    ReportViewerWindow window(laid_out->Layout(), parent_.data());
    window.SetRows(&laid_out->Definition(), &laid_out->Data());
    window.exec();
  }

 private:
  QPointer<QWidget> parent_;
  std::unique_ptr<ReportResult> result_;
};

class RecordingViewer : public ReportViewer {
 public:
  explicit RecordingViewer(std::shared_ptr<std::vector<HeadlessReportEngine::Shown>> shown)
      : shown_(std::move(shown)) {}
  void SetResult(std::unique_ptr<ReportResult> result) override { result_ = std::move(result); }
  void Show() override {
    HeadlessReportEngine::Shown entry;
    if (const auto* laid_out = dynamic_cast<const LaidOutResult*>(result_.get())) {
      entry.name = laid_out->Definition().name;
      entry.source = laid_out->Definition().source;
      entry.rows = laid_out->Data().RowCount();
      entry.variables = laid_out->Variables();
    }
    entry.pages = result_ ? result_->Count() : 0;
    shown_->push_back(std::move(entry));
  }

 private:
  std::shared_ptr<std::vector<HeadlessReportEngine::Shown>> shown_;
  std::unique_ptr<ReportResult> result_;
};

}  // namespace

QtReportEngine::QtReportEngine(EngineSettings settings, QWidget* parent)
    : settings_(std::move(settings)), parent_(parent) {}

std::unique_ptr<Report> QtReportEngine::CreateReport() {
  return std::make_unique<SqlReport>(settings_, GuiProgress(parent_, QStringLiteral("Report")),
                                     true, parent_);
}

std::unique_ptr<ReportViewer> QtReportEngine::CreateViewer() {
  return std::make_unique<WindowViewer>(parent_);
}

HeadlessReportEngine::HeadlessReportEngine(EngineSettings settings)
    : settings_(std::move(settings)), shown_(std::make_shared<std::vector<Shown>>()) {}

std::unique_ptr<Report> HeadlessReportEngine::CreateReport() {
  return std::make_unique<SqlReport>(settings_, ProgressFunction());
}

std::unique_ptr<ReportViewer> HeadlessReportEngine::CreateViewer() {
  return std::make_unique<RecordingViewer>(shown_);
}

}  // namespace cvve::reportengine
