// Fuzzes the stand-in extractor's reader of control files.

#include <string>
#include <string_view>

#include "fuzz/Fuzzer.h"
#include "standin/ControlFile.h"

using namespace standin;

namespace {

std::string writtenGroup(const ConditionGroup& conditions) {
    promise(!conditions.empty(), "an alternative has a condition");
    std::string text;
    for (const Condition& condition : conditions) {
        text += "\t" + condition.field;
        text += condition.comparison == Comparison::kEqual ? " = '" : " != '";
        text += condition.value + "'\r\n";
    }
    return text + (conditions.size() == 1 ? "\t\r\n" : "");
}

std::string writtenBlock(const ViewBlock& block) {
    std::string text = block.keyword + "\r\n\r\n";
    for (std::size_t i = 0; i < block.alternatives.size(); ++i) {
        text += (i == 0 ? "" : "\tOR\r\n") + writtenGroup(block.alternatives[i]);
    }
    text += block.alternatives.empty() ? "" : "\r\n";
    for (const std::string& field : block.fields) {
        text += "\t" + field + "\r\n";
    }
    return text + (block.fields.empty() ? "\t\r\n" : "\r\n") + "END\r\n\r\n";
}

std::string written(const std::vector<ViewBlock>& blocks) {
    std::string text;
    for (const ViewBlock& block : blocks) {
        text += writtenBlock(block);
    }
    return text;
}

/// The text without parts that have more than one spelling.
std::string essence(std::string text) {
    std::erase_if(text, [](char byte) {
        return std::string_view(" '\t\r\n").find(byte) != std::string_view::npos;
    });
    return text;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(bytes), size);
    std::vector<ViewBlock> blocks;
    try {
        blocks = parseControlFile(text);
    } catch (const ControlFileError&) {
        return 0;
    }
    promise(!blocks.empty(), "a control file has a block");
    const std::string rewritten = written(blocks);
    promise(essence(rewritten) == essence(std::string(text)), "nothing that was written is lost");
    promise(written(parseControlFile(rewritten)) == rewritten,
            "what was read reads the same when it is written again");
    return 0;
}
