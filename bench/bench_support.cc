#include "bench_support.h"

#include <cstdlib>
#include <filesystem>
#include <map>
#include <pugixml.hpp>
#include <random>

namespace cvve::bench {

namespace {

namespace fs = std::filesystem;

class Scratch {
 public:
  Scratch() {
    std::random_device rd;
    root_ = fs::temp_directory_path() / ("cvve-bench-" + std::to_string(rd()));
    fs::create_directories(root_);
  }
  ~Scratch() {
    std::error_code ec;
    fs::remove_all(root_, ec);
  }
  fs::path root_;
};

}  // namespace

std::string ScratchFolder(const std::string& name) {
  static Scratch scratch;
  return (scratch.root_ / name).string();
}

const FileSet& GeneratedSet(int profiles) {
  static std::map<int, FileSet> sets;
  auto it = sets.find(profiles);
  if (it == sets.end()) {
    FileSetShape shape;
    shape.profiles = profiles;
    it = sets.emplace(profiles, WriteFileSet(ScratchFolder("open" + std::to_string(profiles)),
                                             shape))
             .first;
  }
  return it->second;
}

HeadlessEditor::HeadlessEditor(const FileSet& set, opening::ReadAhead* read_ahead) {
  env.read_ahead = read_ahead;
  host.view_files_folder = set.folder;
  host.reports_base_folder = set.folder;
  host.users = set.users;
  host.executable_name = "viewedit";
  ed = std::make_unique<frmAcctViewEdit>(env);
}

double BareParseSeconds(const FileSet& set) {
  constexpr unsigned kFlags = pugi::parse_default | pugi::parse_comments | pugi::parse_pi |
                              pugi::parse_declaration | pugi::parse_doctype;
  static pugi::xml_document docs[3];
  const std::string paths[3] = {set.folder + "/" + set.setup, set.folder + "/" + set.views,
                                set.folder + "/" + set.defaults};
  const auto start = Clock::now();
  for (int i = 0; i < 3; ++i) {
    docs[i].reset();
    if (!docs[i].load_file(paths[i].c_str(), kFlags)) std::abort();
  }
  const double seconds = Seconds(Clock::now() - start);
  if (!docs[0].first_child()) std::abort();
  return seconds;
}

}  // namespace cvve::bench
