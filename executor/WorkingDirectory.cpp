#include "executor/WorkingDirectory.h"

#include <cstdint>

#include <boost/date_time/posix_time/posix_time_types.hpp>

namespace velextracta {

using tkcore::AString;
using tkcore::LongFileName;

namespace {

/// Seconds since 1970 on the local wall clock, low 32 bits.
std::int32_t runNumber() {
    namespace pt = boost::posix_time;
    const pt::ptime start(boost::gregorian::date(1970, 1, 1));
    const pt::time_duration elapsed = pt::microsec_clock::local_time() - start;
    return static_cast<std::int32_t>(elapsed.total_microseconds() / 1'000'000);
}

}  // namespace

bool WorkingDirectory::createIn(const LongFileName& base) {
    const std::int32_t number = runNumber();
    remove();
    directory = LongFileName(AString::Format("%sextract%d/", base.FilePath(), number));
    isOurs = tkcore::LFN_CreateDirectory(directory);
    return isOurs;
}

bool WorkingDirectory::remove() {
    return !isOurs || tkcore::LFN_Delete(directory);
}

}  // namespace velextracta
