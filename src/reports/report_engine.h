#pragma once
// The host's report engine as the preview uses it: a report object that
// loads a report definition and exposes its variables, a result with a count
// of pages, and a viewer that shows a result.
#include <memory>
#include <string>

namespace cvve {

class ReportResult {
 public:
  virtual ~ReportResult() = default;
  // Pages produced (0 for an empty result).
  virtual int Count() const = 0;
};

class Report {
 public:
  virtual ~Report() = default;
  // Throws cvve::Error with a description when the file cannot be used.
  virtual void Load(const std::string& path) = 0;
  virtual int VariableCount() const = 0;
  // 1-based position; throws cvve::Error outside 1..VariableCount().
  virtual std::string VariableName(int position) const = 0;
  virtual std::string VariableValue(int position) const = 0;
  virtual void SetVariableValue(int position, const std::string& value) = 0;
  // Runs the report; nullptr when it yields nothing. Failures throw cvve::Error.
  virtual std::unique_ptr<ReportResult> Run() = 0;
};

class ReportViewer {
 public:
  virtual ~ReportViewer() = default;
  virtual void SetResult(std::unique_ptr<ReportResult> result) = 0;
  // Shows the result (modal on a screen; recorded when headless).
  virtual void Show() = 0;
};

class ReportEngine {
 public:
  virtual ~ReportEngine() = default;
  virtual std::unique_ptr<Report> CreateReport() = 0;
  virtual std::unique_ptr<ReportViewer> CreateViewer() = 0;
};

}  // namespace cvve
