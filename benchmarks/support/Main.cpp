#include "benchmarks/support/Main.h"

#include <fstream>
#include <memory>
#include <utility>

#include "CvBase/IPP/Dispatch.h"

namespace bench {
namespace {

std::string processorName() {
    std::ifstream information("/proc/cpuinfo");
    for (std::string line; std::getline(information, line);) {
        if (line.rfind("model name", 0) == 0) {
            return line.substr(line.find(':') + 2);
        }
    }
    return "unknown";
}

}  // namespace

void add(std::string const& work, Subject subject) {
    bool const wall = subject.clock == Clock::WALL;
    std::string const name = work + "/" + subject.name;
    auto const run = [subject = std::move(subject), checked = false, right = false](benchmark::State& state) mutable {
        if (subject.prepare) {
            subject.prepare();
        }
        if (!checked) {
            subject.body();
            right = subject.correct();
            checked = true;
        }
        if (!right) {
            state.SkipWithError("the result is wrong");
            return;
        }
        for ([[maybe_unused]] auto _ : state) {
            subject.body();
            benchmark::ClobberMemory();
        }
    };
    auto* const registered = benchmark::RegisterBenchmark(name.c_str(), run);
    if (wall) {
        registered->UseRealTime();
    }
}

void addAnswering(std::string const& work, std::string const& name, std::function<std::uint64_t()> body,
                  std::uint64_t wanted, Clock clock) {
    auto const answer = std::make_shared<std::uint64_t>();
    add(work, {name,
               [body = std::move(body), answer] { *answer = body(); },
               [answer, wanted] { return *answer == wanted; },
               {},
               clock});
}

}  // namespace bench

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 2;
    }
#ifndef NDEBUG
    benchmark::AddCustomContext("warning", "built without optimisation: these figures mean nothing");
#endif
    benchmark::AddCustomContext("processor", bench::processorName());
    benchmark::AddCustomContext("vector_instructions", IPP::Detail::NameOf(IPP::Detail::BestPath()));
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
