#include "views/ExtractaViewControl.h"

#include <cstdint>
#include <fstream>

#include <boost/algorithm/string/join.hpp>
#include <boost/algorithm/string/replace.hpp>

#include "tkcore/files/OutputFile.h"

namespace velextracta {

using tkcore::AString;

namespace {

/// The filter part of a block: each alternative, followed by all conditions.
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

void saveControlFile(const std::ostringstream& text, const tkcore::LongFileName& path) {
    tkcore::OutputFile(path, tkcore::OutputFile::IfThere::kReplace).write(text.str());
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

bool WriteControlFile(std::ostream& out, const ViewSet& views, const std::vector<AString>& nets) {
    const auto* file = dynamic_cast<const std::filebuf*>(out.rdbuf());
    if (out.bad() || (file != nullptr && !file->is_open())) {
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

AString makeControlFileName(ViewType viewType, const AString& suffix) {
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
