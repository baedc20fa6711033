#pragma once

#include "plugin/ParamBlock.h"

/// Makes a symbol visible to the host: one of XCOD_EXPORTS.
#define XCOD_EXPORT extern "C" __attribute__((visibility("default")))

/// Registers the product with the vendor's updater, before its files are copied: stores
/// "InstalledProducts/NAME/CurrentVersion" = "1.00" in the updater's machine-wide preferences. An unknown product
/// stores nothing, which is not a failure. Whether storing worked is not checked.
///
/// A block of another version than XCOD_BLOCK_VERSION shows an alert and gets the failure bit. A null block does
/// nothing. Reads `version` and `productCode`. May throw std::bad_alloc.
XCOD_EXPORT void PreInstall(XCodParamBlock* block);

/// Leaves the machine configured for the product, after its files were copied:
///   - the updater's "UpdateInterval" = 2, or 0 when the install-status file says that the user wants no automatic
///   updates;
///   - the updater's "InstallStatus" = what went wrong, when that file is there but could not be read;
///   - the product's "Lang" = the two-letter code of the installation's language;
///   - the custom-icon flag on the vendor's folder, which becomes visible, and the invisible flag on its icon file.
/// An unknown product gets the Finder flags only. What could not be stored is not reported.
///
/// A wrong version and a null block are treated as by PreInstall. Reads `version`, `productCode` and `languageCode`.
/// May throw std::bad_alloc, also for an install-status file of 4 GiB - 1 bytes or more; nothing after that is done
/// then.
XCOD_EXPORT void PostInstall(XCodParamBlock* block);
