#pragma once
// The editor window's size and splitter positions, kept between sessions in
// the user's cvviewedit settings (an INI file, section [window]).
#include <QList>
#include <QSize>
#include <memory>

class QSettings;
class QSplitter;
class QWidget;

namespace cvve::gui {

// QSettings(IniFormat, UserScope, "cvviewedit", "cvviewedit").
std::unique_ptr<QSettings> OpenWindowSettings();

// The size of a first session on a screen with this much room: most of a
// large screen, and on a small one (1024x768) what the editor needs so as
// not to scroll, as far as the screen holds it with its frame.
QSize FirstWindowSize(QSize available, QSize needed);

// Resizes the window to the remembered size (bounded by its screen) and puts
// each splitter (by object name) where it was. Returns whether a size was
// remembered; nothing changes for what was not.
bool RestoreWindowState(QWidget* window, const QList<QSplitter*>& splitters);
void SaveWindowState(const QWidget* window, const QList<QSplitter*>& splitters);

}  // namespace cvve::gui
