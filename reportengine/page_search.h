#pragma once
// Finding text in a laid-out report, for the viewer's Find.
#include <QString>

#include "reportengine/paginator.h"

namespace cvve::reportengine {

// The first page, from `from` on and round from the first page again, with a
// text that contains `needle` (letter case ignored); -1 when no page has it
// or the needle is empty.
int FindPageWithText(const ReportLayout& layout, const QString& needle, int from);

}  // namespace cvve::reportengine
