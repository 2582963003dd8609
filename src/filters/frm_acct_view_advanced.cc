#include "filters/frm_acct_view_advanced.h"

#include "base/text.h"

namespace cvve {

frmAcctViewAdvanced::frmAcctViewAdvanced() : ui::Form("frmAcctViewAdvanced") {
  cmdClose.on_click = [this] { cmdClose_Click(); };
}

std::string frmAcctViewAdvanced::SQL() const { return ReplaceAll(txtSQL.Text(), "CQ:", ""); }

void frmAcctViewAdvanced::SetSQL(const std::string& sql) {
  txtSQL.SetText(ReplaceAll(sql, "CQ:", ""));
}

}  // namespace cvve
