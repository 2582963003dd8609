#include "gui/about_box.h"

#include <QBoxLayout>
#include <QMenuBar>
#include <QMessageBox>
#include <QString>

#include "cvviewedit/host_settings.h"

namespace cvve::gui {

QString AboutText() {
  return QStringLiteral(
             "<b>cvViewEdit %1</b><p>The editor of the list and report profiles of the "
             "dealer-management suite: columns, filters, sorting, totals and custom "
             "reports.</p><p>Qt %2</p>")
      .arg(QString::fromLatin1(Version()), QString::fromLatin1(qVersion()));
}

void ShowAboutBox(QWidget* parent) {
  QMessageBox box(QMessageBox::NoIcon, QStringLiteral("About cvViewEdit"), AboutText(),
                  QMessageBox::Ok, parent);
  box.setObjectName(QStringLiteral("aboutBox"));
  box.setTextFormat(Qt::RichText);
  box.exec();
}

void AddHelpMenu(QWidget* window, QBoxLayout* layout) {
  auto* bar = new QMenuBar(window);
  bar->setObjectName(QStringLiteral("menuBar"));
  QMenu* help = bar->addMenu(QStringLiteral("&Help"));
  help->setObjectName(QStringLiteral("mnuHelp"));
  QAction* about = help->addAction(QStringLiteral("&About cvViewEdit"));
  about->setObjectName(QStringLiteral("mnuAbout"));
  QObject::connect(about, &QAction::triggered, window, [window] { ShowAboutBox(window); });
  layout->setMenuBar(bar);
}

}  // namespace cvve::gui
