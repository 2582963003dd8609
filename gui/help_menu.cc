#include "gui/help_menu.h"

#include <QAction>
#include <QCoreApplication>
#include <QDesktopServices>
#include <QDialog>
#include <QDialogButtonBox>
#include <QDir>
#include <QFileInfo>
#include <QHeaderView>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QTableWidget>
#include <QUrl>
#include <QVBoxLayout>

#include "gui/about_box.h"

namespace cvve::gui {

const std::vector<std::pair<QString, QString>>& KeyboardShortcuts() {
  static const std::vector<std::pair<QString, QString>> keys{
      {"Tab / Shift+Tab", "Next or previous control, step by step"},
      {"Alt+underlined letter", "The control of that letter (Alt+1 ... Alt+7: the steps)"},
      {"Ctrl+F", "Search profile names"},
      {"F2 (in the profile tree)", "Edit Name"},
      {"Delete (in the profile tree)", "Delete profile"},
      {"Ctrl+N / Ctrl+D / Ctrl+S", "New / Copy / Save profile"},
      {"Enter (in a column list)", "Use the column, or stop using it, as a double click"},
      {"Space (in the tabs or filter list)", "Check or clear the row"},
      {"F2 or Enter (on a filter row)", "Open the row's first value"},
      {"Tab (in a first value)", "On to the row's second value, when it has one"},
      {"Enter / Escape (in a value)", "Keep the value and close / close"},
      {"F1", "These shortcuts"},
      {"Report viewer: Ctrl+P", "Print"},
      {"Report viewer: Ctrl+F, F3", "Find text, find again"},
      {"Report viewer: Page Up / Page Down", "Previous / next page"},
      {"Report viewer: Home / End", "First / last page"},
      {"Report viewer: + / - / Ctrl+0", "Zoom in / out / fit the width"},
  };
  return keys;
}

QString DocumentationFolder() {
  // An installed program finds the manual beside it (a moved prefix too),
  // then where it was installed to; one run from its build folder, the
  // source tree's.
  const QString candidates[] = {
      QDir(QCoreApplication::applicationDirPath())
          .absoluteFilePath(QStringLiteral("../" CVVE_INSTALLED_DOCS_RELATIVE)),
      QStringLiteral(CVVE_INSTALLED_DOCS_DIR),
      QStringLiteral(CVVE_SOURCE_DOCS_DIR),
  };
  for (const QString& folder : candidates) {
    if (QFileInfo::exists(QDir(folder).filePath("window.md"))) return QDir::cleanPath(folder);
  }
  return QString();
}

namespace {

void ShowShortcuts(QWidget* window) {
  QDialog dialog(window);
  dialog.setObjectName("dlgShortcuts");
  dialog.setWindowTitle("Keyboard Shortcuts");
  auto* layout = new QVBoxLayout(&dialog);
  const auto& keys = KeyboardShortcuts();
  auto* table = new QTableWidget(static_cast<int>(keys.size()), 2, &dialog);
  table->setObjectName("tblShortcuts");
  table->setAccessibleName("Keyboard shortcuts");
  table->setHorizontalHeaderLabels({"Keys", "Action"});
  table->verticalHeader()->hide();
  table->setEditTriggers(QAbstractItemView::NoEditTriggers);
  for (int row = 0; row < static_cast<int>(keys.size()); ++row) {
    table->setItem(row, 0, new QTableWidgetItem(keys[static_cast<std::size_t>(row)].first));
    table->setItem(row, 1, new QTableWidgetItem(keys[static_cast<std::size_t>(row)].second));
  }
  table->resizeColumnsToContents();
  table->horizontalHeader()->setStretchLastSection(true);
  layout->addWidget(table);
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close, &dialog);
  QObject::connect(buttons, &QDialogButtonBox::rejected, &dialog, &QDialog::reject);
  layout->addWidget(buttons);
  dialog.resize(640, 480);
  dialog.exec();
}

void OpenDocumentation(QWidget* window) {
  const QString folder = DocumentationFolder();
  const QString page = QDir(folder).filePath("window.md");
  if (folder.isEmpty() || !QFileInfo::exists(page) ||
      !QDesktopServices::openUrl(QUrl::fromLocalFile(folder))) {
    QMessageBox::information(window, "Documentation",
                             QStringLiteral("The documentation is in the folder\n%1")
                                 .arg(folder.isEmpty() ? QStringLiteral("docs") : folder));
  }
}

}  // namespace

QMenuBar* CreateHelpMenuBar(QWidget* window) {
  auto* bar = new QMenuBar(window);
  bar->setObjectName("menuBar");
  bar->setAccessibleName("Menu bar");
  QMenu* help = bar->addMenu("&Help");
  help->setObjectName("mnuHelp");
  QAction* keys = help->addAction("&Keyboard Shortcuts", window, [window] { ShowShortcuts(window); });
  keys->setObjectName("actShortcuts");
  keys->setShortcut(QKeySequence(Qt::Key_F1));
  keys->setShortcutContext(Qt::WindowShortcut);
  // A menu bar inside a QWidget window sees its actions' shortcuts only when
  // the window holds them too.
  window->addAction(keys);
  help->addAction("&Documentation", window, [window] { OpenDocumentation(window); })
      ->setObjectName("actDocumentation");
  help->addSeparator();
  help->addAction("&About cvViewEdit", window,
                  [window] { ShowAboutBox(window); })
      ->setObjectName("actAbout");
  help->addAction("About &Qt", window, [window] { QMessageBox::aboutQt(window); })
      ->setObjectName("actAboutQt");
  return bar;
}

}  // namespace cvve::gui
