#pragma once

#include <cstdint>
#include <vector>

#include "plugin/ParamBlock.h"

namespace host {

/// The steps of an installation, in the order they run in.
enum class Step { PreInstall, PostInstall };

/// The step's name in options and reports, "pre" or "post".
inline const char* shortName(Step step) {
    return step == Step::PreInstall ? "pre" : "post";
}

/// "pre-install step" or "post-install step".
inline const char* longName(Step step) {
    return step == Step::PreInstall ? "pre-install step" : "post-install step";
}

/// What is installed and how the steps are called: what the command line says and the worker needs to know.
struct Installation {
    std::vector<Step> steps{Step::PreInstall, Step::PostInstall};  ///< to be run, in this order
    std::int32_t product = 0;
    std::int32_t language = 0;  ///< a classic Mac OS language code
    std::uint16_t blockVersion = XCOD_BLOCK_VERSION;
    bool direct = false;  ///< call the exported functions themselves, not through the interface table
};

}  // namespace host
