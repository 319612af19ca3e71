#pragma once

#include "tkcore/text/AString.h"
#include "views/ViewType.h"

namespace velextracta {

/// A created view and the full path of its file.
struct ActiveView final {
    ViewType viewType;
    tkcore::AString path;
};

}  // namespace velextracta
