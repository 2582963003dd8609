#pragma once
// Alt+letter keys for the window's buttons, check boxes, options and labels.
// The captions stay the models' own (the script and the state read them
// bare); the window adds the '&' when it shows them. Letters are chosen so
// that no two controls shown together share one, except where noted in the
// window's documentation.
#include <QString>

namespace cvve::gui {

// The caption with its mnemonic marked ('&' before the control's letter, the
// first occurrence in either case); a literal '&' is doubled. A control
// without a letter, or a caption without it, is only escaped.
QString WithMnemonic(const QString& object_name, const QString& caption);

// The letter of a control, or a null QChar when it has none.
QChar MnemonicOf(const QString& object_name);

}  // namespace cvve::gui
