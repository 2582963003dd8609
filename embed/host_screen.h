#pragma once
// The screen a host gets when it brings none of its own (the default
// clsViewEdit, the C face): Qt windows, a QApplication made for each entry
// call when the host has none, and the report engine on the settings'
// database. Loading the library registers it.
#include <memory>

#include "component/screen_registry.h"

namespace cvve::embed {

std::unique_ptr<Screen> MakeHostScreen(const HostSettings& settings);

// Test aid: with CVVE_TEST_AUTOCLOSE_MS=N in the environment the editor
// window says "cvviewedit: editor window shown" on stderr when it is shown
// and closes itself (Cancel) N milliseconds later. Returns N, or -1 unset.
int AutoCloseMilliseconds();

}  // namespace cvve::embed
