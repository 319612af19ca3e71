#pragma once

#include <cstdint>

#include "tkcore/text/AString.h"
#include "views/EnumSet.h"

namespace velextracta {

/// All views. Their values are their order in every file and list.
enum class ViewType : std::int32_t {
    layer,
    paddef,
    fullgeo,
    conn,
    cfullgeo,  // full geometry with the reduced field list of the cell selection
    cconn,     // connectivity of the cell selection
    diestack,
    net,
    component,
    outline,
    compositepad,
    logicalpin
};

inline constexpr unsigned kViewTypeCount = static_cast<unsigned>(ViewType::logicalpin) + 1;

using ViewSet = EnumSet<ViewType, kViewTypeCount>;

/// The default selection: all views but the two of the cell selection.
inline constexpr ViewSet kStandardViews{0xFCF};

/// layer, cfullgeo, cconn, diestack.
inline constexpr ViewSet kCellViews{0x71};

/// layer, net.
inline constexpr ViewSet kLayerNetViews{0x81};

/// The views that a list of nets can restrict: fullgeo, conn, cfullgeo, cconn.
inline constexpr ViewSet kNetFilterableViews{0x3C};

/// The name of a view, lower case: the stem of its file's name. Throws std::out_of_range for a type
/// outside the catalogue.
const tkcore::AString& ViewTypeName(ViewType viewType);

}  // namespace velextracta
