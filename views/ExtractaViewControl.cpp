#include "views/ExtractaViewControl.h"

#include <cstdint>
#include <filesystem>

#include <boost/algorithm/string/join.hpp>
#include <boost/algorithm/string/replace.hpp>

#include "tkcore/Path.h"

namespace velextracta {

using tkcore::AString;

namespace {

/// The filter part of a block: every alternative with all conditions behind it.
std::string filterText(const ExtractaViewDef& definition) {
    const std::string common = JoinLines(definition.conditions);
    const auto& alternatives =
        definition.netAlternatives.empty() ? definition.alternatives : definition.netAlternatives;
    if (alternatives.empty()) {
        return common.empty() ? "" : common + "\n\n\t";
    }
    std::string text;
    for (const std::string& alternative : alternatives) {
        text += text.empty() ? "" : "\n\tOR\n\t";
        text.append(alternative).append("\n\t").append(common);
    }
    return text + "\n\n\t";
}

}  // namespace

std::ofstream OpenControlFile(const tkcore::LongFileName& path) {
    const std::filesystem::path file(tkcore::toPath(path.FilePath()).native());
    std::ofstream stream(file, std::ios::out | std::ios::trunc | std::ios::binary);
    return stream;
}

std::string JoinLines(const std::vector<std::string>& lines) {
    return boost::algorithm::join(lines, "\n\t");
}

void WriteViewBlock(const ExtractaViewDef& definition, std::ostream& out) {
    std::string block = definition.extractaView + "\n\n\t" + filterText(definition);
    if (!definition.fields.empty()) {
        block += JoinLines(definition.fields) + "\n";
    }
    block += "\nEND\n\n";
    out << boost::algorithm::replace_all_copy(block, "\n", "\r\n");
}

bool WriteControlFile(std::ofstream& out, const ViewSet& views, const std::vector<AString>& nets) {
    if (!out.is_open() || out.bad()) {
        return false;
    }
    for (std::int32_t n = 0; n < views.GetCount(); ++n) {
        WriteViewBlock(ExtractaViewDef(views.GetAt(n), nets, false), out);
    }
    return true;
}

AString MakeViewFileName(ViewType viewType, const AString& suffix) {
    return ViewTypeName(viewType) + suffix + ".txt";
}

AString MakeControlFileName(ViewType viewType, const AString& suffix) {
    return "extracta_control_" + MakeViewFileName(viewType, suffix);
}

void CollectViewFiles(const ViewSet& views, const tkcore::LongFileName& directory,
                      std::vector<ActiveView>& out) {
    for (std::int32_t n = 0; n < views.GetCount(); ++n) {
        const ViewType viewType = views.GetAt(n);
        out.push_back({viewType, directory.FilePath() + MakeViewFileName(viewType, "")});
    }
}

}  // namespace velextracta
