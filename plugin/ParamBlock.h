#pragma once

#include <cstddef>
#include <cstdint>
#include <type_traits>

/// The installer's parameter block: a binary interface with the host, which is the program that loads the plug-in, laid
/// out with 2-byte alignment. The host owns it, with every byte that is not named here and the bytes after its end:
/// never copy, clear or assign it as a whole. Read the 32-bit fields by value, since a reference to one may be
/// misaligned.
///
///     offset   0      2       4            8            12 ... 609   610
///              version selector productCode resultFlags  host's own   languageCode
#pragma pack(push, 2)
struct XCodParamBlock {
    std::uint16_t version;          ///< the block's version; XCOD_BLOCK_VERSION is the one accepted
    std::uint16_t selector;         ///< the step that the host wants, an XCodSelector; other values are ignored
    std::int32_t productCode;       ///< which product is installed; the catalogue knows the codes
    std::uint32_t resultFlags;      ///< read back by the host; XCOD_RESULT_FAILED is only ever added
    unsigned char hostFields[598];  ///< the host's own
    std::int32_t
        languageCode;  ///< the installation's language, a classic Mac OS language code (English is 0, French 1)
};
#pragma pack(pop)

static_assert(std::is_standard_layout_v<XCodParamBlock> && alignof(XCodParamBlock) == 2);
static_assert(offsetof(XCodParamBlock, version) == 0);
static_assert(offsetof(XCodParamBlock, selector) == 2);
static_assert(offsetof(XCodParamBlock, productCode) == 4);
static_assert(offsetof(XCodParamBlock, resultFlags) == 8);
static_assert(offsetof(XCodParamBlock, languageCode) == 610);
static_assert(sizeof(XCodParamBlock) == 614);

/// The one block version that the plug-in accepts.
constexpr std::uint16_t XCOD_BLOCK_VERSION = 1000;

/// The bit of `resultFlags` that says that the call failed.
constexpr std::uint32_t XCOD_RESULT_FAILED = 0x00000001;

/// The steps of an installation, as `selector` names them.
enum XCodSelector : std::uint16_t {
    XCodSelectorPreInstall = 2,   ///< before the product's files are copied
    XCodSelectorPostInstall = 3,  ///< after
};
