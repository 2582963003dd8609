#include "opening/read_ahead.h"

#include <system_error>
#include <utility>

#include "viewfiles/document_cursor.h"

namespace cvve::opening {

ParsedFile ReadFile(const std::string& path, bool keep_bytes, bool parse) {
  ParsedFile file;
  file.read = filesafety::ReadForParse(path, keep_bytes);
  if (parse && file.read.identity.readable) {
    const std::size_t size = file.read.size;
    file.parsed =
        DocumentCursor::ParseInPlace(file.document, file.read.Release(), size, &file.error);
  }
  return file;
}

ReadAhead::ReadAhead(std::string views, std::string defaults, std::string setup)
    : paths_{std::move(views), std::move(defaults), std::move(setup)} {
  try {
    worker_ = std::thread([this] { Work(); });
  } catch (const std::system_error&) {
    done_ = kFiles;  // no thread to be had: nothing read ahead, the editor reads them
  }
}

void ReadAhead::Work() {
  for (int i = 0; i < kFiles; ++i) {
    std::unique_ptr<ParsedFile> file;
    if (!paths_[i].empty()) {
      try {
        file = std::make_unique<ParsedFile>(ReadFile(paths_[i], i == 0, true));
        if (!file->read.identity.readable) file.reset();
      } catch (...) {
        file.reset();  // not read ahead: the editor reads it itself
      }
    }
    std::lock_guard<std::mutex> lock(mutex_);
    files_[i] = std::move(file);
    done_ = i + 1;
    progress_.notify_all();
  }
}

ReadAhead::~ReadAhead() {
  if (worker_.joinable()) worker_.join();
}

std::unique_ptr<ParsedFile> ReadAhead::Take(const std::string& path) {
  for (int i = 0; i < kFiles; ++i) {
    if (paths_[i].empty() || paths_[i] != path) continue;
    std::unique_lock<std::mutex> lock(mutex_);
    progress_.wait(lock, [&] { return done_ > i; });
    if (dropped_) return nullptr;
    return std::move(files_[i]);
  }
  return nullptr;
}

void ReadAhead::Drop() {
  std::lock_guard<std::mutex> lock(mutex_);
  dropped_ = true;
}

}  // namespace cvve::opening
