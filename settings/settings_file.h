#pragma once
// The settings file an administrator writes for the editor:
// $XDG_CONFIG_HOME/cvviewedit/cvviewedit.ini, else the system-wide
// /etc/xdg/cvviewedit/cvviewedit.ini. Keys read here:
//   [folders] views, reports   folders (relative ones from the file's folder)
//   [host] users               a comma list, or a file of one name per line
//   [database] url             the reports' database
// Loading the library registers the reader with HostSettings::Load().
#include <QString>

#include "cvviewedit/host_settings.h"

class QSettings;

namespace cvve::settings {

// The user's settings file (it need not exist).
QString UserSettingsFile();
// Lays what `file` says over `settings`. A views folder without a reports
// folder or users also moves those to it, as the demo data is laid out.
void ApplySettings(const QSettings& file, HostSettings& settings);
// ApplySettings with the settings file.
void ReadSettingsFile(HostSettings& settings);

}  // namespace cvve::settings
