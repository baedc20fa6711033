#pragma once

#include <string>

#include "installer-host/page/Markup.h"
#include "installer-host/report/JsonReport.h"

namespace host::page {

/// What stands at the head of a page.
struct Head {
    std::string kind;     ///< what sort of report it is: "Installation"
    std::string title;    ///< what it is of: "Product 5100, language 1"
    Markup verdict;       ///< what it came to, in a few words
    Markup introduction;  ///< what else stands above the contents
};

/// A whole page, with its style and script: one file that loads nothing. The policy in its head lets a browser load or
/// run nothing else, should there be markup that this program did not make.
std::string wholePage(const Head& head, const Markup& contents, const Json& document);

}  // namespace host::page
