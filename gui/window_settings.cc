#include "gui/window_settings.h"

#include <QScreen>
#include <QSettings>
#include <QSplitter>
#include <QWidget>

namespace cvve::gui {

namespace {

constexpr const char* kGroup = "window";
constexpr const char* kSize = "size";

QString SplitterKey(const QSplitter* splitter) {
  return QStringLiteral("splitter-") + splitter->objectName();
}

}  // namespace

QSize FirstWindowSize(QSize available, QSize needed) {
  // Room for the window's frame and title.
  constexpr QSize kFrame(24, 48);
  return (available * 0.9).expandedTo(needed).boundedTo(available - kFrame);
}

std::unique_ptr<QSettings> OpenWindowSettings() {
  return std::make_unique<QSettings>(QSettings::IniFormat, QSettings::UserScope, "cvviewedit",
                                     "cvviewedit");
}

bool RestoreWindowState(QWidget* window, const QList<QSplitter*>& splitters) {
  const std::unique_ptr<QSettings> settings = OpenWindowSettings();
  settings->beginGroup(kGroup);
  const QSize size = settings->value(kSize).toSize();
  const bool sized = size.isValid() && !size.isEmpty();
  if (sized) {
    QSize fit = size.expandedTo(window->minimumSize());
    // A size from a larger screen is cut to this one.
    if (QScreen* screen = window->screen()) fit = fit.boundedTo(screen->availableGeometry().size());
    window->resize(fit);
  }
  for (QSplitter* splitter : splitters) {
    const QByteArray state = settings->value(SplitterKey(splitter)).toByteArray();
    if (!state.isEmpty()) splitter->restoreState(state);
  }
  settings->endGroup();
  return sized;
}

void SaveWindowState(const QWidget* window, const QList<QSplitter*>& splitters) {
  const std::unique_ptr<QSettings> settings = OpenWindowSettings();
  settings->beginGroup(kGroup);
  // The normal size, so a maximised window comes back at a usable size.
  settings->setValue(kSize, window->isMaximized() || window->isFullScreen()
                                ? window->normalGeometry().size()
                                : window->size());
  for (const QSplitter* splitter : splitters) {
    settings->setValue(SplitterKey(splitter), splitter->saveState());
  }
  settings->endGroup();
  settings->sync();
}

}  // namespace cvve::gui
