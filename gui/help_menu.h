#pragma once
// The window's Help menu: the keyboard shortcuts, the local documentation and
// About (version and the licences of what the program is built from).
#include <QString>
#include <utility>
#include <vector>

class QMenuBar;
class QWidget;

namespace cvve::gui {

// Keys and what they do, in the order the help lists them.
const std::vector<std::pair<QString, QString>>& KeyboardShortcuts();

// A menu bar with the Help menu, for the window's layout to place on top.
QMenuBar* CreateHelpMenuBar(QWidget* window);

// The folder of the documentation: the installed manual, else the source
// tree's for a build run in place; empty when neither is there.
QString DocumentationFolder();

}  // namespace cvve::gui
