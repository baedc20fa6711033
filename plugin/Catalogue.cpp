#include "plugin/Catalogue.h"

const Product* findProduct(std::int32_t code) {
    // The updater and the products expect exactly these domains and names, their irregularities included.
    static const Product PRODUCTS[] = {
        {6300, CFSTR("com.corvane.audioplugins.Beatwell"), "Beatwell"},
        {3100, CFSTR("com.corvane.audioapps.Mender"), "Corvane Mender"},
        {5600, CFSTR("com.corvane.audioapps.Mender2"), "Corvane Mender 2"},
        {3500, CFSTR("com.corvane.audioplugins.Stratos4"), "Stratos4"},
        {5200, CFSTR("com.corvane.audioplugins.Coffer"), "Coffer"},
        {5100, CFSTR("com.corvane.audioplugins.Ambrel"), "Ambrel"},
        {7700, CFSTR("com.corvane.audioplugins.AmbrelLite"), "Ambrel Lite"},
        {5000, CFSTR("com.corvane.clarifier"), "CLR"},
        {4900, CFSTR("com.corvane.audioplugins.Temper"), "Temper"},
    };
    for (const Product& product : PRODUCTS) {
        if (product.code == code) {
            return &product;
        }
    }
    return nullptr;
}

CFStringRef updaterDomain() {
    return CFSTR("com.corvane.updater");
}

// A language that is added here also goes into the help and the manual of installer-host
// (installer-host/options/RunOptions.cpp, docs/installer-host.1) and into the table of
// tests/installer-host/Install_test.cpp.
CFStringRef languageText(std::int32_t languageCode) {
    enum : std::int32_t { langFrench = 1, langGerman = 2, langItalian = 3, langSpanish = 6, langJapanese = 11 };
    switch (languageCode) {
        case langFrench:
            return CFSTR("fr");
        case langGerman:
            return CFSTR("de");
        case langItalian:
            return CFSTR("it");
        case langSpanish:
            return CFSTR("es");
        case langJapanese:
            return CFSTR("ja");
        default:
            return CFSTR("en");
    }
}
