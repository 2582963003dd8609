#pragma once
// A report engine in front of another that notes every report the preview
// shows: its file, the variable values it ran with and its page count, so a
// script can check a preview without a screen.
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "reports/report_engine.h"

namespace cvve::script {

struct ShownPreview {
  std::string file;  // the report definition loaded
  int pages = 0;
  std::vector<std::pair<std::string, std::string>> variables;  // name, value as run
};

class PreviewRecorder : public ReportEngine {
 public:
  // `inner` must outlive the recorder.
  explicit PreviewRecorder(ReportEngine& inner) : inner_(inner) {}
  std::unique_ptr<Report> CreateReport() override;
  std::unique_ptr<ReportViewer> CreateViewer() override;
  // Every viewer's Show so far, oldest first.
  const std::vector<ShownPreview>& Shown() const { return *shown_; }

 private:
  ReportEngine& inner_;
  std::shared_ptr<std::vector<ShownPreview>> shown_ = std::make_shared<std::vector<ShownPreview>>();
};

}  // namespace cvve::script
