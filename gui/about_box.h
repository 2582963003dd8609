#pragma once
// The About box: the product, its version and what it is for.
class QBoxLayout;
class QString;
class QWidget;

namespace cvve::gui {

// "cvViewEdit VERSION" and a line on what it does (rich text).
QString AboutText();
// Modal over `parent`.
void ShowAboutBox(QWidget* parent);
// Puts a menu bar with Help > About on top of `layout`, the window's root.
void AddHelpMenu(QWidget* window, QBoxLayout* layout);

}  // namespace cvve::gui
