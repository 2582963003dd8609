#pragma once
// Real `viewedit` processes for the tests that need them: a demo copy in a
// folder of its own, scripts run to the end, started to be killed, or fed
// line by line.
#include <sys/types.h>

#include <filesystem>
#include <map>
#include <string>
#include <vector>

namespace cvve::processes {

// A copy of the demo data in a new temporary folder, removed with the object.
class DemoCopy {
 public:
  DemoCopy();
  ~DemoCopy();
  DemoCopy(const DemoCopy&) = delete;
  DemoCopy& operator=(const DemoCopy&) = delete;
  const std::filesystem::path& Path() const { return path_; }
  std::filesystem::path Reports() const { return path_ / "Custom Reports"; }
  std::string Read(const std::string& relative) const;
  void Write(const std::string& relative, const std::string& text) const;
  // Puts the folder's files back as the demo has them.
  void Reset() const;

 private:
  std::filesystem::path root_, path_;
};

struct Outcome {
  int code = -1;  // the exit code; -1 when killed or not run
  std::string out, err;
};

struct Options {
  std::vector<std::string> env;  // NAME=VALUE
  bool as_nobody = false;        // through runuser, for permissions root ignores
};

// `viewedit --views-folder FOLDER script FILE` with the script in a file.
Outcome RunScript(const std::filesystem::path& folder, const std::string& script,
                  const Options& options = {});
// The same started in the background; its output is dropped.
pid_t StartScript(const std::filesystem::path& folder, const std::string& script,
                  const Options& options = {});

// `viewedit script -` fed line by line.
class LiveScript {
 public:
  LiveScript(const std::filesystem::path& folder, const Options& options = {});
  ~LiveScript();
  // Sends lines and waits until the process has printed what they print
  // (send a `state` line last to have something to wait for).
  std::string Send(const std::string& lines);
  // Sends the last lines, closes the input and waits for the exit.
  Outcome Finish(const std::string& lines);

 private:
  std::string ReadAvailable(int timeout_ms);
  pid_t pid_ = -1;
  int in_ = -1, out_ = -1;
  std::string err_path_;
};

// The visible files of the folder and its "Custom Reports", relative path
// to bytes; hidden files (locks, temporary files, intents) and backups are
// left out.
std::map<std::string, std::string> Snapshot(const std::filesystem::path& folder);
// The hidden temporary and intent files in the folder and its reports.
std::vector<std::string> Leftovers(const std::filesystem::path& folder);
// The text of element `element` of the first profile called `name` in a
// views document ("<none>" when there is no such profile).
std::string ProfileValue(const std::string& document, const std::string& name,
                         const char* element);

}  // namespace cvve::processes
