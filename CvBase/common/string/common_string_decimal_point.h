#pragma once

// What the sources of String share; no other file includes this.

/// The user's decimal separator: '.' until it is read from the user's locale, once, when the program's static objects
/// are made. '.' as well for a separator that is not ASCII.
extern char g_chDecimalPoint;
