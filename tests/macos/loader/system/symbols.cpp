#include "macos/loader/system/symbols.h"

#include "macos/loader/objectiveC.h"

#include <string_view>
#include <unordered_set>

#include <dlfcn.h>

namespace loader {

namespace {

// Functions that are the same in both systems: in name, arguments, results and the numbers in
// them. Those of mathematics may differ in the last bit of their results.
const std::unordered_set<std::string_view> same = {
    // memory and texts
    "aligned_alloc", "free", "malloc", "memchr", "memcmp", "memcpy", "memmove", "memset", "realloc",
    "snprintf", "sscanf", "strcmp", "strlen", "vsnprintf", "wcslen", "wmemchr",
    // streams
    "fclose", "fflush", "fputc", "fread", "fseek", "fseeko", "ftello", "fwrite", "printf", "puts",
    "setbuf", "vfprintf",
    // mathematics
    "ceil", "cos", "exp", "floor", "fmod", "hypot", "lround", "roundf", "sin", "tan", "truncf",
    // the process
    "__cxa_atexit", "abort", "getenv", "pthread_self",
    // exceptions: the unwinder of gcc
    "_Unwind_DeleteException", "_Unwind_GetIP", "_Unwind_GetLanguageSpecificData",
    "_Unwind_GetRegionStart", "_Unwind_RaiseException", "_Unwind_Resume", "_Unwind_SetGR",
    "_Unwind_SetIP"};

Symbols allTranslated() {
    Symbols all;
    for (const Symbols& table : {errorSymbols(), fileSymbols(), localeSymbols(), processSymbols(),
                                 socketSymbols(), objectiveCSymbols()}) {
        all.insert(table.begin(), table.end());
    }
    return all;
}

} // namespace

std::uintptr_t systemSymbol(const std::string& name) {
    static const Symbols translated = allTranslated();
    if (const auto place = translated.find(name); place != translated.end()) {
        return place->second;
    }
    if (!name.starts_with('_') || same.count(std::string_view(name).substr(1)) == 0) {
        return 0;
    }
    return reinterpret_cast<std::uintptr_t>(dlsym(RTLD_DEFAULT, &name[1]));
}

} // namespace loader
