#include "process_support.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <pugixml.hpp>
#include <stdexcept>

#include "filesafety/atomic_file.h"

namespace cvve::processes {

namespace fs = std::filesystem;

namespace {

std::string Slurp(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
}

// Runs in the child: the environment, then viewedit (through runuser).
[[noreturn]] void Exec(const fs::path& folder, const std::string& script_arg,
                       const Options& options) {
  for (const std::string& setting : options.env) ::putenv(const_cast<char*>(setting.c_str()));
  std::vector<std::string> args;
  if (options.as_nobody) args = {"runuser", "-u", "nobody", "--"};
  args.insert(args.end(), {CVVE_VIEWEDIT, "--views-folder", folder.string(), "script", script_arg});
  std::vector<char*> argv;
  for (std::string& arg : args) argv.push_back(arg.data());
  argv.push_back(nullptr);
  ::execvp(argv[0], argv.data());
  ::_exit(127);
}

// Scripts and captured output live apart from the folders under test, which
// may be full or read-only.
struct ScratchFolder {
  ScratchFolder() : path(fs::temp_directory_path() / ("cvve-proc-run-" + std::to_string(::getpid()))) {
    fs::create_directories(path);
    fs::permissions(path, fs::perms::owner_all | fs::perms::group_read | fs::perms::group_exec |
                              fs::perms::others_read | fs::perms::others_exec);
  }
  ~ScratchFolder() {
    std::error_code ec;
    fs::remove_all(path, ec);
  }
  fs::path path;
};

fs::path Scratch() {
  static const ScratchFolder scratch;
  return scratch.path;
}

std::string WriteScript(const fs::path&, const std::string& script) {
  const std::string path = (Scratch() / "script.txt").string();
  std::ofstream(path, std::ios::binary) << script;
  fs::permissions(path, fs::perms::owner_all | fs::perms::group_read | fs::perms::others_read);
  return path;
}

}  // namespace

DemoCopy::DemoCopy() {
  std::string pattern = (fs::temp_directory_path() / "cvve-proc-XXXXXX").string();
  if (!::mkdtemp(pattern.data())) throw std::runtime_error("mkdtemp failed");
  root_ = pattern;
  // Open to every user, for the tests that run as nobody.
  fs::permissions(root_, fs::perms::all);
  path_ = root_ / "views";
  Reset();
}

DemoCopy::~DemoCopy() {
  std::error_code ec;
  fs::permissions(path_, fs::perms::owner_all, fs::perm_options::add, ec);
  fs::remove_all(root_, ec);
}

void DemoCopy::Reset() const {
  std::error_code ec;
  fs::remove_all(path_, ec);
  fs::create_directories(path_);
  fs::copy(CVVE_DEMO_DIR, path_, fs::copy_options::recursive);
}

std::string DemoCopy::Read(const std::string& relative) const { return Slurp(path_ / relative); }

void DemoCopy::Write(const std::string& relative, const std::string& text) const {
  std::ofstream(path_ / relative, std::ios::binary) << text;
}

Outcome RunScript(const fs::path& folder, const std::string& script, const Options& options) {
  const std::string script_path = WriteScript(folder, script);
  const std::string out_path = (Scratch() / "out.txt").string();
  const std::string err_path = (Scratch() / "err.txt").string();
  const pid_t pid = ::fork();
  if (pid == 0) {
    const int out = ::open(out_path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    const int err = ::open(err_path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    ::dup2(out, 1);
    ::dup2(err, 2);
    Exec(folder, script_path, options);
  }
  Outcome outcome;
  int status = 0;
  ::waitpid(pid, &status, 0);
  if (WIFEXITED(status)) outcome.code = WEXITSTATUS(status);
  outcome.out = Slurp(out_path);
  outcome.err = Slurp(err_path);
  return outcome;
}

pid_t StartScript(const fs::path& folder, const std::string& script, const Options& options) {
  const std::string script_path = WriteScript(folder, script);
  const pid_t pid = ::fork();
  if (pid == 0) {
    const int null = ::open("/dev/null", O_WRONLY);
    ::dup2(null, 1);
    ::dup2(null, 2);
    Exec(folder, script_path, options);
  }
  return pid;
}

LiveScript::LiveScript(const fs::path& folder, const Options& options) {
  int to_child[2], from_child[2];
  if (::pipe(to_child) != 0 || ::pipe(from_child) != 0) throw std::runtime_error("pipe failed");
  err_path_ = (Scratch() / "live-err.txt").string();
  pid_ = ::fork();
  if (pid_ == 0) {
    ::dup2(to_child[0], 0);
    ::dup2(from_child[1], 1);
    const int err = ::open(err_path_.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    ::dup2(err, 2);
    ::close(to_child[1]);
    ::close(from_child[0]);
    Exec(folder, "-", options);
  }
  ::close(to_child[0]);
  ::close(from_child[1]);
  in_ = to_child[1];
  out_ = from_child[0];
}

LiveScript::~LiveScript() {
  if (in_ >= 0) ::close(in_);
  if (out_ >= 0) ::close(out_);
  if (pid_ > 0) {
    ::kill(pid_, SIGKILL);
    ::waitpid(pid_, nullptr, 0);
  }
}

std::string LiveScript::ReadAvailable(int timeout_ms) {
  std::string text;
  pollfd waiting{out_, POLLIN, 0};
  while (::poll(&waiting, 1, timeout_ms) > 0) {
    char buffer[4096];
    const ssize_t n = ::read(out_, buffer, sizeof buffer);
    if (n <= 0) break;
    text.append(buffer, static_cast<std::size_t>(n));
    timeout_ms = 300;  // the rest of the same answer follows quickly
  }
  return text;
}

std::string LiveScript::Send(const std::string& lines) {
  if (::write(in_, lines.data(), lines.size()) != static_cast<ssize_t>(lines.size())) return {};
  return ReadAvailable(20000);
}

Outcome LiveScript::Finish(const std::string& lines) {
  Outcome outcome;
  if (!lines.empty() &&
      ::write(in_, lines.data(), lines.size()) != static_cast<ssize_t>(lines.size())) {
    return outcome;
  }
  ::close(in_);
  in_ = -1;
  outcome.out = ReadAvailable(20000);
  int status = 0;
  ::waitpid(pid_, &status, 0);
  pid_ = -1;
  if (WIFEXITED(status)) outcome.code = WEXITSTATUS(status);
  outcome.err = Slurp(err_path_);
  return outcome;
}

std::map<std::string, std::string> Snapshot(const fs::path& folder) {
  std::map<std::string, std::string> files;
  for (const fs::path& dir : {folder, folder / "Custom Reports"}) {
    std::error_code ec;
    for (fs::directory_iterator it(dir, ec), end; !ec && it != end; it.increment(ec)) {
      const std::string name = it->path().filename().string();
      if (!it->is_regular_file() || name[0] == '.' || name.ends_with(".bak")) continue;
      files[fs::relative(it->path(), folder).string()] = Slurp(it->path());
    }
  }
  return files;
}

std::vector<std::string> Leftovers(const fs::path& folder) {
  std::vector<std::string> names;
  for (const fs::path& dir : {folder, folder / "Custom Reports"}) {
    std::error_code ec;
    for (fs::directory_iterator it(dir, ec), end; !ec && it != end; it.increment(ec)) {
      const std::string name = it->path().filename().string();
      if (filesafety::IsTempFor(name, "") || name == ".reports.intent") names.push_back(name);
    }
  }
  return names;
}

std::string ProfileValue(const std::string& document, const std::string& name,
                         const char* element) {
  pugi::xml_document doc;
  doc.load_string(document.c_str());
  for (pugi::xml_node p : doc.document_element().child("Profiles").children("Profile")) {
    if (name == p.child("Name").text().as_string()) return p.child(element).text().as_string();
  }
  return "<none>";
}

}  // namespace cvve::processes
