#include <tests/support/replaced_import.h>

#include <gtest/gtest.h>

#include <elf.h>
#include <link.h>
#include <sys/mman.h>
#include <unistd.h>

namespace {

struct Search {
    const std::string &module, &name;
    std::vector<void **> places;
};

// The dynamic section of a module, as far as it tells what is imported where.
struct Imports {
    const ElfW(Sym) *symbols = nullptr;
    const char *names = nullptr;
    const ElfW(Rel) * tables[2] = {}; // of data and of calls
    std::size_t sizes[2] = {};

    explicit Imports(const ElfW(Dyn) * entry) {
        for (; entry->d_tag != DT_NULL; ++entry) {
            const auto address = entry->d_un.d_ptr;
            if (entry->d_tag == DT_SYMTAB) symbols = reinterpret_cast<const ElfW(Sym) *>(address);
            if (entry->d_tag == DT_STRTAB) names = reinterpret_cast<const char *>(address);
            if (entry->d_tag == DT_REL) tables[0] = reinterpret_cast<const ElfW(Rel) *>(address);
            if (entry->d_tag == DT_RELSZ) sizes[0] = entry->d_un.d_val / sizeof(ElfW(Rel));
            if (entry->d_tag == DT_JMPREL) tables[1] = reinterpret_cast<const ElfW(Rel) *>(address);
            if (entry->d_tag == DT_PLTRELSZ) sizes[1] = entry->d_un.d_val / sizeof(ElfW(Rel));
        }
    }

    void Find(Search &search, ElfW(Addr) base) const {
        if (!symbols || !names) return;
        for (int table = 0; table < 2; ++table) {
            for (std::size_t i = 0; i < sizes[table]; ++i) {
                const ElfW(Rel) &place = tables[table][i];
                const auto type = ELF32_R_TYPE(place.r_info);
                if (type != R_386_JMP_SLOT && type != R_386_GLOB_DAT) continue;
                if (search.name != names + symbols[ELF32_R_SYM(place.r_info)].st_name) continue;
                search.places.push_back(reinterpret_cast<void **>(base + place.r_offset));
            }
        }
    }
};

// With or without the version that its file's name may end in.
bool Is_Named(const std::string &path, const std::string &module) {
    const std::string file = path.substr(path.rfind('/') + 1);
    return file == module || file.starts_with(module + ".");
}

int Find_In_Module(dl_phdr_info *module, std::size_t, void *context) {
    auto &search = *static_cast<Search *>(context);
    if (!Is_Named(module->dlpi_name, search.module)) return 0;
    for (int i = 0; i < module->dlpi_phnum; ++i) {
        const ElfW(Phdr) &segment = module->dlpi_phdr[i];
        if (segment.p_type != PT_DYNAMIC) continue;
        Imports(reinterpret_cast<const ElfW(Dyn) *>(module->dlpi_addr + segment.p_vaddr))
            .Find(search, module->dlpi_addr);
    }
    return 1;
}

void Make_Writable(void *place) {
    const auto page_size = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    const auto page = reinterpret_cast<std::size_t>(place) & ~(page_size - 1);
    mprotect(reinterpret_cast<void *>(page), page_size, PROT_READ | PROT_WRITE);
}

} // namespace

ReplacedImport::ReplacedImport(const std::string &module, const std::string &name, void *replacement) {
    Search search{module, name, {}};
    dl_iterate_phdr(Find_In_Module, &search);
    if (search.places.empty()) ADD_FAILURE() << module << " imports no " << name;
    for (void **place : search.places) {
        Make_Writable(place);
        replaced_.emplace_back(place, *place);
        *place = replacement;
    }
}

ReplacedImport::~ReplacedImport() {
    for (const auto &[place, before] : replaced_) *place = before;
}
