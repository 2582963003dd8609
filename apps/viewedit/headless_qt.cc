// The Qt application object for commands without a window: QtSql loads its
// drivers through it and laying out report pages needs the fonts of the
// offscreen platform.
#include "commands.h"

#if CVVE_WITH_QT
#include <QApplication>
#include <QGuiApplication>
#include <cstdlib>
#include <memory>

#include "reportengine/results/guarded_source.h"

namespace viewedit {

void EnsureHeadlessQt(bool widgets) {
  if (QCoreApplication::instance() != nullptr) return;
  if (std::getenv("QT_QPA_PLATFORM") == nullptr) setenv("QT_QPA_PLATFORM", "offscreen", 1);
  static int argc = 1;
  static char name[] = "viewedit";
  static char* argv[] = {name, nullptr};
  // Lives as long as the process: destroying it among the static objects at
  // exit would outlive parts of Qt it needs.
  if (widgets) {
    new QApplication(argc, argv);
  } else {
    new QGuiApplication(argc, argv);
  }
}

cvve::reportengine::EditorDatabase ResolveEditorDatabase(const HostOptions& options) {
  return {options.database, options.user_where,
          cvve::reportengine::ResolveLimits(options.timeout_seconds, options.row_limit)};
}

cvve::results::Table LazyRowsSource::Run(const std::string& view_sql,
                                         const std::vector<std::string>& formats,
                                         std::size_t keep_rows) {
  return Opened().Run(view_sql, formats, keep_rows);
}

cvve::results::Table LazyRowsSource::RunReport(const std::string& definition,
                                               std::size_t keep_rows) {
  return Opened().RunReport(definition, keep_rows);
}

cvve::reportengine::GuardedSource& LazyRowsSource::Opened() {
  if (!source_) {
    EnsureHeadlessQt();
    source_ = std::make_unique<cvve::reportengine::GuardedSource>(ResolveEditorDatabase(options_));
  }
  return *source_;
}

LazyRowsSource::LazyRowsSource(const HostOptions& options) : options_(options) {}
LazyRowsSource::~LazyRowsSource() = default;

}  // namespace viewedit
#endif
