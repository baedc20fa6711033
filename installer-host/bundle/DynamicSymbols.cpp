#include "installer-host/bundle/DynamicSymbols.h"

#include <dlfcn.h>
#include <elf.h>
#include <link.h>

#include <algorithm>
#include <cstdint>

namespace host {

namespace {

using Symbol = ElfW(Sym);

/// The parts of an image's dynamic section that lead to its symbols.
struct DynamicSection {
    const Symbol* symbols = nullptr;
    const char* names = nullptr;
    const std::uint32_t* hashTable = nullptr;

    explicit DynamicSection(const ElfW(Dyn) * entry) {
        for (; entry != nullptr && entry->d_tag != DT_NULL; ++entry) {
            switch (entry->d_tag) {
                case DT_SYMTAB:
                    symbols = reinterpret_cast<const Symbol*>(entry->d_un.d_ptr);
                    break;
                case DT_STRTAB:
                    names = reinterpret_cast<const char*>(entry->d_un.d_ptr);
                    break;
                case DT_GNU_HASH:
                    hashTable = reinterpret_cast<const std::uint32_t*>(entry->d_un.d_ptr);
                    break;
                default:
                    break;
            }
        }
    }
};

/// Calls `visit` with the index of each symbol in the GNU hash table: all those that other images can bind to.
template <typename Visit>
void forEachHashed(const std::uint32_t* table, Visit visit) {
    const std::uint32_t bucketCount = table[0];
    const std::uint32_t firstSymbol = table[1];
    const std::uint32_t filterWords = table[2];
    constexpr std::uint32_t HEADER_WORDS = 4;
    const std::uint32_t* buckets = table + HEADER_WORDS + filterWords * (sizeof(ElfW(Addr)) / sizeof(std::uint32_t));
    const std::uint32_t* chains = buckets + bucketCount;
    for (std::uint32_t bucket = 0; bucket < bucketCount; ++bucket) {
        for (std::uint32_t index = buckets[bucket]; index >= firstSymbol; ++index) {
            visit(index);
            if ((chains[index - firstSymbol] & 1U) != 0) {
                break;
            }
        }
    }
}

}  // namespace

std::vector<std::string> exportedSymbols(const void* address) {
    std::vector<std::string> exported;
    Dl_info info{};
    void* map = nullptr;
    if (dladdr1(address, &info, &map, RTLD_DL_LINKMAP) == 0) {
        return exported;
    }
    const DynamicSection section(static_cast<const link_map*>(map)->l_ld);
    if (section.symbols == nullptr || section.names == nullptr || section.hashTable == nullptr) {
        return exported;
    }
    forEachHashed(section.hashTable, [&](std::uint32_t index) {
        const Symbol& symbol = section.symbols[index];
        if (symbol.st_shndx != SHN_UNDEF) {
            exported.emplace_back(section.names + symbol.st_name);
        }
    });
    std::sort(exported.begin(), exported.end());
    return exported;
}

}  // namespace host
