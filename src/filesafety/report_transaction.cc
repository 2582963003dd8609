#include "filesafety/report_transaction.h"

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>

#include "base/error.h"
#include "filesafety/atomic_file.h"

namespace cvve::filesafety {

namespace {

namespace fs = std::filesystem;

constexpr const char* kIntentHeader = "cvve-intent 1";
constexpr const char* kIntentEnd = "end";

// Paths in the intent file: one a field, control bytes and "%" as %XX.
std::string Encode(const std::string& text) {
  std::string out;
  for (unsigned char c : text) {
    if (c < 0x20 || c == '%' || c == 0x7f) {
      char hex[4];
      std::snprintf(hex, sizeof hex, "%%%02X", c);
      out += hex;
    } else {
      out += static_cast<char>(c);
    }
  }
  return out;
}

bool Decode(const std::string& text, std::string& out) {
  out.clear();
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '%') {
      out += text[i];
      continue;
    }
    if (i + 2 >= text.size()) return false;
    const std::string hex = text.substr(i + 1, 2);
    char* end = nullptr;
    const long value = std::strtol(hex.c_str(), &end, 16);
    if (end != hex.c_str() + 2) return false;
    out += static_cast<char>(value);
    i += 2;
  }
  return true;
}

struct Intent {
  std::vector<std::pair<std::string, std::string>> renames;  // temp -> target
  std::vector<std::string> removals;
};

bool ParseIntent(const std::string& text, Intent& intent) {
  std::istringstream in(text);
  std::string line;
  if (!std::getline(in, line) || line != kIntentHeader) return false;
  while (std::getline(in, line)) {
    if (line == kIntentEnd) return true;
    const std::size_t tab = line.find('\t');
    if (tab == std::string::npos) return false;
    const std::string verb = line.substr(0, tab);
    const std::string rest = line.substr(tab + 1);
    if (verb == "rename") {
      const std::size_t second = rest.find('\t');
      std::string from, to;
      if (second == std::string::npos || !Decode(rest.substr(0, second), from) ||
          !Decode(rest.substr(second + 1), to)) {
        return false;
      }
      intent.renames.emplace_back(from, to);
    } else if (verb == "remove") {
      std::string path;
      if (!Decode(rest, path)) return false;
      intent.removals.push_back(path);
    } else {
      return false;
    }
  }
  return false;  // no end line: not a whole intent
}

// Carries an intent out; every step may already have been done.
void Apply(const Intent& intent) {
  std::error_code ec;
  for (const auto& [temp, target] : intent.renames) {
    if (!fs::exists(fs::symlink_status(temp, ec))) continue;  // renamed before
    fs::path bak(target);
    bak += ".bak";
    if (fs::exists(target, ec)) {
      fs::remove(bak, ec);
      fs::create_hard_link(target, bak, ec);
    }
    StepPause();
    if (std::rename(temp.c_str(), target.c_str()) != 0) {
      throw Error("Cannot write '" + target + "'");
    }
    StepPause();
  }
  for (const std::string& path : intent.removals) {
    fs::remove(path, ec);
    StepPause();
  }
}

}  // namespace

std::string ReportsLockPath(const std::string& folder) {
  return (fs::path(folder) / ".reports.lock").string();
}

std::string IntentPath(const std::string& folder) {
  return (fs::path(folder) / ".reports.intent").string();
}

void ReportTransaction::Put(const std::string& path, std::string bytes) {
  puts_.push_back({path, std::move(bytes)});
}

void ReportTransaction::Remove(const std::string& path) { removals_.push_back(path); }

void ReportTransaction::Commit() {
  RecoverReports(folder_);
  std::vector<PreparedFile> prepared;
  Intent intent;
  std::string text = std::string(kIntentHeader) + "\n";
  try {
    for (const Write& write : puts_) {
      prepared.push_back(Prepare(write.path, write.bytes));
      intent.renames.emplace_back(prepared.back().temp, prepared.back().real);
      text += "rename\t" + Encode(prepared.back().temp) + "\t" + Encode(prepared.back().real) + "\n";
    }
    for (const std::string& path : removals_) {
      intent.removals.push_back(path);
      text += "remove\t" + Encode(path) + "\n";
    }
    text += std::string(kIntentEnd) + "\n";
    // From the moment this file is in place the transaction is done, as far
    // as a crash is concerned: recovery finishes it.
    ReplaceFile(IntentPath(folder_), text, false);
  } catch (...) {
    for (PreparedFile& file : prepared) Discard(file);
    throw;
  }
  Apply(intent);
  SyncFolder(folder_);
  std::error_code ec;
  fs::remove(IntentPath(folder_), ec);
  SyncFolder(folder_);
}

bool RecoverReports(const std::string& folder) {
  const std::string intent_path = IntentPath(folder);
  std::error_code ec;
  if (fs::exists(intent_path, ec)) {
    std::ifstream in(intent_path, std::ios::binary);
    const std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    Intent intent;
    if (!in || !ParseIntent(text, intent)) return false;
    Apply(intent);
    SyncFolder(folder);
    fs::remove(intent_path, ec);
    SyncFolder(folder);
  }
  RemoveStaleTemps(folder);
  return true;
}

}  // namespace cvve::filesafety
