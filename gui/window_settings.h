#pragma once
// The editor window's size and splitter positions, kept between sessions in
// the user's cvviewedit settings (an INI file, section [window]).
#include <QList>
#include <memory>

class QSettings;
class QSplitter;
class QWidget;

namespace cvve::gui {

// QSettings(IniFormat, UserScope, "cvviewedit", "cvviewedit").
std::unique_ptr<QSettings> OpenWindowSettings();

// Resizes the window to the remembered size (bounded by its screen) and puts
// each splitter (by object name) where it was. Returns whether a size was
// remembered; nothing changes for what was not.
bool RestoreWindowState(QWidget* window, const QList<QSplitter*>& splitters);
void SaveWindowState(const QWidget* window, const QList<QSplitter*>& splitters);

}  // namespace cvve::gui
