#include "benchmarks/support/Main.h"

#include <fstream>
#include <memory>
#include <utility>

#include "CvBase/IPP/kernels/KernelChoice.h"

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

void prepare(const Subject& subject) {
    if (subject.prepare) {
        subject.prepare();
    }
}

}  // namespace

void add(const std::string& work, Subject subject) {
    const bool wall = subject.clock == Clock::Wall;
    const bool once = subject.once;
    const std::string name = work + "/" + subject.name;
    const auto run = [subject = std::move(subject), checked = false, right = false](benchmark::State& state) mutable {
        prepare(subject);
        if (!checked) {
            subject.body();
            right = subject.correct();
            checked = true;
            prepare(subject);
        }
        if (right) {
            for ([[maybe_unused]] auto _ : state) {
                subject.body();
                benchmark::ClobberMemory();
            }
            right = !subject.once || subject.correct();
        }
        if (!right) {
            state.SkipWithError("the result is wrong");
        }
    };
    auto* const registered = benchmark::RegisterBenchmark(name.c_str(), run);
    if (wall) {
        registered->UseRealTime();
    }
    if (once) {
        registered->Iterations(1);
    }
}

void addAnswering(const std::string& work, const std::string& name, std::function<std::uint64_t()> body,
                  std::uint64_t wanted, Clock clock) {
    const auto answer = std::make_shared<std::uint64_t>();
    add(work, {name,
               [body = std::move(body), answer] { *answer = body(); },
               [answer, wanted] { return *answer == wanted; },
               {},
               clock});
}

void addCount(const std::string& work, std::function<std::uint64_t()> count) {
    const auto run = [count = std::move(count)](benchmark::State& state) {
        for ([[maybe_unused]] auto _ : state) {
        }
        state.counters["count"] = static_cast<double>(count());
    };
    benchmark::RegisterBenchmark((work + "/CvBase").c_str(), run)->Iterations(1);
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
    benchmark::AddCustomContext("vector_instructions", IPP::Detail::nameOf(IPP::Detail::bestPath()));
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
