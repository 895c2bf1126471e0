// dlopen and friends on LoadLibrary, for the tests of the Windows builds.
#pragma once
#include "../PosixCompat.h"
