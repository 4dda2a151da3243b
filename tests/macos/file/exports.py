"""Names of exported symbols, made comparable across systems."""

import collections
import subprocess


def plain_names(mangled, demangler):
    """How often each declaration is exported. The two C++ libraries have their own inner namespaces,
    mark returned strings in their own way, and count nanoseconds in `long` or `long long`, which are
    the same width on the systems in question; all else must be equal."""
    output = subprocess.run([demangler], input="\n".join(mangled), capture_output=True, text=True,
                            check=True).stdout
    for theirs, common in (("std::__cxx11::", "std::"), ("std::__1::", "std::"),
                           ("std::chrono::_V2::", "std::chrono::"), ("[abi:cxx11]", ""),
                           ("std::chrono::duration<long long,", "std::chrono::duration<long,")):
        output = output.replace(theirs, common)
    return collections.Counter(output.split("\n"))


def exported(binary, architecture, objdump):
    """The symbols that the dynamic linker of macOS finds in the file, without their underscore."""
    output = subprocess.run(
        [objdump, "--macho", f"--arch={architecture}", "--exports-trie", binary],
        capture_output=True, text=True, check=True).stdout
    names = [line.split()[1] for line in output.splitlines() if line.startswith("0x")]
    if any(not name.startswith("_") for name in names):
        raise ValueError("a symbol without the underscore of Mach-O")
    return [name[1:] for name in names]
