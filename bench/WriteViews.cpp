// bench-control-file FILE: writes one control file of all views of a default run, and prints the
// bare names of the view files in the order of its blocks.

#include <fstream>
#include <iostream>
#include <vector>

#include "views/ExtractaViewControl.h"

int main(int argc, char* argv[]) {
    using namespace velextracta;
    if (argc != 2) {
        std::cerr << "usage: bench-control-file FILE\n";
        return 2;
    }
    std::ofstream file = OpenControlFile(tkcore::LongFileName(argv[1]));
    if (!WriteControlFile(file, kStandardViews, {}) || !file.flush()) {
        std::cerr << "bench-control-file: cannot write " << argv[1] << '\n';
        return 1;
    }
    std::vector<ActiveView> views;
    CollectViewFiles(kStandardViews, {}, views);
    for (const ActiveView& view : views) {
        std::cout << tkcore::VEL_ANSI(view.path) << '\n';
    }
    return 0;
}
