// PENDING: replaced by the command's implementation.
#include "commands.h"

namespace viewedit {

void RegisterScriptCommand(CLI::App&, HostOptions&) {}

}  // namespace viewedit
