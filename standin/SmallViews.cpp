#include "standin/SmallViews.h"

#include <array>
#include <string_view>

#include "standin/DesignTables.h"
#include "standin/TableWriter.h"

namespace standin {
namespace {

struct LayerRow {
    const char* name;
    const char* type;
    const char* material;
    const char* thickness;
};

constexpr auto kLayers = std::to_array<LayerRow>({
    {"TOP", "CONDUCTOR", "COPPER", "15 UM"},
    {"D1", "DIELECTRIC", "BUILDUP", "30 UM"},
    {"L2", "PLANE", "COPPER", "15 UM"},
    {"D2", "DIELECTRIC", "BUILDUP", "30 UM"},
    {"L3", "CONDUCTOR", "COPPER", "15 UM"},
    {"D3", "DIELECTRIC", "CORE", "800 UM"},
    {"L4", "CONDUCTOR", "COPPER", "15 UM"},
    {"D4", "DIELECTRIC", "BUILDUP", "30 UM"},
    {"L5", "PLANE", "COPPER", "15 UM"},
    {"D5", "DIELECTRIC", "BUILDUP", "30 UM"},
    {"BOTTOM", "CONDUCTOR", "COPPER", "15 UM"},
});
struct OutlineRow {
    const char* className;
    const char* subclass;
    std::int64_t half;
};

constexpr auto kOutlines = std::to_array<OutlineRow>({
    {"BOARD GEOMETRY", "OUTLINE", kHalfPackage},
    {"SUBSTRATE GEOMETRY", "OUTLINE", kHalfPackage},
    {"BOARD GEOMETRY", "SOLDERMASK_TOP", kHalfPackage - 100'000},
    {"SUBSTRATE GEOMETRY", "ASSEMBLY_TOP", kHalfPackage - 500'000},
    {"DRAWING FORMAT", "OUTLINE", kHalfPackage + 9'000'000},
    {"ROUTE KEEPIN", "ALL", kHalfPackage - 250'000},
});

// Not a view: view keywords are upper case.
void writeDesignProperties(Database& database) {
    const std::string edge = micrometres(kHalfPackage);
    database.execute(
        "CREATE TABLE design (property TEXT, value TEXT); INSERT INTO design VALUES "
        "('units', 'microns'), ('accuracy', '3'), ('extent x1', '-" +
        edge + "'), ('extent y1', '-" + edge + "'), ('extent x2', '" + edge +
        "'), ('extent y2', '" + edge + "')");
}

void writeLayers(Database& database) {
    TableWriter<kLayerTable> table(database);
    std::uint64_t number = 0;
    for (const LayerRow& layer : kLayers) {
        const bool plane = std::string_view(layer.type) == "PLANE";
        if (std::string_view(layer.material) == "COPPER") {
            table.insertRow(sortable(++number), layer.name, layer.type, "POSITIVE", "YES",
                            "1.000000", "0", "595900 mho/cm", layer.material, plane ? "YES" : "NO",
                            "3.80 w/cm", layer.thickness);
        } else {
            table.insertRow(sortable(++number), layer.name, layer.type, "", "NO", "3.300000",
                            "0.0044", "0 mho/cm", layer.material, "NO", "0.005 w/cm",
                            layer.thickness);
        }
    }
}

void writePadDefinitions(Database& database) {
    constexpr std::int64_t kClearance = 60'000;
    TableWriter<kPadDefTable> table(database);
    for (const PadStackRow& padStack : kPadStacks) {
        for (const char* layer : {padStack.startLayer, padStack.endLayer}) {
            table.insertRow(padStack.name, layer, "REGULAR", padStack.shape,
                            micrometres(padStack.width), micrometres(padStack.height), "0.000",
                            "0.000", padStack.drill);
            table.insertRow(padStack.name, layer, "ANTI", padStack.shape,
                            micrometres(padStack.width + kClearance),
                            micrometres(padStack.height + kClearance), "0.000", "0.000", "");
        }
    }
}

void writeComponents(Database& database, const std::vector<Component>& components) {
    TableWriter<kComponentTable> table(database);
    std::uint64_t number = 0;
    for (const Component& component : components) {
        const std::string sort = sortable(++number);
        const Pin first = pinAt(component, 0, 0);
        const Pin last = pinAt(component, component.rows - 1, component.columns - 1);
        const bool discrete = component.padStack == kCapacitorPadStack;
        table.insertRow(
            sort, component.refdes, component.componentClass, component.symbol,
            discrete ? "100nF" : "", discrete ? "10%" : "", component.symbol, "PN-" + sort,
            micrometres(component.x), micrometres(component.y), "0.000", component.mirror,
            micrometres(first.x - component.pitch), micrometres(first.y - component.pitch),
            micrometres(last.x + component.pitch), micrometres(last.y + component.pitch));
    }
}

void writeLogicalPins(Database& database, const std::vector<Component>& components) {
    TableWriter<kLogicalPinTable> table(database);
    std::uint64_t number = 0;
    for (const Component& component : components) {
        const std::string sort = sortable(++number);
        for (std::uint64_t row = 0; row < component.rows; ++row) {
            for (std::uint64_t column = 0; column < component.columns; ++column) {
                table.insertRow(sort, component.refdes, "F_" + component.refdes,
                                pinAt(component, row, column).number,
                                (row + column) % 5 == 0 ? "POWER" : "BI");
            }
        }
    }
}

void writeOutlines(Database& database) {
    using Edge = std::array<std::int64_t, 4>;
    constexpr std::array<Edge, 4> kEdges{
        {{-1, -1, 1, -1}, {1, -1, 1, 1}, {1, 1, -1, 1}, {-1, 1, -1, -1}}};
    TableWriter<kGeometryTable> table(database);
    std::uint64_t number = 0;
    for (const OutlineRow& outline : kOutlines) {
        ++number;
        for (const auto& [x1, y1, x2, y2] : kEdges) {
            table.insertRow(outline.className, outline.subclass, std::to_string(number) + " 1",
                            "LINE", "1", micrometres(x1 * outline.half),
                            micrometres(y1 * outline.half), micrometres(x2 * outline.half),
                            micrometres(y2 * outline.half), "0.000", "", "", "", "", "");
        }
    }
}

// One in four has a drill array, one in four is drilled back from one side, the rest is plain.
void writeCompositePads(Database& database, std::vector<Net>& nets, Random& random) {
    constexpr std::int64_t kCompositePads = 40;
    TableWriter<kCompositePadTable> table(database);
    for (std::int64_t number = 0; number < kCompositePads; ++number) {
        const PadStackRow& padStack = random.oneOf(kViaPadStacks);
        const bool array = number % 4 == 0;
        const bool fromTop = number % 8 == 1;
        const bool fromBottom = number % 8 == 5;
        const std::string_view netName =
            nets.empty() ? "" : std::string_view(pickNet(nets, random).name);
        table.insertRow(
            padStack.name, "CIRCLE", padStack.startLayer, padStack.endLayer, netName,
            padStack.drill, array ? "(0.000 -50.000) (0.000 50.000)" : "", fromTop ? "L3" : "",
            fromBottom ? "L4" : "", fromTop || fromBottom ? "300.000" : "", "", "", "",
            micrometres(random.around(0, kHalfPackage)), micrometres(number * 1'000'000), "0.000",
            array ? "2" : "", array ? "1" : "");
    }
}

void writeDieStacks(Database& database) {
    TableWriter<kDieStackTable> table(database);
    table.insertRow("STACK_DIE1", "1", "DIE1", "FLIP_CHIP", "CHIP_DOWN", "775.000", "70.000",
                    "0.000");
    table.insertRow("STACK_DIE2", "1", "DIE2", "WIRE_BOND", "CHIP_UP", "250.000", "25.000",
                    "90.000");
}

void writeNets(Database& database, const std::vector<Net>& nets) {
    TableWriter<kNetTable> table(database);
    for (const Net& net : nets) {
        table.insertRow(net.name, net.busName, net.differentialPair);
    }
}

}  // namespace

void writeSmallViews(Database& database, std::vector<Net>& nets,
                     const std::vector<Component>& components, Random& random) {
    writeDesignProperties(database);
    writeLayers(database);
    writePadDefinitions(database);
    writeComponents(database, components);
    writeLogicalPins(database, components);
    writeOutlines(database);
    writeCompositePads(database, nets, random);
    writeDieStacks(database);
    writeNets(database, nets);
}

}  // namespace standin
