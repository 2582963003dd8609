// The settings file over the demo defaults: which keys move which settings,
// relative and home paths, users as a list or a file, and the file found
// through XDG_CONFIG_HOME by HostSettings::Load().
#include <gtest/gtest.h>
#include <unistd.h>

#include <QDir>
#include <QSettings>
#include <QTemporaryDir>
#include <cstdlib>
#include <fstream>
#include <string>
#include <vector>

#include "host/host_services.h"
#include "settings/settings_file.h"

namespace cvve::settings {
namespace {

void Write(const std::string& path, const std::string& text) {
  std::ofstream(path) << text;
}

HostSettings Base() {
  HostSettings base;
  base.views_folder = "/demo";
  base.reports_folder = "/demo";
  base.users = {"demo user"};
  return base;
}

struct Case {
  const char* name;
  std::string ini;  // "@" stands for the settings file's folder
  std::string views, reports;
  std::vector<std::string> users;
  std::string url;
};

TEST(SettingsFile, KeysOverTheDefaults) {
  QTemporaryDir dir;
  ASSERT_TRUE(dir.isValid());
  const std::string root = dir.path().toStdString();
  QDir(dir.path()).mkpath("dealer/views");
  QDir(dir.path()).mkpath("dealer/reports");
  Write(root + "/dealer/views/users.txt", "# staff\nAnn\nBob\n\nCarl\n");
  Write(root + "/staff.txt", "Dora\r\nEd\r\n");
  const std::string views = root + "/dealer/views";
  const std::string home = QDir::homePath().toStdString();

  const std::vector<Case> cases = {
      {"empty file", "", "/demo", "/demo", {"demo user"}, ""},
      {"unknown keys only", "[other]\nviews=/x\n", "/demo", "/demo", {"demo user"}, ""},
      {"views moves reports and users along",
       "[folders]\nviews=@/dealer/views/\n", views, views, {"Ann", "Bob", "", "Carl"}, ""},
      {"relative folders from the file's folder",
       "[folders]\nviews=dealer/views\nreports=dealer/reports\n", views,
       root + "/dealer/reports", {"Ann", "Bob", "", "Carl"}, ""},
      {"home folder", "[folders]\nreports=~/cvve-reports\n", "/demo", home + "/cvve-reports",
       {"demo user"}, ""},
      {"users as a list", "[host]\nusers=Ann Lee, Bob ,Carl\n", "/demo", "/demo",
       {"Ann Lee", "Bob", "Carl"}, ""},
      {"users as a quoted list", "[host]\nusers=\"Ann, Bob\"\n", "/demo", "/demo",
       {"Ann", "Bob"}, ""},
      {"users as a file", "[host]\nusers=staff.txt\n", "/demo", "/demo", {"Dora", "Ed"}, ""},
      {"one user that is no file", "[host]\nusers=Frank\n", "/demo", "/demo", {"Frank"}, ""},
      {"database url", "[database]\nurl=postgresql:///?service=dealer\n", "/demo", "/demo",
       {"demo user"}, "postgresql:///?service=dealer"},
      {"sqlite path with the other keys",
       "[database]\nurl=/srv/dealer.db\ntimeout_seconds=30\nrow_limit=5000\n", "/demo", "/demo",
       {"demo user"}, "/srv/dealer.db"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    std::string ini = c.ini;
    for (size_t at = ini.find('@'); at != std::string::npos; at = ini.find('@')) {
      ini.replace(at, 1, root);
    }
    const std::string path = root + "/cvviewedit.ini";
    Write(path, ini);
    const QSettings file(QString::fromStdString(path), QSettings::IniFormat);
    HostSettings settings = Base();
    ApplySettings(file, settings);
    EXPECT_EQ(settings.views_folder, c.views);
    EXPECT_EQ(settings.reports_folder, c.reports);
    EXPECT_EQ(settings.users, c.users);
    EXPECT_EQ(settings.database_url, c.url);
    EXPECT_EQ(settings.host_name, "Corvane");
  }
}

TEST(SettingsFile, LoadReadsTheUsersFileOverTheDemoData) {
  QTemporaryDir dir;
  ASSERT_TRUE(dir.isValid());
  const std::string config = dir.path().toStdString();
  ASSERT_EQ(setenv("XDG_CONFIG_HOME", config.c_str(), 1), 0);

  // No file: the demo data.
  HostSettings demo = HostSettings::Load();
  EXPECT_EQ(demo.views_folder, DemoDataFolder());
  EXPECT_EQ(demo.users, DemoUsers(DemoDataFolder()));
  EXPECT_TRUE(demo.database_url.empty());

  QDir(dir.path()).mkpath("cvviewedit");
  Write(config + "/cvviewedit/cvviewedit.ini",
        "[host]\nusers=Zed\n[database]\nurl=/srv/dealer.db\n");
  EXPECT_EQ(UserSettingsFile().toStdString(), config + "/cvviewedit/cvviewedit.ini");
  const HostSettings loaded = HostSettings::Load();
  EXPECT_EQ(loaded.views_folder, DemoDataFolder());
  EXPECT_EQ(loaded.users, std::vector<std::string>{"Zed"});
  EXPECT_EQ(loaded.database_url, "/srv/dealer.db");

  // What the host services make of it: the demo folders, the file's users.
  const DefaultHostServices host(loaded);
  EXPECT_EQ(host.ViewFilesFolder(), DemoDataFolder());
  EXPECT_EQ(host.Users(), std::vector<std::string>{"Zed"});
}

}  // namespace
}  // namespace cvve::settings
