#pragma once

#include <array>
#include <cstddef>
#include <string_view>

namespace standin {

// A view keyword and the fields that can be asked for, including those used only in filters.
template <std::size_t kCount>
struct ViewTable {
    std::string_view keyword;
    std::array<std::string_view, kCount> fields;
};

template <std::size_t kCount>
constexpr ViewTable<kCount> viewTable(std::string_view keyword,
                                      const std::array<std::string_view, kCount>& fields) {
    return {keyword, fields};
}

// clang-format off
inline constexpr auto kLayerTable = viewTable("LAYER", std::to_array<std::string_view>({
    "LAYER_SORT", "LAYER_SUBCLASS", "LAYER_TYPE", "LAYER_ARTWORK", "LAYER_CONDUCTOR",
    "LAYER_DIELECTRIC_CONSTANT", "LAYER_LOSS_TANGENT", "LAYER_ELECTRICAL_CONDUCTIVITY",
    "LAYER_MATERIAL", "LAYER_SHIELD_LAYER", "LAYER_THERMAL_CONDUCTIVITY", "LAYER_THICKNESS"}));

inline constexpr auto kPadDefTable = viewTable("PAD_DEF", std::to_array<std::string_view>({
    "PAD_NAME", "PAD_LAYER", "PAD_USE", "PAD_SHAPE_NAME", "PAD_WIDTH", "PAD_HEIGHT",
    "PAD_OFFSET_X", "PAD_OFFSET_Y", "DRILL_HOLE_NAME"}));

inline constexpr auto kFullGeometryTable = viewTable("FULL_GEOMETRY", std::to_array<std::string_view>({
    "NET_NAME_SORT", "RECORD_TAG", "CLASS", "SUBCLASS", "NET_NAME", "GRAPHIC_DATA_NUMBER",
    "GRAPHIC_DATA_1", "GRAPHIC_DATA_2", "GRAPHIC_DATA_3", "GRAPHIC_DATA_4", "GRAPHIC_DATA_5",
    "GRAPHIC_DATA_6", "GRAPHIC_DATA_7", "GRAPHIC_DATA_8", "GRAPHIC_DATA_9", "GRAPHIC_DATA_10",
    "GRAPHIC_DATA_NAME", "REFDES", "PIN_NUMBER", "PIN_TYPE", "PIN_X", "PIN_Y", "PIN_ROTATION",
    "PIN_ROTATION_ABSOLUTE", "VIA_X", "VIA_Y", "SYM_MIRROR", "SYM_ROTATE", "VIA_MIRROR",
    "VIA_ROTATION", "BOND_PAD", "PAD_STACK_NAME", "PAD_SHAPE_NAME", "START_LAYER_NAME",
    "END_LAYER_NAME", "RAT_CONNECTED"}));

inline constexpr auto kConnectivityTable = viewTable("CONNECTIVITY", std::to_array<std::string_view>({
    "NET_NAME_SORT", "NODE_SORT", "NODE_1_NUMBER", "NODE_2_NUMBER", "RECORD_TAG", "CLASS",
    "SUBCLASS", "NET_NAME", "GRAPHIC_DATA_NUMBER", "GRAPHIC_DATA_1", "GRAPHIC_DATA_2",
    "GRAPHIC_DATA_3", "GRAPHIC_DATA_4", "GRAPHIC_DATA_5", "GRAPHIC_DATA_6", "GRAPHIC_DATA_7",
    "GRAPHIC_DATA_8", "GRAPHIC_DATA_9", "GRAPHIC_DATA_10", "REFDES", "COMP_CLASS", "PIN_NUMBER",
    "PIN_TYPE", "PIN_X", "PIN_Y", "PIN_ROTATION_ABSOLUTE", "PAD_STACK_NAME", "START_LAYER_NAME",
    "END_LAYER_NAME", "WIREBOND_PROFILE_NAME", "WIREBOND_MATERIAL", "GRAPHIC_DATA_NAME", "VIA_X",
    "VIA_Y", "SYM_MIRROR", "SYM_ROTATE", "VIA_MIRROR", "VIA_ROTATION", "BOND_PAD", "SYM_NAME",
    "DRILL_HOLE_X", "DRILL_HOLE_Y", "DRILL_FIGURE_SHAPE", "DRILL_FIGURE_WIDTH",
    "DRILL_FIGURE_HEIGHT", "DRILL_FIGURE_ROTATION", "RAT_CONNECTED"}));

inline constexpr auto kDieStackTable = viewTable("DIE_STACK_DEF", std::to_array<std::string_view>({
    "DIE_STACK_NAME", "DIE_STACK_LEVEL", "REFDES", "DIE_ATTACHMENT", "DIE_ORIENTATION",
    "DIE_THICKNESS", "DIE_BASE_HEIGHT", "DIE_ROTATION"}));

inline constexpr auto kNetTable = viewTable("NET", std::to_array<std::string_view>({
    "NET_NAME", "NET_BUS_NAME", "NET_DIFFERENTIAL_PAIR"}));

inline constexpr auto kComponentTable = viewTable("COMPONENT", std::to_array<std::string_view>({
    "REFDES_SORT", "REFDES", "COMP_CLASS", "COMP_DEVICE_TYPE", "COMP_VALUE", "COMP_TOL",
    "COMP_PACKAGE", "COMP_PART_NUMBER", "SYM_X", "SYM_Y", "SYM_ROTATE", "SYM_MIRROR",
    "SYM_BOX_X1", "SYM_BOX_Y1", "SYM_BOX_X2", "SYM_BOX_Y2"}));

inline constexpr auto kGeometryTable = viewTable("GEOMETRY", std::to_array<std::string_view>({
    "CLASS", "SUBCLASS", "RECORD_TAG", "GRAPHIC_DATA_NAME", "GRAPHIC_DATA_NUMBER",
    "GRAPHIC_DATA_1", "GRAPHIC_DATA_2", "GRAPHIC_DATA_3", "GRAPHIC_DATA_4", "GRAPHIC_DATA_5",
    "GRAPHIC_DATA_6", "GRAPHIC_DATA_7", "GRAPHIC_DATA_8", "GRAPHIC_DATA_9", "GRAPHIC_DATA_10"}));

inline constexpr auto kCompositePadTable = viewTable("COMPOSITE_PAD", std::to_array<std::string_view>({
    "PAD_STACK_NAME", "GRAPHIC_DATA_NAME", "START_LAYER_NAME", "END_LAYER_NAME", "NET_NAME",
    "DRILL_HOLE_NAME", "DRILL_ARRAY_LOCATIONS", "BACKDRILL_TOP_LAYER", "BACKDRILL_BOTTOM_LAYER",
    "BACKDRILL_SIZE", "PIN_X", "PIN_Y", "PIN_ROTATION_ABSOLUTE", "VIA_X", "VIA_Y", "VIA_ROTATION",
    "DRILL_ARRAY_ROWS", "DRILL_ARRAY_COLUMNS"}));

inline constexpr auto kLogicalPinTable = viewTable("LOGICAL_PIN", std::to_array<std::string_view>({
    "REFDES_SORT", "REFDES", "FUNC_DES", "PIN_NUMBER", "PIN_PINUSE"}));
// clang-format on

}  // namespace standin
