# Builds for macOS on Linux, with the tools that ./dev macos fetches. Not for use on a Mac.
#
#   -DQVR_MACOS_ARCHITECTURE=x86_64|arm64   one at a time; x86_64 unless said otherwise

set(CMAKE_SYSTEM_NAME Darwin)
set(QVR_MACOS_ARCHITECTURE x86_64 CACHE STRING "The processors to build for: x86_64 or arm64")
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES QVR_MACOS_ARCHITECTURE)
set(CMAKE_SYSTEM_PROCESSOR ${QVR_MACOS_ARCHITECTURE})
set(QVR_MACOS_MINIMUM 11.0)

get_filename_component(source ${CMAKE_CURRENT_LIST_DIR}/../.. ABSOLUTE)
set(QVR_MACOS_TOOLS ${source}/build/macos-tools)
set(QVR_MACOS_SDK ${CMAKE_CURRENT_LIST_DIR}/sdk)

string(REPLACE arm64 aarch64 processor ${QVR_MACOS_ARCHITECTURE})
foreach(language C CXX OBJCXX)
    set(CMAKE_${language}_COMPILER ${CMAKE_CURRENT_LIST_DIR}/zig c++)
    set(CMAKE_${language}_COMPILER_TARGET ${processor}-macos.${QVR_MACOS_MINIMUM})
    # Told apart without linking anything.
    set(CMAKE_${language}_COMPILER_ID_TEST_FLAGS_FIRST -c)
    # It keeps what it has compiled by itself.
    set(CMAKE_${language}_COMPILER_LAUNCHER "")
    # Nothing in the bundle may tell where it was built.
    set(CMAKE_${language}_FLAGS_INIT "-g0 -ffile-prefix-map=${source}/=")
    # What the C++ library of the oldest system lacks is refused as on a Mac, though ours has it.
    string(APPEND CMAKE_${language}_FLAGS_INIT
        " -U_LIBCPP_HAS_VENDOR_AVAILABILITY_ANNOTATIONS"
        " -D_LIBCPP_HAS_VENDOR_AVAILABILITY_ANNOTATIONS=1")
    set(CMAKE_${language}_FLAGS_DEBUG_INIT "-fno-sanitize=undefined")
endforeach()
set(CMAKE_C_COMPILER ${CMAKE_CURRENT_LIST_DIR}/zig cc)
string(APPEND CMAKE_OBJCXX_FLAGS_INIT " -iframework ${QVR_MACOS_SDK}/System/Library/Frameworks")

# The SDK is no whole one, so CMake must neither look for another nor name this one.
set(CMAKE_OSX_SYSROOT "")
set(CMAKE_OSX_DEPLOYMENT_TARGET "")

foreach(tool AR RANLIB STRIP NM OBJDUMP)
    string(TOLOWER llvm-${tool}-14 program)
    find_program(CMAKE_${tool} ${program} REQUIRED)
endforeach()
find_program(CMAKE_INSTALL_NAME_TOOL llvm-install-name-tool-14 REQUIRED)
find_program(CMAKE_LINKER ld64.lld-19 REQUIRED)
set(CMAKE_USER_MAKE_RULES_OVERRIDE ${CMAKE_CURRENT_LIST_DIR}/linking.cmake)
set(CMAKE_TRY_COMPILE_TARGET_TYPE STATIC_LIBRARY)

# Headers and packages of this system are not macOS's.
set(CMAKE_FIND_ROOT_PATH ${QVR_MACOS_TOOLS}/packages)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
