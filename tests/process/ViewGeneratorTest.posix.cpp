#include "process/ViewGeneratorTest.h"

#include <csignal>

namespace velextracta {
namespace {

TEST_F(ViewGenerator, noticesAnEndWhoseSignalIsLost) {
    useExtracta("sleep 50\n");
    start("1");
    for (const int signal : {SIGCHLD, SIGIO}) {
        std::signal(signal, SIG_DFL);
    }
    generators.front()->waitForViewFile();
}

}  // namespace
}  // namespace velextracta
