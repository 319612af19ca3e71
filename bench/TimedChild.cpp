// bench-child ARGUMENT...: sleeps as many milliseconds as the last argument, the view file, says
// behind the last "_" of its name: 20 for "net7_20.txt". Writes nothing.

#include <charconv>
#include <chrono>
#include <iostream>
#include <string_view>
#include <thread>

int main(int argc, char* argv[]) {
    const std::string_view viewFile = argv[argc - 1];
    const std::string_view digits = viewFile.substr(viewFile.rfind('_') + 1);
    unsigned milliseconds = 0;
    const auto parsed = std::from_chars(digits.data(), digits.data() + digits.size(), milliseconds);
    if (parsed.ec != std::errc()) {
        std::cerr << "bench-child: no time in the name " << viewFile << '\n';
        return 1;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
    return 0;
}
