// The assertion line.
#include "Libraries/MacToolboxLib/TBUtilities/Assertions.h"

#include <cstdio>

void ReportFailedAssertion(const char* unit, unsigned line, const char* condition) {
    std::fprintf(stderr, "%s:%u: failed assertion `%s'\n", unit, line, condition);
}
