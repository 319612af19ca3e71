#include "reader/ViewFile.h"

#include <cstdio>
#include <memory>

#include "reader/ExtractaViewGrammar.h"
#include "views/ExtractaParserException.h"

namespace velextracta {

namespace {

struct FileCloser {
    // A file that was only read has nothing left to lose when closing it fails.
    void operator()(std::FILE* file) const noexcept { static_cast<void>(std::fclose(file)); }
};

/// Reads all of the file; false if it cannot be opened or read.
bool readText(const std::string& path, std::string& text) {
    const std::unique_ptr<std::FILE, FileCloser> file(std::fopen(path.c_str(), "rb"));
    // A directory may open too; only reading it fails, and the size it tells is no size.
    if (!file || (std::fgetc(file.get()) == EOF && std::ferror(file.get()) != 0)) {
        return false;
    }
    const long size = std::fseek(file.get(), 0, SEEK_END) == 0 ? std::ftell(file.get()) : -1;
    if (size < 0 || std::fseek(file.get(), 0, SEEK_SET) != 0) {
        return false;
    }
    text.resize(static_cast<std::size_t>(size));
    text.resize(std::fread(text.data(), 1, text.size(), file.get()));
    return std::ferror(file.get()) == 0;
}

}  // namespace

void readViewFile(const std::string& path, ExtractaViewData& data) {
    std::string text;
    if (!readText(path, text)) {
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
