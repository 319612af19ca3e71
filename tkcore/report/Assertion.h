#pragma once

namespace tkcore {

/// Reports a failed assertion: source file name, line, condition text. May set the flag of the
/// site; then the site's later failures go to LogAssertFailure_G.
using ProcessAssertFailure = void (*)(const char* source, int line, const char* condition,
                                      bool& ignoreSite);
using LogAssertFailure = void (*)(const char* source, int line, const char* condition);

/// The hooks. By default both write to the core library's log.
extern ProcessAssertFailure ProcessAssertFailure_G;
extern LogAssertFailure LogAssertFailure_G;

/// Sends every failure to LogAssertFailure_G.
extern bool IgnoreAllAsserts_G;

/// What VEL_ASSERT calls when its condition does not hold.
void reportAssertFailure(const char* source, int line, const char* condition, bool& ignoreSite);

}  // namespace tkcore

/// Reports a condition that does not hold, and goes on: the code after an assertion handles the
/// failure. The caller gives source, line and condition text.
#define VEL_ASSERT_ALL(source, line, text, condition)                            \
    do {                                                                         \
        static bool ignoreSite = false;                                          \
        if (!(condition)) {                                                      \
            ::tkcore::reportAssertFailure((source), (line), (text), ignoreSite); \
        }                                                                        \
    } while (false)

#define VEL_ASSERT_AT(source, line, condition) VEL_ASSERT_ALL(source, line, #condition, condition)
#define VEL_ASSERT_TEXT(source, text, condition) VEL_ASSERT_ALL(source, __LINE__, text, condition)
#define VEL_ASSERT(source, condition) VEL_ASSERT_ALL(source, __LINE__, #condition, condition)
