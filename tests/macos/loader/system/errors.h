// The error numbers of macOS. The bundle has an errno of its own, which the translated functions
// set.
#pragma once

#include "macos/loader/system/symbols.h"

#include <cerrno>
#include <cstdint>

namespace loader {

// The number on macOS of one of Linux; EIO for what macOS has no number for.
int errorOfMacos(int linuxError);

// The calling thread's errno, as the bundle sees it.
int& bundleErrno();

// Whatever the function sets errno to, the bundle sees.
template <typename Function>
auto withErrno(Function call) {
    errno = 0;
    const auto result = call();
    if (errno != 0) {
        bundleErrno() = errorOfMacos(errno);
    }
    return result;
}

// The function with its errno translated: what to bind where nothing else differs.
template <auto function, typename Result, typename... Arguments>
std::uintptr_t translatedAs(Result (*)(Arguments...)) {
    Result (*call)(Arguments...) = [](Arguments... arguments) {
        return withErrno([&] { return function(arguments...); });
    };
    return addressOf(call);
}
template <auto function>
std::uintptr_t translated() {
    return translatedAs<function>(function);
}

} // namespace loader
