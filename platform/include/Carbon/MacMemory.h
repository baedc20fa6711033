#pragma once

#include <CoreFoundation/CFBase.h>

CF_EXTERN_C_BEGIN

/// A new block of `byteCount` bytes, not cleared, aligned for any type; null when there is no memory for it or the size
/// is negative. The caller frees it with DisposePtr.
CF_EXPORT Ptr NewPtr(Size byteCount);

/// Frees a block made by NewPtr; a null `p` is ignored.
CF_EXPORT void DisposePtr(Ptr p);

CF_EXTERN_C_END
