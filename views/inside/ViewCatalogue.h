#pragma once

#include <span>
#include <string_view>

#include "views/ViewType.h"

namespace velextracta {

/// How to ask extracta for one view.
struct ViewCatalogueEntry final {
    ViewType viewType;
    std::string_view name;  // the stem of its file's name
    std::string_view extractaView;
    std::span<const std::string_view> conditions;
    std::span<const std::string_view> alternatives;  // one must hold, if there are any
    std::span<const std::string_view> fields;
    std::span<const std::string_view> moreFields;  // follow the fields
};

/// The entry of a view, null for a value outside the catalogue.
const ViewCatalogueEntry* findViewCatalogueEntry(ViewType viewType);

/// The condition that keepUnnamedNets removes.
inline constexpr std::string_view kNamedNetsOnly = "NET_NAME != ''";

/// The classes that a full geometry view of the whole design leaves out, as conditions.
std::span<const std::string_view> geometryClassExclusions();

}  // namespace velextracta
