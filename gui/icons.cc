#include "gui/icons.h"

#include <QHash>
#include <QPainter>
#include <QPainterPath>
#include <QPixmap>

namespace cvve::gui {

namespace {

constexpr int kSize = 16;

// Draws at twice the size for crisp scaling, then lets QIcon scale down.
QPixmap Canvas() {
  QPixmap pixmap(kSize * 2, kSize * 2);
  pixmap.fill(Qt::transparent);
  return pixmap;
}

void Folder(QPainter& p, bool open) {
  const QColor edge(0xA0, 0x74, 0x10);
  p.setPen(QPen(edge, 1.5));
  p.setBrush(QColor(0xF2, 0xC1, 0x4E));
  QPainterPath back;
  back.moveTo(2, 8);
  back.lineTo(2, 5);
  back.lineTo(11, 5);
  back.lineTo(14, 8);
  back.lineTo(29, 8);
  back.lineTo(29, 27);
  back.lineTo(2, 27);
  back.closeSubpath();
  p.drawPath(back);
  p.setBrush(QColor(0xFB, 0xD8, 0x7A));
  if (open) {
    QPolygonF front({QPointF(2, 27), QPointF(7, 14), QPointF(31, 14), QPointF(27, 27)});
    p.drawPolygon(front);
  } else {
    p.drawRect(QRectF(2, 12, 27, 15));
  }
}

void Profile(QPainter& p) {
  // A small list window: title bar and rows.
  p.setPen(QPen(QColor(0x2B, 0x57, 0x97), 1.5));
  p.setBrush(Qt::white);
  p.drawRoundedRect(QRectF(3, 4, 26, 24), 2, 2);
  p.fillRect(QRectF(4, 5, 24.5, 5), QColor(0x3C, 0x78, 0xC8));
  p.setPen(QPen(QColor(0x6E, 0x8F, 0xBF), 2));
  for (int y : {14, 19, 24}) p.drawLine(QPointF(7, y), QPointF(25, y));
}

void User(QPainter& p) {
  p.setPen(QPen(QColor(0x2F, 0x6B, 0x3A), 1.5));
  p.setBrush(QColor(0x6C, 0xB8, 0x6F));
  p.drawEllipse(QRectF(10, 3, 12, 12));
  QPainterPath body;
  body.moveTo(4, 29);
  body.cubicTo(4, 17, 28, 17, 28, 29);
  body.closeSubpath();
  p.drawPath(body);
}

void Search(QPainter& p) {
  p.setBrush(QColor(0xD8, 0xE8, 0xF8));
  p.setPen(QPen(QColor(0x30, 0x4A, 0x70), 3));
  p.drawEllipse(QRectF(4, 4, 16, 16));
  p.setPen(QPen(QColor(0x30, 0x4A, 0x70), 5, Qt::SolidLine, Qt::RoundCap));
  p.drawLine(QPointF(18, 18), QPointF(27, 27));
}

void Report(QPainter& p) {
  // A page with a folded corner and lines of text.
  p.setPen(QPen(QColor(0x7A, 0x5C, 0x1E), 1.5));
  p.setBrush(QColor(0xFF, 0xFB, 0xE6));
  QPainterPath page;
  page.moveTo(6, 2);
  page.lineTo(20, 2);
  page.lineTo(27, 9);
  page.lineTo(27, 30);
  page.lineTo(6, 30);
  page.closeSubpath();
  p.drawPath(page);
  p.drawLine(QPointF(20, 2), QPointF(20, 9));
  p.drawLine(QPointF(20, 9), QPointF(27, 9));
  p.setPen(QPen(QColor(0xB0, 0x8A, 0x3A), 2));
  for (int y : {14, 19, 24}) p.drawLine(QPointF(10, y), QPointF(23, y));
}

QIcon Draw(const std::string& name) {
  QPixmap pixmap = Canvas();
  QPainter p(&pixmap);
  p.setRenderHint(QPainter::Antialiasing);
  if (name == "closed") {
    Folder(p, false);
  } else if (name == "open") {
    Folder(p, true);
  } else if (name == "AcctView") {
    Profile(p);
  } else if (name == "user") {
    User(p);
  } else if (name == "Search") {
    Search(p);
  } else if (name == "SNotes") {
    Report(p);
  } else {
    return {};
  }
  p.end();
  return QIcon(pixmap);
}

}  // namespace

QIcon TreeIcon(const std::string& name) {
  static QHash<QString, QIcon> cache;
  const QString key = QString::fromStdString(name);
  auto it = cache.find(key);
  if (it == cache.end()) it = cache.insert(key, Draw(name));
  return *it;
}

}  // namespace cvve::gui
