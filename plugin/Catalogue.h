#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include <cstdint>

/// What the plug-in knows of a product.
struct Product {
    std::int32_t code;   ///< the number by which the installer names it
    CFStringRef domain;  ///< its preference domain, immortal
    const char* name;    ///< its name in the updater's keys, UTF-8
};

/// The product with exactly this code, or null.
const Product* findProduct(std::int32_t code);

/// The preference domain of the vendor's updater, immortal.
CFStringRef updaterDomain();

/// The two-letter code (ISO 639-1) that a product stores for a classic Mac OS language code, immortal. Every language
/// that no product is translated into gives "en".
CFStringRef languageText(std::int32_t languageCode);
