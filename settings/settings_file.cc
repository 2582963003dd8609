#include "settings/settings_file.h"

#include <QDir>
#include <QFileInfo>
#include <QSettings>
#include <QStringList>

#include "host/host_services.h"

namespace cvve::settings {

namespace {

QSettings OpenSettingsFile() {
  return QSettings(QSettings::IniFormat, QSettings::UserScope, QStringLiteral("cvviewedit"),
                   QStringLiteral("cvviewedit"));
}

// A value the ini reader may have split at commas, whole again.
QString Text(const QSettings& file, const QString& key) {
  return file.value(key).toStringList().join(QLatin1Char(',')).trimmed();
}

std::string Path(const QSettings& file, const QString& value) {
  QString path = value;
  if (path == QLatin1String("~") || path.startsWith(QLatin1String("~/"))) {
    path = QDir::homePath() + path.mid(1);
  }
  if (QFileInfo(path).isRelative()) {
    path = QFileInfo(file.fileName()).dir().absoluteFilePath(path);
  }
  return WithoutTrailingSeparator(QDir::cleanPath(path).toStdString());
}

std::vector<std::string> Users(const QSettings& file, const QString& value) {
  // One entry that names a file is a users file; anything else is the list.
  if (!value.contains(QLatin1Char(','))) {
    const std::string path = Path(file, value);
    if (QFileInfo(QString::fromStdString(path)).isFile()) return UsersFile(path);
  }
  std::vector<std::string> users;
  for (const QString& name : value.split(QLatin1Char(','))) {
    users.push_back(name.trimmed().toStdString());
  }
  return users;
}

bool kRegistered = (RegisterSettingsReader(&ReadSettingsFile), true);

}  // namespace

QString UserSettingsFile() {
  (void)kRegistered;
  return OpenSettingsFile().fileName();
}

void ApplySettings(const QSettings& file, HostSettings& settings) {
  const QString views = Text(file, QStringLiteral("folders/views"));
  const QString reports = Text(file, QStringLiteral("folders/reports"));
  const QString users = Text(file, QStringLiteral("host/users"));
  const QString url = Text(file, QStringLiteral("database/url"));
  if (!views.isEmpty()) {
    settings.views_folder = Path(file, views);
    settings.reports_folder = settings.views_folder;
    settings.users = DemoUsers(settings.views_folder);
  }
  if (!reports.isEmpty()) settings.reports_folder = Path(file, reports);
  if (!users.isEmpty()) settings.users = Users(file, users);
  if (!url.isEmpty()) settings.database_url = url.toStdString();
}

void ReadSettingsFile(HostSettings& settings) { ApplySettings(OpenSettingsFile(), settings); }

}  // namespace cvve::settings
