#include "app/Usage.h"

#include <algorithm>

#include <boost/version.hpp>

#include "app/CommandLine.h"
#include "archive/Libraries.h"

namespace velextracta {

using tkcore::AString;

namespace {

constexpr std::string_view kUsage =
    R"(Usage: VelExtracta [OPTION]... DESIGN FOLDER
       VelExtracta -z [OPTION]... DESIGN ARCHIVE
Extracts the views of the design, moves them into the folder or packs them into the archive.

Options come first; "/z" is the same as "-z", "-Z" too.
  -z               pack into one archive      VelExtracta -z board.mcm board.vlx
  -cell            four views, one process    VelExtracta -cell board.mcm views
  -n NET,...       geometry and connectivity of these nets
                                              VelExtracta -n VDD,GND board.mcm views
  -add FILE,...    deliver these files, too   VelExtracta -z -add notes.txt board.mcm board.vlx
  --help, --version   as the only argument

Variables of the environment:
  VELTAR_EXTRACTA_PATHOVERRIDE=/opt/layout/extracta   the extractor, in place of extracta.exe
  VELTAR_EXTRACTA_LIMIT=4                             extractions at once, from 1 to 1000
  VELTAR_EXTRACTA_DEBUG=1                             keep the working directory
  TKCORE_LOG=0:run.log                                log every reason; 1 and 2 log more

Exit code 0: delivered, 1: failed.
)";

constexpr std::string_view kFirstLines = kUsage.substr(0, kUsage.find("\n\n") + 1);

}  // namespace

std::string_view usage() {
    return kUsage;
}

std::string_view shortUsage() {
    return kFirstLines;
}

std::string versionText() {
    std::string boost = BOOST_LIB_VERSION;
    std::ranges::replace(boost, '_', '.');
    return "VelExtracta " VELEXTRACTA_VERSION ", " VELEXTRACTA_BUILD " build\nBoost " + boost +
           ", " + archiveLibraries() + "\n";
}

AString misplacedOption(const AString& design, const AString& output) {
    for (const AString& argument : {design, output}) {
        if (isAnyOption(argument)) {
            return "`" + argument + "` stands behind the design: options come first";
        }
    }
    return {};
}

}  // namespace velextracta
