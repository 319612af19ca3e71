#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

/// The engine, or the replay of a corpus, calls this with each input.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size);

/// Aborts unless the promise holds; then the engine keeps the input as a finding.
inline void promise(bool holds, const char* text) {
    if (!holds) {
        static_cast<void>(std::fprintf(stderr, "broken promise: %s\n", text));
        std::abort();
    }
}
