// What a bundle imports from the system, answered on Linux.
#pragma once

#include <cstdint>
#include <string>
#include <unordered_map>

namespace loader {

using Symbols = std::unordered_map<std::string, std::uintptr_t>; // by name in Mach-O spelling

// 0 when the symbol is not known here.
std::uintptr_t systemSymbol(const std::string& name);

template <typename Entity>
std::uintptr_t addressOf(Entity* entity) {
    return reinterpret_cast<std::uintptr_t>(entity);
}

// The tables, each with what differs in its field.
Symbols errorSymbols();
Symbols fileSymbols();
Symbols localeSymbols();
Symbols processSymbols();
Symbols socketSymbols();

} // namespace loader
