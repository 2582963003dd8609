// PENDING: replaced by the subsystem implementation.
#pragma GCC diagnostic ignored "-Wunused-parameter"
#include "reports/report_file_writer.h"

#include "base/error.h"

namespace cvve {

void SaveReportFile(frmAcctViewEdit& ed, const std::string& path) {
  throw Error("SaveReportFile is not built yet");
}

}  // namespace cvve
