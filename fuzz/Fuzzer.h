#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

/// What the engine, or the replay of a corpus, calls with each input.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size);

/// Aborts unless the promise holds: that is what makes the engine keep the input as a finding.
inline void promise(bool holds, const char* text) {
    if (!holds) {
        static_cast<void>(std::fprintf(stderr, "broken promise: %s\n", text));
        std::abort();
    }
}
