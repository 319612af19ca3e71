#include "executor/inside/WorkingDirectory.h"

#include <system_error>

#include <boost/date_time/posix_time/posix_time_types.hpp>

#include "tkcore/report/ExtractaParserException.h"
#include "tkcore/report/Log.h"

namespace velextracta {

using tkcore::AString;
using tkcore::LongFileName;
using tkcore::PrivateDirectory;

std::int32_t runNumber() {
    namespace pt = boost::posix_time;
    const pt::ptime start(boost::gregorian::date(1970, 1, 1));
    const pt::time_duration elapsed = pt::microsec_clock::local_time() - start;
    return static_cast<std::int32_t>(elapsed.total_microseconds() / 1'000'000);
}

bool WorkingDirectory::create(const LongFileName& base, std::int32_t number) {
    directory = LongFileName(AString::Format("%sextract%d/", base.FilePath(), number));
    try {
        ours.emplace(directory);
    } catch (const std::system_error& error) {
        tkcore::writeLog(0, "error: ", error.what());
        return false;
    }
    directory = ours->path();
    return true;
}

bool WorkingDirectory::remove() {
    if (!ours) {
        return true;
    }
    try {
        if (ours->name() == PrivateDirectory::Name::kOther) {
            tkcore::VelDebug(0,
                             "error: %s leads elsewhere by now: what was made as it is removed, "
                             "nothing else is touched",
                             directory.FilePath());
        }
        ours->remove();
    } catch (const std::system_error& error) {
        tkcore::writeLog(0, "error: ", error.what());
        return false;
    }
    ours.reset();
    return true;
}

std::vector<LongFileName> WorkingDirectory::contents() const {
    requireName();
    std::vector<LongFileName> files;
    if (ours && ours->name() == PrivateDirectory::Name::kOurs) {
        for (const AString& name : ours->contents()) {
            files.push_back(directory.in(name));
        }
    } else {
        tkcore::warn("there is nothing to deliver: nothing is at " + directory.FilePath());
    }
    return files;
}

void WorkingDirectory::requireName() const {
    if (ours && ours->name() == PrivateDirectory::Name::kOther) {
        throw tkcore::ExtractaParserException("the working directory " + directory.FilePath() +
                                              " has been replaced by something else");
    }
}

}  // namespace velextracta
