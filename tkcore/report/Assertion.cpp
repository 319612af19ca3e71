#include "tkcore/report/Assertion.h"

#include "tkcore/report/Log.h"

namespace tkcore {

namespace {

void writeFailure(const char* source, int line, const char* condition) {
    VelDebug(0, "assertion failed: %s, line %d: %s", source, line, condition);
}

void processFailure(const char* source, int line, const char* condition, bool& /*ignoreSite*/) {
    writeFailure(source, line, condition);
}

}  // namespace

ProcessAssertFailure ProcessAssertFailure_G = processFailure;
LogAssertFailure LogAssertFailure_G = writeFailure;
bool IgnoreAllAsserts_G = false;

void reportAssertFailure(const char* source, int line, const char* condition, bool& ignoreSite) {
    if (ignoreSite || IgnoreAllAsserts_G) {
        LogAssertFailure_G(source, line, condition);
    } else {
        ProcessAssertFailure_G(source, line, condition, ignoreSite);
    }
}

}  // namespace tkcore
