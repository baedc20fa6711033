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

#include "installer-host/bundle/BundleSession.h"
#include "installer-host/bundle/Checks.h"
#include "installer-host/look/FinderObject.h"
#include "installer-host/run/WorkerProtocol.h"
#include "platform/Descriptor.h"
#include "platform/StoreFailures.h"

namespace {

using namespace host;
using nlohmann::json;

/// Tells the host. What cannot be written is lost: the host is gone then, and this process with it.
void writeEvent(const WorkerOrder& order, const json& event) {
    const std::string text = event.dump(-1, ' ', false, json::error_handler_t::replace) + "\n";
    static_cast<void>(cv::writeAll(order.eventFd, text));
}

XCodSelector selectorOf(Step step) {
    return step == Step::PreInstall ? XCodSelectorPreInstall : XCodSelectorPostInstall;
}

/// A host's parameter block is longer than what plug-ins know of it.
constexpr std::size_t HOST_BLOCK_SIZE = 4096;

/// Calls one step with a fresh block; false when an exception left it.
bool runStep(const WorkerOrder& order, Step step, StepFunction entry) {
    alignas(std::max_align_t) std::array<unsigned char, HOST_BLOCK_SIZE> storage{};
    auto* block = new (storage.data()) XCodParamBlock();
    block->version = order.installation.blockVersion;
    block->selector = selectorOf(step);
    block->productCode = order.installation.product;
    block->languageCode = order.installation.language;
    writeEvent(order, {{"event", EVENT_STEP_BEGINS}, {"step", step}, {"flags", std::uint32_t{block->resultFlags}}});
    const CallResult result = callStep(entry, block);
    writeEvent(order, {{"event", EVENT_STEP_ENDS},
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
    const StepEntries entries(session, order.installation.direct);
    for (const Step step : order.installation.steps) {
        if (!runStep(order, step, entries.entry(step))) {
            break;
        }
    }
    for (const cv::StoreFailure& failure : cv::storeFailures()) {
        if (failure.wasToBeStored || isFinderObject(failure.what)) {
            writeEvent(order, {{"event", EVENT_NOT_STORED}, {"what", failure.what}, {"reason", failure.reason}});
        }
    }
}

void runChecks(const WorkerOrder& order) {
    checkBundle(order.bundle, [&](const Finding& finding) {
        writeEvent(order, {{"event", EVENT_FINDING},
                           {"subject", finding.subject},
                           {"ok", finding.ok},
                           {"text", finding.text},
                           {"status", finding.status}});
    });
}

/// Does what `order` says and tells how that went.
void work(const WorkerOrder& order) {
    fcntl(order.eventFd, F_SETFD, FD_CLOEXEC);
    writeEvent(order, {{"event", EVENT_STARTED}});
    json end{{"event", EVENT_FINISHED}};
    try {
        if (order.installation.steps.empty()) {
            runChecks(order);
        } else {
            runSteps(order);
        }
    } catch (const Failure& failure) {
        end = {{"event", EVENT_FAILURE}, {"status", failure.status()}, {"text", failure.what()}};
    } catch (const std::exception& fault) {
        end = {{"event", EVENT_FAILURE}, {"status", ExitStatus::BundleUnusable}, {"text", fault.what()}};
    }
    writeEvent(order, end);
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
