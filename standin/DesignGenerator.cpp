#include "standin/DesignGenerator.h"

#include <array>
#include <initializer_list>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

#include "standin/DesignTables.h"
#include "standin/Package.h"
#include "standin/SmallViews.h"
#include "standin/TableWriter.h"

namespace standin {
namespace {

constexpr std::uint64_t kProgressStep = 4096;

constexpr auto kConductorLayers =
    std::to_array<const char*>({"TOP", "L2", "L3", "L4", "L5", "BOTTOM"});

struct RecordClassRow {
    const char* name;
    std::uint64_t perThousand;
};

// The filters of the views remove the last four.
constexpr auto kRecordClasses = std::to_array<RecordClassRow>({
    {"CONDUCTOR", 420},
    {"VIA CLASS", 310},
    {"PIN", 150},
    {"ETCH", 80},
    {"DRC ERROR CLASS", 10},
    {"ROUTE KEEPOUT", 10},
    {"MANUFACTURING", 10},
    {"BOARD GEOMETRY", 10},
});

// Writes connectivity, and the full geometry that belongs to it.
class RecordWriter final {
public:
    RecordWriter(Database& database, std::vector<Net>& packageNets,
                 const std::vector<Component>& packageComponents, Random& packageRandom)
        : nets(packageNets),
          components(packageComponents),
          random(packageRandom),
          connectivity(database),
          fullGeometry(database) {}

    void writeRecord(std::uint64_t number) {
        Net* net = nets.empty() || random.oneIn(50) ? nullptr : &pickNet(nets, random);
        const std::string_view netName = net == nullptr ? "" : std::string_view(net->name);
        const std::string_view className = pickClass();
        writeNode(net);
        both<"RECORD_TAG">(std::to_string(number + 1) + " 1");
        both<"CLASS">(className);
        both<"NET_NAME_SORT">(netName);
        both<"NET_NAME">(netName);
        if (className == "PIN") {
            writePin();
        } else if (className == "VIA CLASS") {
            writeVia();
        } else {
            writeTrack(className);
        }
        connectivity.insert();
        fullGeometry.insert();
    }

private:
    // Sets a field that both views have.
    template <FieldName kName>
    void both(std::string_view value) {
        connectivity.set<kName>(value);
        fullGeometry.set<kName>(value);
    }

    void bothGraphicData(std::initializer_list<std::string_view> values) {
        connectivity.setFrom<"GRAPHIC_DATA_1">(values);
        fullGeometry.setFrom<"GRAPHIC_DATA_1">(values);
    }

    const char* pickClass() {
        std::uint64_t point = random.below(1000);
        const auto* row = std::begin(kRecordClasses);
        while (point >= row->perThousand) {
            point -= row->perThousand;
            ++row;
        }
        return row->name;
    }

    void writeNode(Net* net) {
        const std::uint64_t node = net == nullptr ? ++unnamedNodes : ++net->nodeCount;
        connectivity.set<"NODE_SORT">(sortable(node));
        connectivity.set<"NODE_1_NUMBER">(std::to_string(node));
        connectivity.set<"NODE_2_NUMBER">(std::to_string(random.below(node) + 1));
    }

    void writeFigure(const PadStackRow& padStack, const std::string& x, const std::string& y) {
        both<"GRAPHIC_DATA_NAME">(*padStack.shape == '\0' ? "CIRCLE" : padStack.shape);
        both<"GRAPHIC_DATA_NUMBER">("1");
        bothGraphicData({x, y, micrometres(padStack.width), micrometres(padStack.height)});
        both<"PAD_STACK_NAME">(padStack.name);
        both<"START_LAYER_NAME">(padStack.startLayer);
        both<"END_LAYER_NAME">(padStack.endLayer);
        fullGeometry.set<"PAD_SHAPE_NAME">(padStack.shape);
    }

