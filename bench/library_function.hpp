// Functions of the loaded front-end library that no array holds (selectors, paired-name
// renderings): found by name in its symbol table, relative to where it was loaded.
#pragma once

#include <dlfcn.h>
#include <elf.h>

#include <fstream>
#include <iterator>
#include <map>
#include <string>
#include <vector>

#include "zan/engine.hpp"

inline void* library_function(const zan::engine::Engine& engine, const std::string& name) {
    static const std::map<std::string, uint64_t> symbols = [&engine] {
        std::map<std::string, uint64_t> out;
        std::ifstream in(engine.library_path(), std::ios::binary);
        const std::vector<char> file((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
        const auto* eh = reinterpret_cast<const Elf64_Ehdr*>(file.data());
        const auto* sh = reinterpret_cast<const Elf64_Shdr*>(file.data() + eh->e_shoff);
        for (int i = 0; i < eh->e_shnum; ++i) {
            if (sh[i].sh_type != SHT_SYMTAB) continue;
            const char* names = file.data() + sh[sh[i].sh_link].sh_offset;
            const auto* sym = reinterpret_cast<const Elf64_Sym*>(file.data() + sh[i].sh_offset);
            for (size_t k = 0; k < sh[i].sh_size / sizeof(Elf64_Sym); ++k)
                if (sym[k].st_shndx != SHN_UNDEF && sym[k].st_value != 0) out[names + sym[k].st_name] = sym[k].st_value;
        }
        return out;
    }();
    Dl_info info{};
    if (dladdr(reinterpret_cast<const void*>(engine.dispatcher()), &info) == 0) return nullptr;
    auto it = symbols.find(name);
    return it == symbols.end() ? nullptr : static_cast<char*>(info.dli_fbase) + it->second;
}

