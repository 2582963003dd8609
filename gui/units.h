#pragma once
// Twips, the unit the editor's models keep sizes in, against screen pixels:
// 1440 twips per logical inch (15 per pixel at 96 dpi).
#include <QWidget>
#include <cmath>

namespace cvve::gui {

inline constexpr int kTwipsPerInch = 1440;

// Twips per pixel of the widget's screen, rounded to a whole number.
inline int TwipsPerPixelX(const QWidget* w) {
  int dpi = w ? w->logicalDpiX() : 96;
  return static_cast<int>(std::lround(double(kTwipsPerInch) / (dpi > 0 ? dpi : 96)));
}
inline int TwipsPerPixelY(const QWidget* w) {
  int dpi = w ? w->logicalDpiY() : 96;
  return static_cast<int>(std::lround(double(kTwipsPerInch) / (dpi > 0 ? dpi : 96)));
}
inline int ToPixelsX(const QWidget* w, int twips) {
  return static_cast<int>(std::lround(double(twips) / TwipsPerPixelX(w)));
}
inline int ToPixelsY(const QWidget* w, int twips) {
  return static_cast<int>(std::lround(double(twips) / TwipsPerPixelY(w)));
}

}  // namespace cvve::gui
