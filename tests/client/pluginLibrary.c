#include "client/pluginLibrary.h"

#include <dlfcn.h>
#include <stddef.h>
#include <stdio.h>

void* loadPlugin(const char* file) {
    void* library = dlopen(file, RTLD_NOW | RTLD_LOCAL);
    if (library == NULL) {
        fprintf(stderr, "%s\n", dlerror());
    }
    return library;
}

void* findInPlugin(void* library, const char* name) {
    return dlsym(library, name);
}

void unloadPlugin(void* library) {
    dlclose(library);
}
