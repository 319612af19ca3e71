// The inner loops of a run, one by one: where to look when a figure of the suite has moved.

#include <cstddef>
#include <cstdint>
#include <random>
#include <stdexcept>
#include <string>

#include <benchmark/benchmark.h>

#include "executor/NetRanking.h"
#include "reader/ExtractaViewGrammar.h"
#include "tkcore/AString.h"

namespace {

using namespace velextracta;

// NOLINTNEXTLINE(cert-msc32-c,cert-msc51-cpp): two runs are only comparable on the same texts
const std::minstd_rand kSameEveryTime(1);

/// Few nets have most of the records, as in a package.
std::string netName(std::minstd_rand& random) {
    constexpr unsigned kSupplyShare = 60;
    const auto number = static_cast<unsigned>(random());
    return number % 100 < kSupplyShare ? "VDD_CORE" + std::to_string(number % 4)
                                       : "DDR_DQ" + std::to_string(number % 500) + "_P";
}

std::string surveyText(std::int64_t records) {
    std::minstd_rand random = kSameEveryTime;
    std::string text = "A!NET_NAME!\r\nJ!design.mcm!microns!\r\n";
    for (std::int64_t n = 0; n < records; ++n) {
        text += "S!" + netName(random) + "!\r\n";
    }
    return text;
}

void parseSurvey(const std::string& text, ExtractaViewData& data) {
    auto position = text.cbegin();
    const ExtractaViewGrammar<std::string::const_iterator> grammar(data);
    if (!boost::spirit::qi::parse(position, text.cend(), grammar) || position != text.cend()) {
        throw std::logic_error("the survey cannot be parsed");
    }
}

void parsesSurveyRecords(benchmark::State& state) {
    const std::string text = surveyText(state.range(0));
    for ([[maybe_unused]] const auto _ : state) {
        ExtractaViewData data;
        parseSurvey(text, data);
        benchmark::DoNotOptimize(data);
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(parsesSurveyRecords)->Arg(100'000)->Unit(benchmark::kMillisecond);

void ranksNets(benchmark::State& state) {
    ExtractaViewData data;
    parseSurvey(surveyText(state.range(0)), data);
    for ([[maybe_unused]] const auto _ : state) {
        benchmark::DoNotOptimize(rankNets(data, "survey"));
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(ranksNets)->Arg(100'000)->Unit(benchmark::kMillisecond);

const std::string kPath = "/designs/substrate/extract1795278455/conn0_VDD_CORE_CONDUCTOR_ETCH.txt";

void widensPath(benchmark::State& state) {
    for ([[maybe_unused]] const auto _ : state) {
        benchmark::DoNotOptimize(tkcore::widen(kPath));
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(kPath.size()));
}
BENCHMARK(widensPath);

void narrowsPath(benchmark::State& state) {
    const std::wstring path = tkcore::widen(kPath);
    for ([[maybe_unused]] const auto _ : state) {
        benchmark::DoNotOptimize(tkcore::narrow(path));
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(kPath.size()));
}
BENCHMARK(narrowsPath);

}  // namespace
