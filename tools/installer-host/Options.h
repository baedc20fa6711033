#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "plugin/ParamBlock.h"
#include "tools/installer-host/ExitStatus.h"

namespace host {

enum class Command { Run, Check, Show };
enum class Format { Text, Json };

/// The steps of an installation, in the order they run in.
enum class Step { PreInstall, PostInstall };

/// What the command line asks for. The fields that a command does not have keep their defaults.
struct Options {
    Command command = Command::Run;
    std::string bundle;  ///< as given
    std::int32_t product = 0;
    std::int32_t language = 0;  ///< a classic Mac OS language code
    std::vector<Step> steps{Step::PreInstall, Step::PostInstall};
    std::uint16_t blockVersion = XCOD_BLOCK_VERSION;
    bool direct = false;  ///< call PreInstall and PostInstall themselves, not through the interface table
    std::string root;     ///< empty: the machine itself
    bool dryRun = false;
    Format format = Format::Text;
    unsigned timeout = 60;  ///< seconds; 0: none
    bool verbose = false;
};

/// What the command line came to: options to work with, or a text for the user and the end.
struct ParsedOptions {
    bool proceed = false;
    Options options;
    ExitStatus status = ExitStatus::Done;  ///< when there is nothing to do
    std::string text;                      ///< then: for standard output with Done, for standard error otherwise
};

ParsedOptions parseOptions(int argc, const char* const* argv);

/// The step's name in options and reports, "pre" or "post".
inline const char* shortName(Step step) {
    return step == Step::PreInstall ? "pre" : "post";
}

/// "pre-install step" or "post-install step".
inline const char* longName(Step step) {
    return step == Step::PreInstall ? "pre-install step" : "post-install step";
}

}  // namespace host
