#pragma once
// Reading and parsing a file set's files, once each: a file read into a
// buffer the parser takes over (the bare parse does no less), and the three
// files of a file set read and parsed on a worker thread while the program
// starts its window (on two cores the toolkit and the fonts initialise
// meanwhile). The editor takes each document as its own load would have left
// it; whether a file is loaded at all, and every message, stays the editor's.
#include <condition_variable>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

#include <pugixml.hpp>

#include "filesafety/file_identity.h"

namespace cvve::opening {

// A file read and (when asked) parsed as DocumentCursor::Load parses it.
struct ParsedFile {
  filesafety::FileRead read;  // identity, and the bytes again when kept; the buffer is parsed
  pugi::xml_document document;
  bool parsed = false;  // what Load would have returned
  std::string error;    // the parser's description when not
};

// Reads `path` (keeping a way back to its bytes with `keep_bytes`) and, with
// `parse`, parses what was read in place; an unreadable file is not parsed.
ParsedFile ReadFile(const std::string& path, bool keep_bytes, bool parse);

// Files of a file set, read and parsed in this order on a thread of their
// own from construction on: the views file (its bytes kept), the defaults
// file and the setup file; an empty path is skipped.
class ReadAhead {
 public:
  ReadAhead(std::string views, std::string defaults, std::string setup);
  ~ReadAhead();  // waits for the thread
  ReadAhead(const ReadAhead&) = delete;
  ReadAhead& operator=(const ReadAhead&) = delete;

  // The file read at `path`, waiting until the thread is done with it; none
  // when no file of the set was read there, when it was taken already or
  // could not be read. Each file is given once.
  std::unique_ptr<ParsedFile> Take(const std::string& path);
  // Gives nothing more: a file not taken by the load it was read for is
  // not for a later one.
  void Drop();

 private:
  void Work();
  static constexpr int kFiles = 3;
  std::string paths_[kFiles];
  std::unique_ptr<ParsedFile> files_[kFiles];
  int done_ = 0;  // files the thread is through with
  bool dropped_ = false;
  std::mutex mutex_;
  std::condition_variable progress_;
  std::thread worker_;
};

}  // namespace cvve::opening
