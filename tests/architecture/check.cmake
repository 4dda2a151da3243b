# cmake -DSOURCES=<NativePluginSource> -P check.cmake
#
# Fails when an include points against the arrows between subsystems, or when code is conditional
# on the platform outside a file that is named for it.

cmake_minimum_required(VERSION 3.22)

set(uses_foundation foundation)
set(uses_serverClient foundation serverClient)
set(uses_calibration foundation calibration)
set(uses_detection foundation detection)
set(uses_client foundation serverClient calibration detection client)
set(uses_camera foundation serverClient calibration detection camera)
set(uses_check foundation serverClient calibration detection client camera check)
set(subsystems foundation serverClient calibration detection client camera check)

# What only some systems define. The two socket names stand for one and the same difference.
set(platform_macros
    "__APPLE__|__MACH__|TARGET_OS_|__linux|__gnu_linux__|__unix|_WIN32|_WIN64|_MSC_VER|__FreeBSD__|__ANDROID__")
set(socket_macros "SO_NOSIGPIPE|MSG_NOSIGNAL")

set(problems "")
function(report file line)
    set(problems "${problems}\n  ${file}: ${line}" PARENT_SCOPE)
endfunction()

file(GLOB_RECURSE files RELATIVE ${SOURCES}
    ${SOURCES}/*.h ${SOURCES}/*.hpp ${SOURCES}/*.c ${SOURCES}/*.cpp ${SOURCES}/*.mm)
if(files STREQUAL "")
    message(FATAL_ERROR "No sources under ${SOURCES}")
endif()

foreach(file IN LISTS files)
    string(REGEX REPLACE "^include/" "" place ${file})
    string(REGEX MATCH "^[^/]+" subsystem ${place})
    if(NOT subsystem IN_LIST subsystems)
        report(${file} "belongs to no subsystem")
        continue()
    endif()

    file(STRINGS ${SOURCES}/${file} lines REGEX "^[ \t]*#")
    foreach(line IN LISTS lines)
        if(line MATCHES "#[ \t]*include[ \t]*[<\"](include/)?([A-Za-z]+)/([^>\"]+)[>\"]")
            set(target ${CMAKE_MATCH_2})
            set(header ${CMAKE_MATCH_2}/${CMAKE_MATCH_3})
            # Tracking fills the frame's touch records, and asks the camera manager for its
            # smoothing and its calibration.
            set(excepted FALSE)
            if(subsystem STREQUAL "detection" AND header STREQUAL "serverClient/frameProtocol.h")
                set(excepted TRUE)
            elseif(place MATCHES "^detection/[^/]+\\.cpp$"
                    AND header STREQUAL "camera/cameraManager.h")
                set(excepted TRUE)
            endif()
            if(target IN_LIST subsystems AND NOT target IN_LIST uses_${subsystem} AND NOT excepted)
                report(${file} "${subsystem} must not include ${header}")
            endif()
        elseif(line MATCHES "#[ \t]*include[ \t]*\"([^/\"]+)\"")
            report(${file} "include ${CMAKE_MATCH_1} by its subsystem's folder")
        elseif(line MATCHES "#[ \t]*include[ \t]*\"(\\.[^\"]*)\"")
            report(${file} "include ${CMAKE_MATCH_1} by its subsystem's folder")
        elseif(line MATCHES "#[ \t]*(if|ifdef|ifndef|elif)[ \t(!]")
            if(line MATCHES "${platform_macros}" AND NOT file MATCHES "_(linux|macos)\\.[a-z]+$")
                report(${file} "conditional on the platform: ${line}")
            elseif(line MATCHES "${socket_macros}" AND NOT file MATCHES "/TcpClientWin\\.(h|cpp)$")
                report(${file} "conditional on the platform: ${line}")
            endif()
        endif()
    endforeach()
endforeach()

if(NOT problems STREQUAL "")
    message(FATAL_ERROR "The sources break the architecture:${problems}")
endif()
list(LENGTH files count)
message(STATUS "${count} sources keep to the arrows")
