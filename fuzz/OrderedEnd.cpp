#include "OrderedEnd.h"

#include "Logs/DamagedLog.h"

#include <cstdlib>
#include <cstring>

namespace DamagedLog {

void FailAssertion(const char* source, int line, const char* function, const char* expression) {
    // What the real one would print must be there to be printed.
    if (std::strlen(source) == 0 || line <= 0 || std::strlen(function) == 0 ||
        std::strlen(expression) == 0) {
        std::abort();
    }
    throw SOrderedEnd();
}

void Exit() {
    throw SOrderedEnd();
}

} // namespace DamagedLog
