#include "Logs/DamagedLog.h"

#include "platform/DebugPrint.h"
#include "platform/ServiceLink.h"

#include <cerrno>
#include <cstdlib>

namespace DamagedLog {

void FailAssertion(const char* source, int line, const char* function, const char* expression) {
    ServiceLink::Finish();
    deprintf("%s: %s:%d: %s: Assertion `%s' failed.\n", program_invocation_short_name, source, line,
             function, expression);
    std::abort();
}

void Exit() {
    ServiceLink::Finish();
    std::exit(EXIT_FAILURE);
}

} // namespace DamagedLog
