#include "reader/ViewFile.h"

#include <algorithm>
#include <system_error>

#include "reader/inside/ExtractaViewGrammar.h"
#include "reader/inside/TableReceiver.h"
#include "tkcore/files/InputFile.h"
#include "tkcore/report/ExtractaParserException.h"
#include "tkcore/report/Log.h"
#include "tkcore/system/Interruption.h"

namespace velextracta {

using tkcore::ExtractaParserException;

namespace {

// Large enough for few system calls, small enough for the processor's cache.
constexpr std::size_t kBlockSize = std::size_t{1} << 17U;

template <typename Iterator>
void parse(Iterator first, Iterator last, const std::string& path, ViewReceiver& receiver) {
    const ExtractaViewGrammar<Iterator> grammar(receiver);
    const bool matched = boost::spirit::qi::parse(first, last, grammar);
    if (matched && first == last) {
        return;
    }
    throw ExtractaParserException(path + " parsing failed" +
                                  (matched ? " to parse whole file" : "") +
                                  " after successfully parsing the first " +
                                  std::to_string(receiver.recordCount()) + " S records");
}

std::string readText(const std::string& path) {
    tkcore::InputFile file{tkcore::LongFileName(tkcore::AString(path))};
    file.requireFile();
    std::string text(file.size(), '\0');
    text.resize(file.read(text.data(), text.size()));  // it may have become shorter
    return text;
}

ExtractaParserException couldNotOpen(const std::string& path, const std::system_error& error) {
    tkcore::writeLog(0, "error: ", error.what());
    return ExtractaParserException("Could not open file: " + path);
}

}  // namespace

void readViewFile(const std::string& path, ExtractaViewData& data) {
    std::string text;
    try {
        text = readText(path);
    } catch (const std::system_error& error) {
        throw couldNotOpen(path, error);
    }
    parseViewText(text, path, data);
}

void parseViewText(std::string_view text, const std::string& path, ExtractaViewData& data) {
    TableReceiver receiver(data);
    parse(text.cbegin(), text.cend(), path, receiver);
}

void streamViewFile(const tkcore::LongFileName& file, ViewReceiver& receiver) {
    const std::string path = VEL_ANSI(file);
    try {
        tkcore::InputFile input(file);
        input.requireFile();
        std::uint64_t unread = input.size();  // it may be growing
        ViewWindow window(
            [&](char* destination, std::size_t size) {
                tkcore::throwIfInterrupted();
                const std::size_t wanted = std::min<std::uint64_t>(size, unread);
                const std::size_t count = input.readSome(destination, wanted);
                unread -= count;
                return count;
            },
            kBlockSize);
        streamView(window, path, receiver);
    } catch (const std::system_error& error) {
        throw couldNotOpen(path, error);
    }
}

void streamView(ViewWindow& window, const std::string& path, ViewReceiver& receiver) {
    parse(ViewIterator(window), ViewIterator(), path, receiver);
}

}  // namespace velextracta
