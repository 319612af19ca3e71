#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tkcore/text/AString.h"
#include "views/ViewType.h"

namespace velextracta {

/// The field that tells a record's net.
inline constexpr std::string_view kNetNameField = "NET_NAME";

/// The classes of the connectivity view, in the groups that a large net is split by.
const std::vector<std::vector<tkcore::AString>>& ConnectivityClassGroups();

/// Whether records without a net are asked for too. Nothing sets it.
extern bool keepUnnamedNets;

/// What one extracta view request contains: made for a generator or a block of a control file.
/// Conditions are complete texts ("CLASS != 'ETCH'"), narrow, and never looked into.
struct ExtractaViewDef final {
    ViewType viewType{};
    std::string extractaView;                  // the keyword that extracta knows the view by
    std::vector<std::string> fields;           // in output column order; none means all
    std::vector<std::string> conditions;       // all must hold
    std::vector<std::string> netAlternatives;  // one must hold; stand in for the alternatives
    std::vector<std::string> alternatives;     // one must hold

    /// The view's request restricted to the nets, or with exclude to all others. Throws
    /// std::out_of_range for a type outside the catalogue.
    ExtractaViewDef(ViewType type, const std::vector<tkcore::AString>& nets, bool exclude);

    /// Adds what the catalogue says of the view; clears nothing. skipDefaultClasses leaves out the
    /// class alternatives of conn.
    void InitDefaults(bool skipDefaultClasses);

    /// Selects or excludes nets, where the view has nets. A list of more than 11 nets restricts
    /// nothing.
    void AddNetFilters(const std::vector<tkcore::AString>& nets, bool exclude);

    void AddClassAlternatives(const std::vector<tkcore::AString>& classes);

private:
    explicit ExtractaViewDef(ViewType type) : viewType(type) {}
    void addClassExclusions();

    friend ExtractaViewDef MakeNetListDef(const std::vector<tkcore::AString>& nets);
    friend ExtractaViewDef MakeNetClassDef(const tkcore::AString& net,
                                           const std::vector<tkcore::AString>& classes);
};

/// The survey: the net name of every connectivity record of the nets (of all, if none is given).
ExtractaViewDef MakeNetListDef(const std::vector<tkcore::AString>& nets);

/// The connectivity records of one net in the classes.
ExtractaViewDef MakeNetClassDef(const tkcore::AString& net,
                                const std::vector<tkcore::AString>& classes);

}  // namespace velextracta
