#include "reportengine/viewer_script/viewer_commands.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <nlohmann/json.hpp>
#include <optional>
#include <ostream>

#include "base/error.h"
#include "reportengine/background_report.h"
#include "reportengine/language/report_definition.h"
#include "reportengine/report_viewer.h"
#include "script/script_line.h"

namespace cvve::reportengine {

namespace {

const char* OutcomeName(const std::optional<RunOutcome>& outcome) {
  if (!outcome) return "running";
  switch (outcome->status) {
    case RunOutcome::Status::kDone: return "done";
    case RunOutcome::Status::kCancelled: return "cancelled";
    case RunOutcome::Status::kRefused: return "refused";
    case RunOutcome::Status::kTimeout: return "timeout";
    case RunOutcome::Status::kRowLimit: return "row limit";
    case RunOutcome::Status::kFailed: break;
  }
  return "failed";
}

}  // namespace

ViewerCommands::ViewerCommands(EngineSettings settings, std::function<void()> ensure_widgets)
    : settings_(std::move(settings)), ensure_widgets_(std::move(ensure_widgets)) {}

ViewerCommands::~ViewerCommands() { Close(); }

bool ViewerCommands::Run(const std::string& command, std::string_view rest, std::ostream& out) {
  if (command != "viewer") return false;
  script::Args args(rest);
  const std::string action = args.Word("viewer action (open, state, cancel, wait, close)");
  if (action == "open") {
    Open(args.Raw());
    return true;
  }
  if (action == "close") {
    Close();
    return true;
  }
  if (!window_) throw Error("no viewer is open: `viewer open FILE` first");
  if (action == "state") {
    window_->Refresh();
    out << State() << "\n";
  } else if (action == "cancel") {
    window_->CancelRun();
  } else if (action == "wait") {
    const std::string seconds = args.Empty() ? "60" : args.Word("seconds");
    int limit = 0;
    try {
      limit = std::stoi(seconds);
    } catch (const std::exception&) {
      throw Error("viewer wait: '" + seconds + "' is no number of seconds");
    }
    if (!live_->WaitForEnd(limit * 1000)) {
      throw Error("viewer wait: the run did not end within " + seconds + " seconds");
    }
    window_->Refresh();
  } else {
    throw Error("unknown viewer action '" + action + "' (open, state, cancel, wait, close)");
  }
  return true;
}

void ViewerCommands::Open(std::string_view rest) {
  Close();
  if (ensure_widgets_) ensure_widgets_();
  script::Args args(rest);
  const std::string file = args.Word("report file");
  RunSettings run;
  run.user_where = settings_.user_where;
  while (!args.Empty()) {
    const std::string set = args.Word("NAME=VALUE");
    const std::size_t equals = set.find('=');
    if (equals == std::string::npos || equals == 0) throw Error("'" + set + "' is not NAME=VALUE");
    run.variables[VariableKey(set.substr(0, equals))] = set.substr(equals + 1);
  }
  live_ = std::make_unique<LiveReport>(LoadReportDefinition(file), run, settings_.database,
                                       settings_.limits);
  try {
    live_->WaitForFirstPage(nullptr);
  } catch (...) {
    live_.reset();
    throw;
  }
  window_ = OpenLiveViewer(*live_, nullptr);
  window_->show();
}

void ViewerCommands::Close() {
  window_.reset();  // cancels a run that still lays out pages
  if (live_) {
    live_->Cancel();
    live_->WaitForEnd(-1);
  }
  live_.reset();
}

std::string ViewerCommands::State() const {
  nlohmann::ordered_json state;
  state["open"] = window_ != nullptr;
  state["running"] = window_->Running();
  state["pages"] = window_->PageCount();
  state["pageCount"] = window_->PageCountText().toStdString();
  state["page"] = window_->CurrentPage() + 1;
  state["outcome"] = OutcomeName(live_->Outcome());
  if (live_->Finished() && live_->Outcome()->Ok()) {
    state["rows"] = live_->Data().RowCount();
  } else {
    state["rows"] = nullptr;
  }
  return state.dump(2);
}

}  // namespace cvve::reportengine
