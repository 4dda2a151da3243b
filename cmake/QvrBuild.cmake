# What every target of the project is built with, and the functions that declare our targets.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_OBJCXX_STANDARD 20)
set(CMAKE_OBJCXX_STANDARD_REQUIRED ON)
set(CMAKE_OBJCXX_EXTENSIONS OFF)
set(CMAKE_C_STANDARD 11)
set(CMAKE_C_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_OBJCXX_VISIBILITY_PRESET hidden)
set(CMAKE_C_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/lib)
set(CMAKE_ARCHIVE_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/lib)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)

if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
    set(CMAKE_BUILD_TYPE Release CACHE STRING "Build type" FORCE)
endif()

# Programs and the plug-in find their libraries beside them, in the build tree and installed.
if(APPLE)
    set(CMAKE_INSTALL_RPATH "@loader_path" "@loader_path/../${CMAKE_INSTALL_LIBDIR}")
else()
    set(CMAKE_INSTALL_RPATH "$ORIGIN" "$ORIGIN/../${CMAKE_INSTALL_LIBDIR}")
endif()

add_library(qvr_flags INTERFACE)
target_compile_options(qvr_flags INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion
    $<$<COMPILE_LANGUAGE:CXX>:-Wnon-virtual-dtor -Woverloaded-virtual>)
# g++ 12 at -O3 warns of overlapping copies inside its own std::string operator+ (GCC bug 105651).
target_compile_options(qvr_flags INTERFACE $<$<COMPILE_LANG_AND_ID:CXX,GNU>:-Wno-restrict>)
# Processors with fused multiply-add must not round other than those without.
target_compile_options(qvr_flags INTERFACE -ffp-contract=off)
if(APPLE)
    # A function that the oldest system served is without would be missed only there.
    target_compile_options(qvr_flags INTERFACE -Werror=unguarded-availability-new)
endif()
if(QVR_WERROR)
    target_compile_options(qvr_flags INTERFACE -Werror)
endif()

if(QVR_COVERAGE)
    add_link_options(--coverage)
endif()
if(QVR_SANITIZE)
    add_compile_options(-fsanitize=${QVR_SANITIZE} -fno-sanitize-recover=all
        -fno-omit-frame-pointer)
    add_link_options(-fsanitize=${QVR_SANITIZE})
endif()

# A host loads the plug-in into its own process and a server listens on a network, so whoever finds
# a mistake of ours should get no further than ending the program: overrun buffers are noticed,
# addresses cannot be guessed, and neither the stack runs nor can the linker's tables be written.
# The sanitizers see more than these checks do and would be told less beside them.
include(CheckPIESupported)
check_pie_supported(LANGUAGES C CXX)
if(NOT QVR_SANITIZE)
    add_compile_options(-fstack-protector-strong)
    # Only optimised code has checked copies, and some systems' compilers ask for them already.
    foreach(option -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2)
        add_compile_options($<$<CONFIG:Release,RelWithDebInfo,MinSizeRel>:${option}>)
    endforeach()
    if(NOT APPLE)
        add_link_options(-Wl,-z,relro -Wl,-z,now -Wl,-z,noexecstack)
    endif()
endif()

# qvr_add_subsystem(NAME SOURCES... [DEPENDS SUBSYSTEM...])
# One subsystem of the plug-in, as objects. DEPENDS names the subsystems whose headers it uses;
# the arrows are checked by tests/architecture.
function(qvr_add_subsystem name)
    cmake_parse_arguments(ARG "" "" "SOURCES;DEPENDS" ${ARGN})
    add_library(qvr_${name} OBJECT ${ARG_SOURCES})
    target_include_directories(qvr_${name} PUBLIC
        $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/NativePluginSource>
        $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/NativePluginSource/include>)
    target_link_libraries(qvr_${name}
        PUBLIC json11::json11 ${ARG_DEPENDS}
        PRIVATE qvr_flags)
endfunction()

# qvr_add_program(NAME SOURCES... [LIBRARIES LIBRARY...])
# A program that is installed with the library.
function(qvr_add_program name)
    cmake_parse_arguments(ARG "" "" "SOURCES;LIBRARIES" ${ARGN})
    add_executable(${name} ${ARG_SOURCES})
    target_link_libraries(${name} PRIVATE ${ARG_LIBRARIES} qvr_flags)
    target_compile_definitions(${name} PRIVATE QVR_VERSION="${PROJECT_VERSION}")
    install(TARGETS ${name} RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
endfunction()
