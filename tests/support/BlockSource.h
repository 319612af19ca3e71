#pragma once

#include <algorithm>
#include <cstddef>
#include <string_view>

#include "reader/inside/ViewWindow.h"

namespace velextracta {

/// The text, at most so many bytes at a time. It must outlive the source.
inline ViewWindow::Source inSteps(std::string_view text, std::size_t mostAtOnce) {
    return [=](char* destination, std::size_t size) mutable {
        const std::size_t count = text.copy(destination, std::min(size, mostAtOnce));
        text.remove_prefix(count);
        return count;
    };
}

}  // namespace velextracta
