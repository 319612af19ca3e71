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

/// Writes a control file's text to a new file; what has the name is removed. Throws
/// std::system_error.
void SaveControlFile(const std::ostringstream& text, const tkcore::LongFileName& path);

/// The texts in order, each on a line of its own that begins with a tab.
std::string JoinLines(const std::vector<std::string>& lines);

/// Writes the block of one view request, with CR LF at the ends of lines on every system; errors
/// stay in the stream's state.
void WriteViewBlock(const ExtractaViewDef& definition, std::ostream& out);

/// Writes the blocks of all views of the set, restricted to the nets, in ascending order of type.
/// False, with nothing written, if the stream has no open file or is bad.
bool WriteControlFile(std::ostream& out, const ViewSet& views,
                      const std::vector<tkcore::AString>& nets);

/// The bare name of a view's file, and that of the control file with its block alone.
tkcore::AString MakeViewFileName(ViewType viewType, const tkcore::AString& suffix);
tkcore::AString MakeControlFileName(ViewType viewType, const tkcore::AString& suffix);

/// The bare name of the control file of several views.
inline constexpr char kControlFileName[] = "extracta_control.txt";

/// The suffixes of the list of all nets, and of the connectivity of those that are not split.
inline constexpr char kSurveySuffix[] = "nets";
inline constexpr char kRemainderSuffix[] = "remainder";

/// Appends the views of the set with their files in the directory, in the order of the blocks
/// that WriteControlFile writes.
void CollectViewFiles(const ViewSet& views, const tkcore::LongFileName& directory,
                      std::vector<ActiveView>& out);

}  // namespace velextracta
