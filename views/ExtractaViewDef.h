#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "tkcore/text/AString.h"
#include "views/ViewType.h"

namespace velextracta {

/// The field with a record's net.
inline constexpr std::string_view kNetNameField = "NET_NAME";

/// A list of more nets restricts no view.
inline constexpr std::size_t kMostFilteredNets = 11;

/// The classes of the connectivity view, in the groups into which a large net is split.
const std::vector<std::vector<tkcore::AString>>& connectivityClassGroups();

/// Whether to ask for records without a net, too. Nothing sets it.
extern bool keepUnnamedNets;

/// The request for one view, for a generator or a block of a control file. Conditions are complete
/// narrow texts ("CLASS != 'ETCH'"), which are never parsed.
struct ExtractaViewDef final {
    ViewType viewType{};
    std::string extractaView;                  // the keyword that extracta knows the view by
    std::vector<std::string> fields;           // in output column order; none means all
    std::vector<std::string> conditions;       // all must hold
    std::vector<std::string> netAlternatives;  // one must hold; replace the alternatives
    std::vector<std::string> alternatives;     // one must hold

    /// The view's request restricted to the nets, or with exclude to all others. Throws
    /// std::out_of_range for a type outside the catalogue.
    ExtractaViewDef(ViewType type, const std::vector<tkcore::AString>& nets, bool exclude);

    /// Adds the view's entries in the catalogue; clears nothing. skipDefaultClasses leaves out the
    /// class alternatives of conn.
    void InitDefaults(bool skipDefaultClasses);

    /// Selects or excludes nets, if nets can restrict the view. A longer list than
    /// kMostFilteredNets restricts nothing.
    void AddNetFilters(const std::vector<tkcore::AString>& nets, bool exclude);

    void AddClassAlternatives(const std::vector<tkcore::AString>& classes);

private:
    explicit ExtractaViewDef(ViewType type) : viewType(type) {}
    void addClassExclusions();

    friend ExtractaViewDef MakeNetListDef(const std::vector<tkcore::AString>& nets);
    friend ExtractaViewDef MakeNetClassDef(const tkcore::AString& net,
                                           const std::vector<tkcore::AString>& classes);
};

/// The request for the survey: the net name of every connectivity record of the nets (none: all).
ExtractaViewDef MakeNetListDef(const std::vector<tkcore::AString>& nets);

/// The request for the connectivity records of one net in the classes.
ExtractaViewDef MakeNetClassDef(const tkcore::AString& net,
                                const std::vector<tkcore::AString>& classes);

}  // namespace velextracta
