#pragma once
// What assistive technology reads for the editor window's controls: a name
// for every interactive widget (the caption a sighted user reads next to it)
// and a description where the name alone does not say what the control does.
#include <QString>

class QWidget;

namespace cvve::gui {

// Names and describes the window's widgets by object name; a widget the
// table does not know keeps what Qt derives from its text or label.
void NameForAssistiveTechnology(QWidget* window);

}  // namespace cvve::gui
