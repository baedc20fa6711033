#pragma once

namespace host::page {

// The files beside this one that are part of every page.

extern const char* const STYLE;
extern const char* const SCRIPT;

/// How a content security policy names exactly these contents.
extern const char* const STYLE_HASH;
extern const char* const SCRIPT_HASH;

}  // namespace host::page
