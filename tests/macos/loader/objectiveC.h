// The Objective-C of a bundle, carried out by GNUstep: classes of the same name take its messages.
//
// In the bundle a message names its selector as text, and a class is a symbol. Results in memory
// and blocks are not handed on; our bundle has none.
#pragma once

#include "macos/loader/system/symbols.h"

#include <cstdint>
#include <string>

namespace loader {

// The class that the symbol _OBJC_CLASS_$_NAME stands for; 0 when it is no such symbol, or when
// GNUstep has no such class.
std::uintptr_t classSymbol(const std::string& symbol);

// The functions of the Objective-C runtime.
Symbols objectiveCSymbols();

} // namespace loader
