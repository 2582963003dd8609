#pragma once
// `viewedit script`: drives the editor with no display, one command a line,
// naming controls and events as the editor does (docs/script.md lists the
// commands). The entry call of `open` shows the editor modally; while a form
// is shown the runner goes on reading lines, so the lines after `open` act on
// the open editor and those after a click that opens a dialog act on it.
#include <iosfwd>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

namespace cvve {
class HostServices;
class ReportEngine;
class frmAcctViewEdit;
namespace ui {
class HeadlessPrompter;
}
namespace results {
class Source;
}
}  // namespace cvve

namespace cvve::script {

// A failing line: what() is "line N: reason".
class ScriptError : public std::runtime_error {
 public:
  ScriptError(int line, const std::string& reason);
  int Line() const { return line_; }
  const std::string& Reason() const { return reason_; }

 private:
  int line_;
  std::string reason_;
};

// Commands a host adds to the language (the report viewer's): Run returns
// false for a command it does not know, prints to `out`, and throws
// std::exception for a failing line.
class ScriptExtension {
 public:
  virtual ~ScriptExtension() = default;
  virtual bool Run(const std::string& command, std::string_view rest, std::ostream& out) = 0;
};

class ScriptRunner {
 public:
  // `host` must outlive the runner. Printed output goes to `out`. Without a
  // report engine a preview shows nothing; without a source of rows
  // `results` fails.
  ScriptRunner(HostServices& host, std::ostream& out, ReportEngine* reports = nullptr,
               results::Source* rows = nullptr);
  ~ScriptRunner();
  ScriptRunner(const ScriptRunner&) = delete;
  ScriptRunner& operator=(const ScriptRunner&) = delete;

  // Runs every line of `script`. Throws ScriptError for the first line that
  // fails (an unknown command, bad arguments, a question with no answer
  // queued, a failed `expect`, an operation that threw); the forms still
  // open are then closed without saving, and no further line runs. A script
  // that ends with forms open closes them the same way and succeeds, unless
  // answers it queued were never asked for.
  void Run(std::string_view script);
  // As Run, reading the lines from `in` as they arrive: each line runs (and
  // its output is flushed) before the next one is read.
  void Run(std::istream& in);

  // Asked for the commands the runner does not know; must outlive the runner.
  void SetExtension(ScriptExtension* extension);

  // The editor of the last `open` (kept after it closed); nullptr before.
  frmAcctViewEdit* Editor();
  ui::HeadlessPrompter& Prompter();

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

}  // namespace cvve::script
