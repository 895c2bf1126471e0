// Formats a number through the platform library of a ZetFormulaLib subproject.
#include <cstdio>

#include "zet/ZetTypes.h"

int main() {
  const double v = 999999.5;
  std::puts(CStdStr::FormatDoubles("%#g", &v, 1).c_str());
  return 0;
}
