#include "gui/about_box.h"

#include <QMessageBox>
#include <QString>

#include "cvviewedit/host_settings.h"

namespace cvve::gui {

QString AboutText() {
  return QStringLiteral(
             "<h3>cvViewEdit %1</h3>"
             "<p>The profile editor of the dealer-management suite: the lists' and "
             "reports' profiles, their statements and the custom reports.</p>"
             "<p>Built with Qt %2 (LGPL-3.0), pugixml (MIT), JSON for Modern C++ (MIT), "
             "ICU (Unicode licence), SQLite (public domain), HarfBuzz (MIT) and zlib "
             "(zlib licence); fonts: DejaVu (Bitstream Vera licence).</p>")
      .arg(QString::fromLatin1(Version()), QString::fromLatin1(qVersion()));
}

void ShowAboutBox(QWidget* parent) {
  QMessageBox box(QMessageBox::NoIcon, QStringLiteral("About cvViewEdit"), AboutText(),
                  QMessageBox::Ok, parent);
  box.setObjectName(QStringLiteral("aboutBox"));
  box.setTextFormat(Qt::RichText);
  box.exec();
}

}  // namespace cvve::gui
