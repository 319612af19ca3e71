#include "views/inside/ViewCatalogue.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <vector>

namespace velextracta {

namespace {

using Text = std::string_view;

constexpr std::array kGeometryConditions{
    kNamedNetsOnly,
    Text("PAD_SHAPE_NAME != 'FIG_RECTANGLE'"),
    Text("PAD_SHAPE_NAME != 'CIRCLE'"),
    Text("PAD_SHAPE_NAME != 'OBLONG_Y'"),
    Text("PAD_SHAPE_NAME != 'OBLONG_X'"),
    Text("PAD_SHAPE_NAME != 'SQUARE'"),
};

constexpr std::array kConnectivityConditions{
    Text("RAT_CONNECTED != 'YES'"),
    Text("RAT_CONNECTED != 'NO'"),
    kNamedNetsOnly,
};

constexpr std::array kOutlineConditions{Text("SUBCLASS = 'OUTLINE'")};

constexpr std::array kCellConnectivityAlternatives{
    Text("CLASS = 'PIN'"),
    Text("CLASS = 'VIA CLASS'"),
    Text("WIREBOND_MATERIAL != ''"),
};

constexpr std::array kOutlineAlternatives{
    Text("CLASS = 'BOARD GEOMETRY'"),
    Text("CLASS = 'SUBSTRATE GEOMETRY'"),
};

constexpr std::array kCompositePadAlternatives{
    Text("DRILL_ARRAY_ROWS != ''"),
    Text("BACKDRILL_TOP_LAYER != ''"),
    Text("BACKDRILL_BOTTOM_LAYER != ''"),
};

constexpr std::array kGeometryClassExclusions{
    Text("CLASS != 'ANALYSIS'"),
    Text("CLASS != 'BOARD GEOMETRY'"),
    Text("CLASS != 'COMPONENT VALUE'"),
    Text("CLASS != 'DEVICE TYPE'"),
    Text("CLASS != 'DRAWING FORMAT'"),
    Text("CLASS != 'DRC ERROR CLASS'"),
    Text("CLASS != 'ETCH'"),
    Text("CLASS != 'MANUFACTURING'"),
    Text("CLASS != 'PACKAGE GEOMETRY'"),
    Text("CLASS != 'PACKAGE KEEPIN'"),
    Text("CLASS != 'PACKAGE KEEPOUT'"),
    Text("CLASS != 'REF DES'"),
    Text("CLASS != 'ROUTE KEEPIN'"),
    Text("CLASS != 'ROUTE KEEPOUT'"),
    Text("CLASS != 'TOLERANCE'"),
    Text("CLASS != 'USER PART NUMBER'"),
    Text("CLASS != 'VIA KEEPOUT'"),
    Text("RAT_CONNECTED != 'YES'"),
    Text("RAT_CONNECTED != 'NO'"),
};

constexpr std::array<Text, 12> kLayerFields{
    "LAYER_SORT",
    "LAYER_SUBCLASS",
    "LAYER_TYPE",
    "LAYER_ARTWORK",
    "LAYER_CONDUCTOR",
    "LAYER_DIELECTRIC_CONSTANT",
    "LAYER_LOSS_TANGENT",
    "LAYER_ELECTRICAL_CONDUCTIVITY",
    "LAYER_MATERIAL",
    "LAYER_SHIELD_LAYER",
    "LAYER_THERMAL_CONDUCTIVITY",
    "LAYER_THICKNESS",
};

constexpr std::array<Text, 16> kCellGeometryFields{
    "NET_NAME_SORT",  "RECORD_TAG",          "CLASS",          "SUBCLASS",
    "NET_NAME",       "GRAPHIC_DATA_NUMBER", "GRAPHIC_DATA_1", "GRAPHIC_DATA_2",
    "GRAPHIC_DATA_3", "GRAPHIC_DATA_4",      "GRAPHIC_DATA_5", "GRAPHIC_DATA_6",
    "GRAPHIC_DATA_7", "GRAPHIC_DATA_8",      "GRAPHIC_DATA_9", "GRAPHIC_DATA_10",
};

/// The fields of full geometry that are not in the reduced list.
constexpr std::array<Text, 19> kFullGeometryFields{
    "GRAPHIC_DATA_NAME",
    "REFDES",
    "PIN_NUMBER",
    "PIN_TYPE",
    "PIN_X",
    "PIN_Y",
    "PIN_ROTATION",
    "PIN_ROTATION_ABSOLUTE",
    "VIA_X",
    "VIA_Y",
    "SYM_MIRROR",
    "SYM_ROTATE",
    "VIA_MIRROR",
    "VIA_ROTATION",
    "BOND_PAD",
    "PAD_STACK_NAME",
    "PAD_SHAPE_NAME",
    "START_LAYER_NAME",
    "END_LAYER_NAME",
};

constexpr std::array<Text, 31> kCommonConnectivityFields{
    "NET_NAME_SORT",
    "NODE_SORT",
    "NODE_1_NUMBER",
    "NODE_2_NUMBER",
    "RECORD_TAG",
    "CLASS",
    "SUBCLASS",
    "NET_NAME",
    "GRAPHIC_DATA_NUMBER",
    "GRAPHIC_DATA_1",
    "GRAPHIC_DATA_2",
    "GRAPHIC_DATA_3",
    "GRAPHIC_DATA_4",
    "GRAPHIC_DATA_5",
    "GRAPHIC_DATA_6",
    "GRAPHIC_DATA_7",
    "GRAPHIC_DATA_8",
    "GRAPHIC_DATA_9",
    "GRAPHIC_DATA_10",
    "REFDES",
    "COMP_CLASS",
    "PIN_NUMBER",
    "PIN_TYPE",
    "PIN_X",
    "PIN_Y",
    "PIN_ROTATION_ABSOLUTE",
    "PAD_STACK_NAME",
    "START_LAYER_NAME",
    "END_LAYER_NAME",
    "WIREBOND_PROFILE_NAME",
    "WIREBOND_MATERIAL",
};

constexpr std::array<Text, 8> kConnectivityFields{
    "GRAPHIC_DATA_NAME", "VIA_X",      "VIA_Y",        "SYM_MIRROR",
    "SYM_ROTATE",        "VIA_MIRROR", "VIA_ROTATION", "BOND_PAD",
};

constexpr std::array<Text, 7> kCellConnectivityFields{
    "SYM_NAME",           "DRILL_HOLE_X",        "DRILL_HOLE_Y",          "DRILL_FIGURE_SHAPE",
    "DRILL_FIGURE_WIDTH", "DRILL_FIGURE_HEIGHT", "DRILL_FIGURE_ROTATION",
};

constexpr std::array<Text, 3> kNetFields{
    "NET_NAME",
    "NET_BUS_NAME",
    "NET_DIFFERENTIAL_PAIR",
};

constexpr std::array<Text, 16> kComponentFields{
    "REFDES_SORT", "REFDES",     "COMP_CLASS",   "COMP_DEVICE_TYPE",
    "COMP_VALUE",  "COMP_TOL",   "COMP_PACKAGE", "COMP_PART_NUMBER",
    "SYM_X",       "SYM_Y",      "SYM_ROTATE",   "SYM_MIRROR",
    "SYM_BOX_X1",  "SYM_BOX_Y1", "SYM_BOX_X2",   "SYM_BOX_Y2",
};

constexpr std::array<Text, 15> kOutlineFields{
    "CLASS",
    "SUBCLASS",
    "RECORD_TAG",
    "GRAPHIC_DATA_NAME",
    "GRAPHIC_DATA_NUMBER",
    "GRAPHIC_DATA_1",
    "GRAPHIC_DATA_2",
    "GRAPHIC_DATA_3",
    "GRAPHIC_DATA_4",
    "GRAPHIC_DATA_5",
    "GRAPHIC_DATA_6",
    "GRAPHIC_DATA_7",
    "GRAPHIC_DATA_8",
    "GRAPHIC_DATA_9",
    "GRAPHIC_DATA_10",
};

constexpr std::array<Text, 16> kCompositePadFields{
    "PAD_STACK_NAME",
    "GRAPHIC_DATA_NAME",
    "START_LAYER_NAME",
    "END_LAYER_NAME",
    "NET_NAME",
    "DRILL_HOLE_NAME",
    "DRILL_ARRAY_LOCATIONS",
    "BACKDRILL_TOP_LAYER",
    "BACKDRILL_BOTTOM_LAYER",
    "BACKDRILL_SIZE",
    "PIN_X",
    "PIN_Y",
    "PIN_ROTATION_ABSOLUTE",
    "VIA_X",
    "VIA_Y",
    "VIA_ROTATION",
};

constexpr std::array<Text, 5> kLogicalPinFields{
    "REFDES_SORT", "REFDES", "FUNC_DES", "PIN_NUMBER", "PIN_PINUSE",
};

// In the order of ViewType. The class alternatives of conn are not here, because their values have
// no quotes and are sometimes left out.
constexpr std::array<ViewCatalogueEntry, kViewTypeCount> kCatalogue{{
    {ViewType::layer, "layer", "LAYER", {}, {}, kLayerFields, {}},
    {ViewType::paddef, "paddef", "PAD_DEF", {}, {}, {}, {}},
    {ViewType::fullgeo,
     "fullgeo",
     "FULL_GEOMETRY",
     kGeometryConditions,
     {},
     kCellGeometryFields,
     kFullGeometryFields},
    {ViewType::conn,
     "conn",
     "CONNECTIVITY",
     kConnectivityConditions,
     {},
     kCommonConnectivityFields,
     kConnectivityFields},
    {ViewType::cfullgeo,
     "cfullgeo",
     "FULL_GEOMETRY",
     kGeometryConditions,
     {},
     kCellGeometryFields,
     {}},
    {ViewType::cconn, "cconn", "CONNECTIVITY", kConnectivityConditions,
     kCellConnectivityAlternatives, kCommonConnectivityFields, kCellConnectivityFields},
    {ViewType::diestack, "diestack", "DIE_STACK_DEF", {}, {}, {}, {}},
    {ViewType::net, "net", "NET", {}, {}, kNetFields, {}},
    {ViewType::component, "component", "COMPONENT", {}, {}, kComponentFields, {}},
    {ViewType::outline,
     "outline",
     "GEOMETRY",
     kOutlineConditions,
     kOutlineAlternatives,
     kOutlineFields,
     {}},
    {ViewType::compositepad,
     "compositepad",
     "COMPOSITE_PAD",
     {},
     kCompositePadAlternatives,
     kCompositePadFields,
     {}},
    {ViewType::logicalpin, "logicalpin", "LOGICAL_PIN", {}, {}, kLogicalPinFields, {}},
}};

constexpr bool isInOrder() {
    return std::ranges::is_sorted(kCatalogue, {}, &ViewCatalogueEntry::viewType);
}
static_assert(isInOrder(), "names are looked up by the value of the type");

}  // namespace

const ViewCatalogueEntry* findViewCatalogueEntry(ViewType viewType) {
    const auto* entry = std::ranges::find(kCatalogue, viewType, &ViewCatalogueEntry::viewType);
    return entry == kCatalogue.end() ? nullptr : entry;
}

const tkcore::AString& ViewTypeName(ViewType viewType) {
    static const std::vector<tkcore::AString> kNames = [] {
        std::vector<tkcore::AString> names;
        names.reserve(kCatalogue.size());
        for (const ViewCatalogueEntry& entry : kCatalogue) {
            names.emplace_back(entry.name);
        }
        return names;
    }();
    return kNames.at(static_cast<std::size_t>(viewType));
}

std::span<const std::string_view> geometryClassExclusions() {
    return kGeometryClassExclusions;
}

}  // namespace velextracta
