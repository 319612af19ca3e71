#include "views/ExtractaViewDef.h"

#include <span>
#include <string_view>

#include "tkcore/report/Assertion.h"
#include "views/inside/ViewCatalogue.h"

namespace velextracta {

using tkcore::AString;
using tkcore::VEL_ANSI;

namespace {

/// More nets than this do not restrict a view: extracta gets no longer lists.

void append(std::vector<std::string>& list, std::span<const std::string_view> texts) {
    list.insert(list.end(), texts.begin(), texts.end());
}

}  // namespace

bool keepUnnamedNets = false;

const std::vector<std::vector<AString>>& connectivityClassGroups() {
    static const std::vector<std::vector<AString>> kGroups{
        {"CONDUCTOR", "ETCH"}, {"PIN"}, {"VIA CLASS"}};
    return kGroups;
}

ExtractaViewDef::ExtractaViewDef(ViewType type, const std::vector<AString>& nets, bool exclude)
    : viewType(type) {
    InitDefaults(false);
    AddNetFilters(nets, exclude);
    addClassExclusions();
}

void ExtractaViewDef::InitDefaults(bool skipDefaultClasses) {
    const ViewCatalogueEntry* entry = findViewCatalogueEntry(viewType);
    if (entry == nullptr) {
        VEL_ASSERT_AT("ExtractaViewControl", 383,
                      !"ExtractaViewDef InitDefaults failed: unexpected viewType");
        return;
    }
    extractaView = entry->extractaView;
    for (const std::string_view condition : entry->conditions) {
        if (!keepUnnamedNets || condition != kNamedNetsOnly) {
            conditions.emplace_back(condition);
        }
    }
    append(alternatives, entry->alternatives);
    append(fields, entry->fields);
    append(fields, entry->moreFields);
    if (viewType == ViewType::conn && !skipDefaultClasses) {
        for (const std::vector<AString>& classes : connectivityClassGroups()) {
            AddClassAlternatives(classes);
        }
    }
}

void ExtractaViewDef::AddNetFilters(const std::vector<AString>& nets, bool exclude) {
    if (!kNetFilterableViews.Contains(viewType) || nets.size() > kMostFilteredNets) {
        return;
    }
    // No blank before the quote and no escape in the name: extracta expects exactly this.
    const std::string comparison = std::string(kNetNameField) + (exclude ? " !='" : " ='");
    auto& target = exclude || nets.size() == 1 ? conditions : netAlternatives;
    for (const AString& net : nets) {
        target.push_back(comparison + VEL_ANSI(net) + "'");
    }
}

void ExtractaViewDef::AddClassAlternatives(const std::vector<AString>& classes) {
    for (const AString& name : classes) {
        alternatives.push_back("CLASS = " + VEL_ANSI(name));
    }
}

void ExtractaViewDef::addClassExclusions() {
    const bool isGeometry = viewType == ViewType::fullgeo || viewType == ViewType::cfullgeo;
    if (isGeometry && netAlternatives.empty() && alternatives.empty()) {
        append(conditions, geometryClassExclusions());
    }
}

ExtractaViewDef MakeNetListDef(const std::vector<AString>& nets) {
    ExtractaViewDef definition(ViewType::conn);
    definition.extractaView = findViewCatalogueEntry(ViewType::conn)->extractaView;
    definition.fields = {std::string(kNetNameField)};
    definition.AddNetFilters(nets, false);
    return definition;
}

ExtractaViewDef MakeNetClassDef(const AString& net, const std::vector<AString>& classes) {
    ExtractaViewDef definition(ViewType::conn);
    definition.InitDefaults(true);
    definition.AddNetFilters({net}, false);
    definition.AddClassAlternatives(classes);
    return definition;
}

}  // namespace velextracta
