#include "display/control/DynamicLoader.h"

#include <dlfcn.h>

namespace tavrel::DynamicLoader {

void* open(const char* path, int mode) {
    return dlopen(path, mode);
}

void* findInProcess(const char* symbol) {
    return dlsym(RTLD_DEFAULT, symbol);
}

void* findInLibrary(void* library, const char* symbol) {
    return dlsym(library, symbol);
}

}  // namespace tavrel::DynamicLoader
