#pragma once

#include <ostream>
#include <sstream>
#include <string>
#include <vector>

#include "tkcore/files/LongFileName.h"
#include "tkcore/text/AString.h"
#include "views/ActiveView.h"
#include "views/ExtractaViewDef.h"
#include "views/ViewType.h"

namespace velextracta {

/// Writes a control file's text to a new file. Removes anything that has the name, and follows no
/// link. Throws std::system_error.
void saveControlFile(const std::ostringstream& text, const tkcore::LongFileName& path);

/// The lines in their order, joined by a line feed and a tab.
std::string JoinLines(const std::vector<std::string>& lines);

/// Writes the block of one view request. Lines end with CR LF on every system. Errors stay in the
/// stream's state.
void WriteViewBlock(const ExtractaViewDef& definition, std::ostream& out);

/// Writes the blocks of all views of the set, restricted to the nets, in ascending order of type.
/// False, with nothing written, if the stream has no open file or is bad.
bool WriteControlFile(std::ostream& out, const ViewSet& views,
                      const std::vector<tkcore::AString>& nets);

/// The names, without folder, of a view's file and of the control file for this view alone.
tkcore::AString MakeViewFileName(ViewType viewType, const tkcore::AString& suffix);
tkcore::AString makeControlFileName(ViewType viewType, const tkcore::AString& suffix);

/// The name, without folder, of the control file of several views.
inline constexpr char kControlFileName[] = "extracta_control.txt";

/// The suffixes of the survey, and of the connectivity of the nets that are not split.
inline constexpr char kSurveySuffix[] = "nets";
inline constexpr char kRemainderSuffix[] = "remainder";

/// Appends the views of the set with their files in the directory, in the order of the blocks
/// that WriteControlFile writes.
void CollectViewFiles(const ViewSet& views, const tkcore::LongFileName& directory,
                      std::vector<ActiveView>& out);

}  // namespace velextracta
