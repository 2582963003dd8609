// PENDING: replaced by the subsystem implementation.
#pragma GCC diagnostic ignored "-Wunused-parameter"
#include "query/sql_builder.h"

#include "base/error.h"

namespace cvve {

std::string BuildFieldList(frmAcctViewEdit& ed) {
  throw Error("BuildFieldList is not built yet");
}

std::string BuildWhereList(frmAcctViewEdit& ed) {
  throw Error("BuildWhereList is not built yet");
}

std::string BuildViewSQL(frmAcctViewEdit& ed, bool forceTemplate) {
  throw Error("BuildViewSQL is not built yet");
}

std::string BuildReportSQL(frmAcctViewEdit& ed, bool forceTemplate) {
  throw Error("BuildReportSQL is not built yet");
}

std::string QualifyReportField(const std::string& field) {
  throw Error("QualifyReportField is not built yet");
}

}  // namespace cvve
