// The program installer-host-worker: carries out its order on a bundle, and reports to the host what happens.

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <iterator>
#include <new>
#include <system_error>
#include <vector>

#include "installer-host/bundle/BundleSession.h"
#include "installer-host/bundle/Checks.h"
#include "installer-host/look/FinderObject.h"
#include "installer-host/run/WorkerProtocol.h"
#include "platform/Descriptor.h"
#include "platform/StoreFailures.h"

namespace {

using namespace host;

/// Sends an event to the host. A failed write has no effect: the host is gone then, and this process ends with it.
void tell(const WorkerOrder& order, const Event& event) {
    static_cast<void>(cv::writeAll(order.eventFd, encode(event)));
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
    tell(order, StepBegins{step, block->resultFlags});
    const CallResult result = callStep(entry, block);
    tell(order, StepEnds{step, block->resultFlags, result.exceptionType, result.exceptionMessage});
    return !result.threw;
}

/// Whether a step sets the Finder flags of the object at `path`, the port's way to write it.
bool isFinderObject(const std::string& path) {
    return std::any_of(std::begin(FINDER_OBJECTS), std::end(FINDER_OBJECTS), [&](const char* object) {
        std::error_code ignored;
        return path == object || path == std::filesystem::canonical(object, ignored);
    });
}

/// Reports all that the steps so far stored and that is not on the disk. After each step: the next one may not end.
void tellFailures(const WorkerOrder& order) {
    std::size_t left = MOST_FAULTS;
    for (const cv::StoreFailure& failure : cv::storeFailures()) {
        if (left > 0 && (failure.wasToBeStored || isFinderObject(failure.what))) {
            --left;
            tell(order, left > 0 ? NotStored{{failure.what, failure.reason}} : NotStored{{"more", "not listed"}});
        }
    }
}

void runSteps(const WorkerOrder& order) {
    const BundleSession session(order.bundle);
    const StepEntries entries(session, order.installation);
    for (const Step step : order.installation.steps) {
        const bool returned = runStep(order, step, entries.entry(step));
        tellFailures(order);
        if (!returned) {
            break;
        }
    }
}

void runChecks(const WorkerOrder& order) {
    checkBundle(order.bundle, [&](const Finding& finding) { tell(order, finding); });
}

/// Waits for the byte that the host sends when it knows this process. No code of the bundle has run until then.
void awaitGo() {
    char go = 0;
    while (read(STDIN_FILENO, &go, 1) < 0 && errno == EINTR) {
    }
}

/// Carries out `order` and reports how that went.
void work(const WorkerOrder& order) {
    fcntl(order.eventFd, F_SETFD, FD_CLOEXEC);
    tell(order, Started{});
    awaitGo();
    try {
        if (order.installation.steps.empty()) {
            runChecks(order);
        } else {
            runSteps(order);
        }
        tell(order, Finished{});
    } catch (const Failure& failure) {
        tell(order, Refused{failure.status(), failure.what()});
    } catch (const std::exception& fault) {
        tell(order, Refused{ExitStatus::BundleUnusable, fault.what()});
    }
}

}  // namespace

int main(int argc, char** argv) {
    std::signal(SIGPIPE, SIG_IGN);
    try {
        const std::optional<WorkerOrder> order = parseOrder(argc, argv);
        if (!order) {
            std::fputs("installer-host-worker: only installer-host runs this program\n", stderr);
            return static_cast<int>(ExitStatus::Usage);
        }
        work(*order);
        return 0;
    } catch (const std::exception& fault) {
        std::fprintf(stderr, "installer-host-worker: %s\n", fault.what());
        return static_cast<int>(ExitStatus::RootNotMade);
    }
}
