# How the macOS build on other systems links: by lld itself, for the compiler brings a linker that
# makes no bundles. The C++ runtime goes in, as the system's own may be older than these headers.
# lld would warn (-w) of each hidden symbol that has a name like those that are exported; what is
# exported in the end is tested.

set(link "<CMAKE_LINKER> -arch ${QVR_MACOS_ARCHITECTURE}")
string(APPEND link " -platform_version macos ${QVR_MACOS_MINIMUM} ${QVR_MACOS_MINIMUM}")
string(APPEND link " -syslibroot ${QVR_MACOS_SDK} -syslibroot ${QVR_MACOS_TOOLS}/sdk")
string(APPEND link " -w -S -adhoc_codesign <LINK_FLAGS> -o <TARGET>")
set(runtime ${QVR_MACOS_TOOLS}/runtime/${QVR_MACOS_ARCHITECTURE})
set(libraries "<LINK_LIBRARIES> ${runtime}/libc++.a ${runtime}/libc++abi.a -lobjc -lSystem")
foreach(language C CXX OBJCXX)
    set(CMAKE_${language}_LINKER_WRAPPER_FLAG "")
    set(CMAKE_${language}_CREATE_SHARED_MODULE "${link} -bundle <OBJECTS> ${libraries}")
    set(CMAKE_${language}_CREATE_SHARED_LIBRARY
        "${link} -dylib <SONAME_FLAG> <TARGET_INSTALLNAME_DIR><TARGET_SONAME> <OBJECTS> ${libraries}")
endforeach()
