#include <algorithm>
#include <cstdint>

#include <gtest/gtest.h>

#include "views/ExtractaViewDef.h"

using namespace velextracta;
using tkcore::AString;

namespace {

TEST(ViewDefinition, turnsNetsIntoConditionsOrAlternativesByTheirNumber) {
    using enum ViewType;
    const struct {
        ViewType type;
        std::size_t nets;
        bool exclude;
        std::size_t conditions;  // on nets
        std::size_t netAlternatives;
        bool classExclusions;
    } cases[] = {
        {conn, 0, true, 0, 0, false},          {conn, 1, false, 1, 0, false},
        {conn, 2, false, 0, 2, false},         {conn, 12, false, 0, 0, false},
        {conn, 4, true, 4, 0, false},          {conn, 12, true, 0, 0, false},
        {fullgeo, 1, false, 1, 0, true},       {fullgeo, 11, false, 0, 11, false},
        {fullgeo, 11, true, 11, 0, true},      {fullgeo, 12, false, 0, 0, true},
        {cfullgeo, 2, false, 0, 2, false},     {cconn, 2, false, 0, 2, false},
        {compositepad, 2, false, 0, 0, false}, {net, 1, true, 0, 0, false},
    };
    for (const auto& expected : cases) {
        const ExtractaViewDef definition(
            expected.type, std::vector<AString>(expected.nets, AString("N")), expected.exclude);
        const auto count = [&](const char* start) {
            return std::ranges::count_if(definition.conditions, [=](const std::string& condition) {
                return condition.starts_with(start);
            });
        };
        SCOPED_TRACE(VEL_ANSI(ViewTypeName(expected.type)) + std::to_string(expected.nets));
        EXPECT_EQ(count(expected.exclude ? "NET_NAME !='" : "NET_NAME ='"), expected.conditions);
        EXPECT_EQ(definition.netAlternatives.size(), expected.netAlternatives);
        EXPECT_EQ(count("CLASS != 'ETCH'") == 1, expected.classExclusions);
    }
}

TEST(ViewDefinition, refusesATypeOutsideTheCatalogue) {
    EXPECT_THROW(ExtractaViewDef(static_cast<ViewType>(kViewTypeCount), {}, false),
                 std::out_of_range);
}

}  // namespace
