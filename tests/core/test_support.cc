#include "test_support.h"

#include <random>
#include <sstream>

namespace cvve::testing {

namespace fs = std::filesystem;

TempDir::TempDir() {
  std::random_device rd;
  path_ = fs::temp_directory_path() / ("cvve-test-" + std::to_string(rd()) + std::to_string(rd()));
  fs::create_directories(path_);
}

TempDir::~TempDir() {
  std::error_code ec;
  fs::remove_all(path_, ec);
}

std::string TempDir::Write(const std::string& relative, const std::string& text) const {
  fs::path file = path_ / relative;
  fs::create_directories(file.parent_path());
  std::ofstream out(file, std::ios::binary);
  out << text;
  return file.string();
}

std::string TempDir::Read(const std::string& relative) const {
  std::ifstream in(path_ / relative, std::ios::binary);
  std::stringstream text;
  text << in.rdbuf();
  return text.str();
}

HeadlessEditor::HeadlessEditor() {
  host.view_files_folder = dir.Path().string();
  host.reports_base_folder = dir.Path().string();
  host.users = {"alice", "bob"};
  host.executable_name = "viewedit";
  ed = std::make_unique<frmAcctViewEdit>(env);
}

void HeadlessEditor::Open(const std::string& views, const std::string& defaults,
                          const std::string& setup) {
  if (!views.empty()) dir.Write("views.xml", views);
  if (!defaults.empty()) dir.Write("defs.xml", defaults);
  if (!setup.empty()) dir.Write("setup.xml", setup);
  ed->SetReportMode(0);
  ed->LoadFiles("views.xml", "defs.xml", "setup.xml");
}

std::vector<std::string> HeadlessEditor::Messages() const {
  std::vector<std::string> texts;
  for (const auto& shown : prompter.Shown()) {
    if (shown.kind == "msgbox") texts.push_back(shown.text);
  }
  return texts;
}

std::string HeadlessEditor::LastMessage() const {
  auto texts = Messages();
  return texts.empty() ? std::string() : texts.back();
}

std::string DemoFolder() { return CVVE_DEMO_DIR; }

}  // namespace cvve::testing