    void writePin() {
        const Component& component =
            random.oneIn(8) ? random.oneOf(components) : components[random.below(kLargeComponents)];
        const std::uint64_t row = random.below(component.rows);
        const Pin pin = pinAt(component, row, random.below(component.columns));
        const PadStackRow& padStack = kPadStacks[component.padStack];
        const std::string x = micrometres(pin.x);
        const std::string y = micrometres(pin.y);
        writeFigure(padStack, x, y);
        both<"SUBCLASS">(padStack.startLayer);
        both<"REFDES">(component.refdes);
        both<"PIN_NUMBER">(pin.number);
        both<"PIN_TYPE">("BI");
        both<"PIN_X">(x);
        both<"PIN_Y">(y);
        both<"PIN_ROTATION_ABSOLUTE">("0.000");
        both<"SYM_MIRROR">(component.mirror);
        both<"SYM_ROTATE">("0.000");
        both<"BOND_PAD">(random.oneIn(20) ? "YES" : "");
        fullGeometry.set<"PIN_ROTATION">("0.000");
        connectivity.set<"COMP_CLASS">(component.componentClass);
        connectivity.set<"SYM_NAME">(component.symbol);
    }

    void writeVia() {
        const PadStackRow& padStack = random.oneOf(kViaPadStacks);
        const std::string x = micrometres(random.around(0, kHalfPackage));
        const std::string y = micrometres(random.around(0, kHalfPackage));
        writeFigure(padStack, x, y);
        both<"SUBCLASS">(padStack.startLayer);
        both<"VIA_X">(x);
        both<"VIA_Y">(y);
        both<"VIA_MIRROR">("NO");
        both<"VIA_ROTATION">("0.000");
        connectivity.set<"DRILL_HOLE_X">(x);
        connectivity.set<"DRILL_HOLE_Y">(y);
        connectivity.set<"DRILL_FIGURE_SHAPE">("CIRCLE");
        connectivity.set<"DRILL_FIGURE_WIDTH">("60.000");
        connectivity.set<"DRILL_FIGURE_HEIGHT">("60.000");
        connectivity.set<"DRILL_FIGURE_ROTATION">("0.000");
    }

    void writeTrack(std::string_view className) {
        constexpr std::int64_t kLongest = 2'000'000;
        const std::int64_t x = random.around(0, kHalfPackage - kLongest);
        const std::int64_t y = random.around(0, kHalfPackage - kLongest);
        // One draw in each statement: the order of evaluation within an expression is not fixed.
        const std::string startX = micrometres(x);
        const std::string startY = micrometres(y);
        const std::string endX = micrometres(random.around(x, kLongest));
        const std::string endY = micrometres(random.around(y, kLongest));
        both<"GRAPHIC_DATA_NUMBER">(std::to_string(random.below(9) + 1));
        if (random.oneIn(12)) {
            both<"GRAPHIC_DATA_NAME">("ARC");
            const std::string centreX = micrometres(random.around(x, kLongest));
            bothGraphicData({startX, startY, endX, endY, centreX, startY, "800.000", "25.000",
                             random.oneIn(2) ? "CLOCKWISE" : "COUNTERCLOCKWISE"});
        } else {
            both<"GRAPHIC_DATA_NAME">("LINE");
            bothGraphicData({startX, startY, endX, endY, "25.000"});
        }
        const bool wireBond = className == "CONDUCTOR" && random.oneIn(100);
        both<"SUBCLASS">(wireBond ? "WIRE" : random.oneOf(kConductorLayers));
        if (wireBond) {
            connectivity.set<"WIREBOND_PROFILE_NAME">(random.oneIn(2) ? "PROFILE1" : "PROFILE2");
            connectivity.set<"WIREBOND_MATERIAL">("GOLD");
        } else if (random.oneIn(40)) {
            both<"RAT_CONNECTED">(random.oneIn(2) ? "YES" : "NO");
        }
    }

    std::vector<Net>& nets;
    const std::vector<Component>& components;
    Random& random;
    TableWriter<kConnectivityTable> connectivity;
    TableWriter<kFullGeometryTable> fullGeometry;
    std::uint64_t unnamedNodes = 0;
};

}  // namespace

void generateDesign(Database& database, const DesignSize& size,
                    const std::function<void(std::uint64_t)>& progress) {
    database.execute("PRAGMA page_size = 4096; PRAGMA encoding = 'UTF-8'; BEGIN");
    Random random(size.seed);
    std::vector<Net> nets = makeNets(size.nets, size.oddNames);
    const std::vector<Component> components = makeComponents();
    writeSmallViews(database, nets, components, random);
    RecordWriter writer(database, nets, components, random);
    for (std::uint64_t number = 0; number < size.records; ++number) {
        if (number % kProgressStep == 0) {
            progress(number);
        }
        writer.writeRecord(number);
    }
    progress(size.records);
    database.execute("COMMIT");
}

}  // namespace standin
