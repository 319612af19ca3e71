#include "reader/ViewFile.h"

#include <system_error>

#include "reader/inside/ExtractaViewGrammar.h"
#include "tkcore/files/InputFile.h"
#include "tkcore/report/ExtractaParserException.h"
#include "tkcore/report/Log.h"

namespace velextracta {

using tkcore::ExtractaParserException;

namespace {

std::string readText(const std::string& path) {
    tkcore::InputFile file{tkcore::LongFileName(tkcore::AString(path))};
    if (file.isDirectory()) {
        throw std::system_error(std::make_error_code(std::errc::is_a_directory), path);
    }
    std::string text(file.size(), '\0');
    text.resize(file.read(text.data(), text.size()));  // it may have become shorter
    return text;
}

}  // namespace

void readViewFile(const std::string& path, ExtractaViewData& data) {
    std::string text;
    try {
        text = readText(path);
    } catch (const std::system_error& error) {
        tkcore::writeLog(0, "error: ", error.what());
        throw ExtractaParserException("Could not open file: " + path);
    }
    parseViewText(text, path, data);
}

void parseViewText(std::string_view text, const std::string& path, ExtractaViewData& data) {
    using Iterator = std::string_view::const_iterator;
    const ExtractaViewGrammar<Iterator> grammar(data);
    Iterator stop = text.cbegin();
    const bool matched = boost::spirit::qi::parse(stop, text.cend(), grammar);
    if (matched && stop == text.cend()) {
        return;
    }
    throw ExtractaParserException(path + " parsing failed" +
                                  (matched ? " to parse whole file" : "") +
                                  " after successfully parsing the first " +
                                  std::to_string(data.records().size()) + " S records");
}

}  // namespace velextracta
