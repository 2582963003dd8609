#include "gui/mnemonics.h"

#include <QHash>

namespace cvve::gui {

namespace {

// By object name; the labels the window makes itself are named "lbl...".
const QHash<QString, QChar>& Letters() {
  static const QHash<QString, QChar> letters{
      // 1. profiles
      {"lblSearch", 'r'},
      {"cmdNewProfile", 'N'},
      {"cmdCopyProfile", 'C'},
      {"cmdEditProfile", 'm'},
      {"cmdDeleteProfile", 't'},
      {"cmdSaveProfile", 'S'},
      {"lblCurrProf", 'p'},
      // 2. data set
      {"lblDataSet", 'D'},
      {"lblAcctViewType", 'F'},
      // 4. columns
      {"lblAvailColumns", 'v'},
      {"lblUsedColumns", 'U'},
      {"cmdAddForm", '>'},
      {"cmdRemoveForm", '<'},
      {"cmdRemoveAll", '<'},  // Alt+< alternates between the two removing buttons
      {"cmdMove(0)", 'p'},  // shared with the label of the read-only current profile
      {"cmdMove(1)", 'w'},
      // 5. filters
      {"optFilter(0)", '5'},
      {"optFilter(1)", 'i'},
      {"cmdAdvancedFilter", 'E'},
      // 6. sorting and totals
      {"lblSort(0)", 'y'},
      {"lblSort(1)", 'h'},
      {"chkSortGroup", 'G'},
      {"chkTotals", 'o'},
      {"chkAverages", 'A'},
      {"chkShowLineCount", 'L'},
      // 7. page and variables
      {"lblOrientation", 'O'},  // shared with Totals: every letter of it is taken
      {"lblPageSize", 'z'},
      {"chkMultiLine", 'R'},
      {"chkStartEnd", 'b'},
      {"cmdEditVariables", 'I'},
      // the closing row (Export and Preview Report are never shown together)
      {"cmdExport", 'x'},
      {"cmdPreviewReport", 'x'},
      {"cmdOK", 'K'},
      {"cmdCancel", 'l'},
  };
  return letters;
}

}  // namespace

QChar MnemonicOf(const QString& object_name) { return Letters().value(object_name); }

QString WithMnemonic(const QString& object_name, const QString& caption) {
  QString text = caption;
  text.replace('&', "&&");
  const QChar letter = MnemonicOf(object_name);
  if (letter.isNull()) return text;
  for (int i = 0; i < text.size(); ++i) {
    if (text[i] == '&') {
      ++i;  // an escaped '&' is no place for the mark
      continue;
    }
    if (text[i].toCaseFolded() == letter.toCaseFolded()) {
      text.insert(i, '&');
      return text;
    }
  }
  return text;
}

}  // namespace cvve::gui
