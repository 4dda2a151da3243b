// A bundle for macOS on 64-bit x86, loaded into this Linux process and run in it.
//
//     loader::Bundle plugin("qvr_touch.bundle/Contents/MacOS/qvr_touch");
//     const auto update = plugin.function<int()>("update");
//
// It does what the loader of macOS does with such a file: maps the segments, moves the pointers,
// binds what is imported, makes the unwind tables known and runs the initialisers. What is imported
// from libSystem is answered by the C library here, translated where constants, structures or
// semantics differ (system/); messages to Objective-C objects go to GNUstep (objectiveC).
//
// What this shows: the file is well formed, and the machine code that is shipped, made by another
// compiler with another C++ library, runs and gives the results that it should.
//
// What it does not show: that macOS takes the file (its signature, minimum version and library
// versions are not looked at), nor that the calls of macOS behave as those here do once translated.
// The bundle brings its C++ library, but texts of numbers come from this system's printf, and sines
// from its mathematics: macOS prints a negative NaN without its sign, and may round otherwise.
//
// A translation covers what our bundle uses; an import that it lacks is an error by name. Arm code
// is not run. Pointers must be described by LC_DYLD_INFO_ONLY, as for macOS before 12, and frames
// by the compact unwind format alone. Everything is bound at once. Exceptions are unwound within
// the bundle, not through it.
//
// One bundle a process, and it stays until the process ends, as bundles with thread locals do on
// macOS.
#pragma once

#include <cstdint>
#include <map>
#include <stdexcept>
#include <string>

namespace loader {

class Bundle {
  public:
    // Throws std::runtime_error with what the file lacks or asks too much.
    explicit Bundle(const std::string& file);

    // The address of an exported symbol, by its name in C or as the compiler spells it, without the
    // underscore that Mach-O puts in front. Throws when there is none.
    void* find(const std::string& name) const;

    template <typename Signature>
    Signature* function(const std::string& name) const {
        return reinterpret_cast<Signature*>(find(name));
    }

    const std::map<std::string, std::uintptr_t>& exports() const { return exports_; }

  private:
    std::map<std::string, std::uintptr_t> exports_; // by name in Mach-O spelling
};

} // namespace loader
