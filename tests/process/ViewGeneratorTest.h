#pragma once

#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "process/ExtractaViewGenerator.h"
#include "support/TemporaryDirectory.h"
#include "support/TestSystem.h"
#include "support/WriteProgram.h"

namespace velextracta {

using tkcore::AString;
using tkcore::LongFileName;

/// Generators with a scripted program as extracta, which runs in the working directory.
class ViewGenerator : public testing::Test {
protected:
    void TearDown() override {
        generators.clear();
        ExtractaViewGenerator::maxConcurrentExtractas = oldLimit;
        setVariable("VELTAR_EXTRACTA_PATHOVERRIDE", "");
    }

    void useExtracta(const std::string& commands) {
        setVariable("VELTAR_EXTRACTA_PATHOVERRIDE",
                    writeProgram(directory / "the extracta", commands).string());
    }

    ExtractaViewGenerator& start(const AString& name) {
        generators.push_back(std::make_unique<ExtractaViewGenerator>(
            LongFileName(AString(design)), MakeNetListDef({}), workingDir, true, name));
        return *generators.back();
    }

    const TemporaryDirectory directory;
    const std::string design = (directory / "a b.mcm").string();
    const LongFileName workingDir{AString(directory.path().string() + "/")};
    std::vector<std::unique_ptr<ExtractaViewGenerator>> generators;
    const std::uint32_t oldLimit = ExtractaViewGenerator::maxConcurrentExtractas;
};

}  // namespace velextracta
