#pragma once
// The tree's images, drawn with QPainter (no image files): "closed" and
// "open" folders, "AcctView" profiles, "user" entries, the "Search" folder
// and "SNotes" report files. An unknown name gives an empty icon.
#include <QIcon>
#include <string>

namespace cvve::gui {

QIcon TreeIcon(const std::string& name);

}  // namespace cvve::gui
