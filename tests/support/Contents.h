#pragma once

#include <algorithm>
#include <random>
#include <string>

namespace velextracta {

inline std::string viewText(std::size_t size) {
    std::mt19937 random(size);
    std::string text;
    while (text.size() < size) {
        text += "S!CONDUCTOR!TOP!NET" + std::to_string(random() % 5000) + "!" +
                std::to_string(random()) + "!\n";
    }
    text.resize(size);
    return text;
}

inline std::string randomBytes(std::size_t size) {
    std::mt19937 random(size);
    std::string bytes(size, '\0');
    std::generate(bytes.begin(), bytes.end(), [&] { return static_cast<char>(random()); });
    return bytes;
}

}  // namespace velextracta
