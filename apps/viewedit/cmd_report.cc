// PENDING: replaced by the command's implementation.
#include "commands.h"

namespace viewedit {

void RegisterReportCommands(CLI::App&, HostOptions&) {}

}  // namespace viewedit
