// Loads the module of the picture libraries from where the program looks for its own libraries, which
// the build and `cmake --install` have set for the folders that it lies in.
#include <dlfcn.h>
#include <link.h>
#include <unistd.h>

#include <memory>

#include "pictures/files/library.h"
#include "pictures/picture_error.h"

namespace {

std::vector<std::string> searchedFolders() {
    // Not left to dlopen by the bare name: what a sanitizer puts before it is another library, with
    // folders of its own.
    void* const program = dlopen(nullptr, RTLD_LAZY);
    Dl_serinfo size{};
    if (dlinfo(program, RTLD_DI_SERINFOSIZE, &size) != 0) {
        return {};
    }
    const auto room =
        std::make_unique<std::max_align_t[]>(size.dls_size / sizeof(std::max_align_t) + 1);
    auto* const list = reinterpret_cast<Dl_serinfo*>(room.get());
    std::vector<std::string> folders;
    if (dlinfo(program, RTLD_DI_SERINFOSIZE, list) == 0 &&
        dlinfo(program, RTLD_DI_SERINFO, list) == 0) {
        for (unsigned int i = 0; i < list->dls_cnt; ++i) {
            folders.emplace_back(list->dls_serpath[i].dls_name);
        }
    }
    return folders;
}

[[noreturn]] void fail(const std::string& why) {
    throw PictureError("pictures cannot be opened: " + why + "; install the program again");
}

void* loadedModule() {
    for (const std::string& folder : searchedFolders()) {
        const std::string file = folder + "/" SEGCORE_PICTURES_MODULE;
        if (access(file.c_str(), R_OK) != 0) {
            continue;
        }
        void* const module = dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
        if (module == nullptr) {
            fail(dlerror());
        }
        return module;
    }
    fail(SEGCORE_PICTURES_MODULE " is missing");
}

const PictureLibrary* loadedLibrary() {
    void* const module = loadedModule();
    auto* const entry =
        reinterpret_cast<decltype(&segcore_picture_library)>(dlsym(module, kPictureLibraryEntry));
    if (entry == nullptr) {
        fail(SEGCORE_PICTURES_MODULE " is of another version");
    }
    return entry();
}

}  // namespace

const PictureLibrary& pictureLibrary() {
    static const PictureLibrary* const library = loadedLibrary();
    return *library;
}
