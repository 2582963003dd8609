#include "script/preview_recorder.h"

namespace cvve::script {

namespace {

// The engine's own result travels inside, with what the run used; the
// viewer unwraps it, since the engine's viewer expects its own kind.
class NotedResult : public ReportResult {
 public:
  NotedResult(std::unique_ptr<ReportResult> result, ShownPreview what)
      : inner(std::move(result)), noted(std::move(what)) {}
  int Count() const override { return inner ? inner->Count() : 0; }
  std::unique_ptr<ReportResult> inner;
  ShownPreview noted;
};

class NotingReport : public Report {
 public:
  explicit NotingReport(std::unique_ptr<Report> inner) : inner_(std::move(inner)) {}
  void Load(const std::string& path) override {
    inner_->Load(path);
    file_ = path;
  }
  int VariableCount() const override { return inner_->VariableCount(); }
  std::string VariableName(int position) const override { return inner_->VariableName(position); }
  std::string VariableValue(int position) const override { return inner_->VariableValue(position); }
  void SetVariableValue(int position, const std::string& value) override {
    inner_->SetVariableValue(position, value);
  }
  std::unique_ptr<ReportResult> Run() override {
    std::unique_ptr<ReportResult> result = inner_->Run();
    if (!result) return nullptr;
    ShownPreview noted{file_, result->Count(), {}};
    for (int position = 1; position <= inner_->VariableCount(); ++position) {
      noted.variables.emplace_back(inner_->VariableName(position), inner_->VariableValue(position));
    }
    return std::make_unique<NotedResult>(std::move(result), std::move(noted));
  }

 private:
  std::unique_ptr<Report> inner_;
  std::string file_;
};

class NotingViewer : public ReportViewer {
 public:
  NotingViewer(std::unique_ptr<ReportViewer> inner,
               std::shared_ptr<std::vector<ShownPreview>> shown)
      : inner_(std::move(inner)), shown_(std::move(shown)) {}
  void SetResult(std::unique_ptr<ReportResult> result) override {
    if (auto* noted = dynamic_cast<NotedResult*>(result.get())) {
      noted_ = noted->noted;
      inner_->SetResult(std::move(noted->inner));
    } else {
      noted_ = ShownPreview{};
      inner_->SetResult(std::move(result));
    }
  }
  void Show() override {
    inner_->Show();
    shown_->push_back(noted_);
  }

 private:
  std::unique_ptr<ReportViewer> inner_;
  std::shared_ptr<std::vector<ShownPreview>> shown_;
  ShownPreview noted_;
};

}  // namespace

std::unique_ptr<Report> PreviewRecorder::CreateReport() {
  return std::make_unique<NotingReport>(inner_.CreateReport());
}

std::unique_ptr<ReportViewer> PreviewRecorder::CreateViewer() {
  return std::make_unique<NotingViewer>(inner_.CreateViewer(), shown_);
}

}  // namespace cvve::script
