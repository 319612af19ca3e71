#include <algorithm>
#include <cstdint>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "views/ExtractaViewDef.h"

using namespace velextracta;
using testing::ElementsAre;
using testing::IsEmpty;
using tkcore::AString;

namespace {

std::vector<AString> nets(std::size_t count) {
    std::vector<AString> names;
    for (std::size_t n = 0; n < count; ++n) {
        names.push_back("N" + AString(std::to_string(n)));
    }
    return names;
}

std::vector<AString> members(const ViewSet& views) {
    std::vector<AString> names;
    for (std::int32_t n = 0; n < views.GetCount(); ++n) {
        names.push_back(ViewTypeName(views.GetAt(n)));
    }
    return names;
}

TEST(ViewSet, isWalkedInTheOrderOfTheCatalogue) {
    EXPECT_THAT(members(kLayerNetViews), ElementsAre("layer", "net"));
    EXPECT_THAT(members(kNetFilterableViews), ElementsAre("fullgeo", "conn", "cfullgeo", "cconn"));
}

TEST(ViewDefinition, turnsNetsIntoConditionsOrAlternativesByTheirNumber) {
    const struct {
        ViewType type;
        std::size_t nets;
        bool exclude;
        std::size_t conditions;  // on nets
        std::size_t netAlternatives;
        bool classExclusions;
    } cases[] = {
        {ViewType::conn, 0, true, 0, 0, false},          {ViewType::conn, 1, false, 1, 0, false},
        {ViewType::conn, 2, false, 0, 2, false},         {ViewType::conn, 11, false, 0, 11, false},
        {ViewType::conn, 12, false, 0, 0, false},        {ViewType::conn, 1, true, 1, 0, false},
        {ViewType::conn, 4, true, 4, 0, false},          {ViewType::conn, 12, true, 0, 0, false},
        {ViewType::fullgeo, 1, false, 1, 0, true},       {ViewType::fullgeo, 2, false, 0, 2, false},
        {ViewType::fullgeo, 11, true, 11, 0, true},      {ViewType::fullgeo, 12, false, 0, 0, true},
        {ViewType::cfullgeo, 2, false, 0, 2, false},     {ViewType::cconn, 2, false, 0, 2, false},
        {ViewType::layer, 2, false, 0, 0, false},        {ViewType::net, 1, true, 0, 0, false},
        {ViewType::compositepad, 1, false, 0, 0, false},
    };
    for (const auto& expected : cases) {
        const ExtractaViewDef definition(expected.type, nets(expected.nets), expected.exclude);
        const auto count = [&](const char* start) {
            return std::ranges::count_if(definition.conditions, [=](const std::string& condition) {
                return condition.starts_with(start);
            });
        };
        const std::string label = VEL_ANSI(ViewTypeName(expected.type)) + " with " +
                                  std::to_string(expected.nets) + " nets";
        EXPECT_EQ(count(expected.exclude ? "NET_NAME !='" : "NET_NAME ='"), expected.conditions)
            << label;
        EXPECT_EQ(definition.netAlternatives.size(), expected.netAlternatives) << label;
        EXPECT_EQ(count("CLASS != 'ETCH'") == 1, expected.classExclusions) << label;
    }
}

TEST(ViewDefinition, writesNetsQuotedAndClassesBare) {
    const ExtractaViewDef choice(ViewType::conn, {"A", "it's \xff"}, false);
    EXPECT_THAT(choice.netAlternatives, ElementsAre("NET_NAME ='A'", "NET_NAME ='it's \xff'"));
    EXPECT_THAT(choice.alternatives, ElementsAre("CLASS = CONDUCTOR", "CLASS = ETCH", "CLASS = PIN",
                                                 "CLASS = VIA CLASS"));
    const ExtractaViewDef remainder(ViewType::conn, {"A"}, true);
    EXPECT_EQ(remainder.conditions.back(), "NET_NAME !='A'");
}

TEST(ViewDefinition, asksForNetNamesOnlyInASurvey) {
    const ExtractaViewDef all = MakeNetListDef({});
    EXPECT_EQ(all.extractaView, "CONNECTIVITY");
    EXPECT_THAT(all.fields, ElementsAre("NET_NAME"));
    EXPECT_THAT(all.conditions, IsEmpty());
    EXPECT_THAT(all.alternatives, IsEmpty());
    EXPECT_THAT(MakeNetListDef({"A"}).conditions, ElementsAre("NET_NAME ='A'"));
    EXPECT_THAT(MakeNetListDef({"A", "B"}).netAlternatives,
                ElementsAre("NET_NAME ='A'", "NET_NAME ='B'"));
}

TEST(ViewDefinition, hasNoOtherClassesThanThoseOfOneNet) {
    const ExtractaViewDef pins = MakeNetClassDef("GND", {"PIN"});
    EXPECT_THAT(pins.conditions, ElementsAre("RAT_CONNECTED != 'YES'", "RAT_CONNECTED != 'NO'",
                                             "NET_NAME != ''", "NET_NAME ='GND'"));
    EXPECT_THAT(pins.alternatives, ElementsAre("CLASS = PIN"));
}

TEST(ViewDefinition, refusesATypeOutsideTheCatalogue) {
    EXPECT_THROW(ExtractaViewDef(static_cast<ViewType>(kViewTypeCount), {}, false),
                 std::out_of_range);
}

}  // namespace
