#pragma once
// Everything the editor reaches outside itself: the host's services, the
// way to the user (messages and modal dialogs) and the report engine.
namespace cvve {

class HostServices;
class ReportEngine;
namespace opening {
class ReadAhead;
}
namespace ui {
class Prompter;
class DialogHost;
}  // namespace ui

struct EditorEnvironment {
  HostServices& host;
  ui::Prompter& prompter;
  ui::DialogHost& dialogs;
  ReportEngine* reports = nullptr;  // none: preview shows nothing
  // The file set read ahead while the program started; the first LoadFiles
  // takes from it what it would have read itself, and later ones nothing.
  opening::ReadAhead* read_ahead = nullptr;
};

}  // namespace cvve
