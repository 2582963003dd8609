// PENDING: replaced by the command's implementation.
#include "commands.h"

namespace viewedit {

void RegisterSqlCommand(CLI::App&, HostOptions&) {}

}  // namespace viewedit
