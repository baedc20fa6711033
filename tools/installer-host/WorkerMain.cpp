// The program installer-host-worker: does what its order says to a bundle, and tells the host what happens.

#include <fcntl.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <cstddef>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <iterator>
#include <new>
#include <nlohmann/json.hpp>
#include <system_error>

#include "platform/StoreFailures.h"
#include "tools/installer-host/BundleSession.h"
#include "tools/installer-host/Checks.h"
#include "tools/installer-host/Snapshot.h"
#include "tools/installer-host/WorkerProtocol.h"

namespace {

using namespace host;
using nlohmann::json;

XCodSelector selectorOf(Step step) {
    return step == Step::PreInstall ? XCodSelectorPreInstall : XCodSelectorPostInstall;
}

/// A host's parameter block is longer than what plug-ins know of it.
constexpr std::size_t HOST_BLOCK_SIZE = 4096;

/// Calls one step with a fresh block; false when an exception left it.
bool runStep(const WorkerOrder& order, Step step, StepFunction entry) {
    alignas(std::max_align_t) std::array<unsigned char, HOST_BLOCK_SIZE> storage{};
    auto* block = new (storage.data()) XCodParamBlock();
    block->version = order.blockVersion;
    block->selector = selectorOf(step);
    block->productCode = order.product;
    block->languageCode = order.language;
    writeEvent(order.eventFd, {{"event", "stepBegins"}, {"step", step}, {"flags", std::uint32_t{block->resultFlags}}});
    const CallResult result = callStep(entry, block);
    writeEvent(order.eventFd, {{"event", "stepEnds"},
                               {"step", step},
                               {"flags", std::uint32_t{block->resultFlags}},
                               {"type", result.exceptionType},
                               {"message", result.exceptionMessage}});
    return !result.threw;
}

/// Whether a step sets the Finder flags of the object at `path`, the port's way to write it.
bool isFinderObject(const std::string& path) {
    return std::any_of(std::begin(FINDER_OBJECTS), std::end(FINDER_OBJECTS), [&](const char* object) {
        std::error_code ignored;
        return path == object || path == std::filesystem::canonical(object, ignored);
    });
}

void runSteps(const WorkerOrder& order) {
    const BundleSession session(order.bundle);
    const StepEntries entries(session, order.direct);
    for (const Step step : order.steps) {
        if (!runStep(order, step, entries.entry(step))) {
            break;
        }
    }
    for (const cv::StoreFailure& failure : cv::storeFailures()) {
        if (failure.wasToBeStored || isFinderObject(failure.what)) {
            writeEvent(order.eventFd, {{"event", "notStored"}, {"what", failure.what}, {"reason", failure.reason}});
        }
    }
}

void runChecks(const WorkerOrder& order) {
    checkBundle(order.bundle, [&](const Finding& finding) {
        writeEvent(order.eventFd, {{"event", "finding"},
                                   {"subject", finding.subject},
                                   {"ok", finding.ok},
                                   {"text", finding.text},
                                   {"status", finding.status}});
    });
}

/// Does what `order` says and tells how that went.
void work(const WorkerOrder& order) {
    fcntl(order.eventFd, F_SETFD, FD_CLOEXEC);
    writeEvent(order.eventFd, {{"event", "started"}});
    json end{{"event", "finished"}};
    try {
        if (order.steps.empty()) {
            runChecks(order);
        } else {
            runSteps(order);
        }
    } catch (const Failure& failure) {
        end = {{"event", "failure"}, {"status", failure.status()}, {"text", failure.what()}};
    } catch (const std::exception& fault) {
        end = {{"event", "failure"}, {"status", ExitStatus::BundleUnusable}, {"text", fault.what()}};
    }
    writeEvent(order.eventFd, end);
}

}  // namespace

int main(int argc, char** argv) {
    std::signal(SIGPIPE, SIG_IGN);
    const std::optional<WorkerOrder> order = parseOrder(argc, argv);
    if (!order) {
        std::fputs("installer-host-worker: only installer-host runs this program\n", stderr);
        return static_cast<int>(ExitStatus::Usage);
    }
    work(*order);
    return 0;
}
