// Placeholder: the user-format engine (CStdStr::FormatDoubles) lands with the
// formatting instructions.
#include "zet/ZetTypes.h"

CStdStr CStdStr::FormatDoubles(const char* fmt, const double*, int) { return CStdStr(fmt ? fmt : ""); }
