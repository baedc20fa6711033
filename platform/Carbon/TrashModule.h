#pragma once

// The module CvTrash.so, the part of the Finder that needs GIO. It is loaded when the first item goes to the Trash, so
// that no other program carries GIO and its dependencies.

#include <Carbon/Files.h>

CF_EXTERN_C_BEGIN

/// Moves `item` to the Trash as AESend promises, and waits for that at most `timeoutMilliseconds` (negative: for ever).
/// HOME must be an absolute path: without one GIO would take the home folder of the user's account. Never throws.
/// Errors: those of AESend about the item and its volume; errAETimeout, after which a move that has not begun is not
/// made any more; memFullErr.
CF_EXPORT OSErr CvMoveToTrash(const FSRef* item, SInt64 timeoutMilliseconds);

CF_EXTERN_C_END
