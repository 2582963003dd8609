#pragma once
// What the editor needs from its host application, as plain values: where
// the view files and the custom reports are, who the users are, the host's
// name in messages and the database reports run on. A host fills one in, or
// starts from Load() and changes what it knows better.
#include <string>
#include <vector>

namespace cvve {

struct HostSettings {
  // The folder of the view files (acctviews.xml and the others).
  std::string views_folder;
  // The folder that holds "Custom Reports".
  std::string reports_folder;
  // The host's users, in the host's order.
  std::vector<std::string> users;
  // The host application's name, as the editor's messages name it.
  std::string host_name = "Corvane";
  // The database reports run on: an SQLite file (or sqlite:///PATH), or
  // postgresql://[USER@]HOST[:PORT]/DB or postgresql:///?service=NAME, with
  // the password in ~/.pgpass; "" for the demo database.
  std::string database_url;

  // The defaults: the demo data (the folder $CVVE_DATA_DIR names, else the
  // one installed with the library), then whatever the settings file
  // $XDG_CONFIG_HOME/cvviewedit/cvviewedit.ini (else
  // /etc/xdg/cvviewedit/cvviewedit.ini) says.
  static HostSettings Load();
};

// The library's version, "MAJOR.MINOR.PATCH".
const char* Version();

}  // namespace cvve
