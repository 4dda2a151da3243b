#include "client/pluginLibrary.h"

#include "macos/loader/Bundle.h"

#include <cstdio>
#include <exception>

void* loadPlugin(const char* file) {
    try {
        return new loader::Bundle(file);
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "%s\n", failure.what());
        return nullptr;
    }
}

void* findInPlugin(void* library, const char* name) {
    try {
        return static_cast<loader::Bundle*>(library)->find(name);
    } catch (const std::exception&) {
        return nullptr;
    }
}

// Its code stays.
void unloadPlugin(void* library) {
    delete static_cast<loader::Bundle*>(library);
}
