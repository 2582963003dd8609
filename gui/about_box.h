#pragma once
// The About box: the product, its version and what it is for.
class QString;
class QWidget;

namespace cvve::gui {

// "cvViewEdit VERSION", what it does and the licences of what it is built
// from (rich text).
QString AboutText();
// Modal over `parent`.
void ShowAboutBox(QWidget* parent);

}  // namespace cvve::gui
