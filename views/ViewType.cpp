#include "views/ViewType.h"

#include <array>
#include <cstddef>

namespace velextracta {

namespace {

const std::array<tkcore::AString, kViewTypeCount> kViewTypeNames{
    "layer",    "paddef", "fullgeo",   "conn",    "cfullgeo",     "cconn",
    "diestack", "net",    "component", "outline", "compositepad", "logicalpin"};

}  // namespace

const tkcore::AString& ViewTypeName(ViewType viewType) {
    return kViewTypeNames.at(static_cast<std::size_t>(viewType));
}

}  // namespace velextracta
