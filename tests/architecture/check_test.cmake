# cmake -DFOLDER=<scratch> -P check_test.cmake
#
# Lets the architecture check loose on small trees of which each breaks one rule, or none.

cmake_minimum_required(VERSION 3.22)

# expect(RESULT FILE TEXT): `RESULT` is "passes", or what the failure must say, for a tree of one
# good file and FILE with this text.
function(expect result file text)
    file(REMOVE_RECURSE ${FOLDER})
    file(WRITE ${FOLDER}/foundation/good.h "#pragma once\n#include \"foundation/other.h\"\n")
    file(WRITE ${FOLDER}/${file} "${text}\n")
    execute_process(
        COMMAND ${CMAKE_COMMAND} -DSOURCES=${FOLDER} -P ${CMAKE_CURRENT_LIST_DIR}/check.cmake
        RESULT_VARIABLE code OUTPUT_VARIABLE output ERROR_VARIABLE output)
    string(REGEX REPLACE "[ \n]+" " " output "${output}")
    if(result STREQUAL "passes")
        if(NOT code EQUAL 0)
            message(SEND_ERROR "${file} with '${text}' should pass:\n${output}")
        endif()
    elseif(code EQUAL 0)
        message(SEND_ERROR "${file} with '${text}' passes")
    else()
        string(FIND "${output}" "${file}: ${result}" position)
        if(position EQUAL -1)
            message(SEND_ERROR "${file} with '${text}' should say '${result}':\n${output}")
        endif()
    endif()
endfunction()

# Along the arrows.
expect("passes" calibration/a.cpp "#include \"foundation/utils.h\"")
expect("passes" include/serverClient/a.h "#include <foundation/qvrApi.h>")
expect("passes" client/a.h "#include \"serverClient/NetworkClient.h\"")
expect("passes" client/a.cpp "#include \"calibration/calibrationManager.h\"")
expect("passes" camera/a.cpp "#include \"detection/blobManager.h\"")
expect("passes" camera/a.cpp "#include <librealsense/rs.h>")
expect("passes" detection/a.cpp "#include \"camera/cameraManager.h\"")
expect("passes" detection/a.h "#include <serverClient/frameProtocol.h>")
expect("passes" check/a.cpp "#include \"client/ClientSettings.h\"")

# Against them.
expect("foundation must not include calibration/b.h" foundation/a.cpp
    "#include \"calibration/b.h\"")
expect("foundation must not include serverClient/b.h" foundation/a.h
    "  # include <serverClient/b.h>")
expect("serverClient must not include client/b.h" include/serverClient/a.cpp
    "#include \"client/b.h\"")
expect("serverClient must not include detection/b.h" include/serverClient/a.cpp
    "#include \"detection/b.h\"")
expect("calibration must not include detection/b.h" calibration/a.cpp
    "#include \"detection/b.h\"")
expect("detection must not include calibration/b.h" detection/a.cpp
    "#include \"calibration/b.h\"")
expect("detection must not include camera/cameraManager.h" detection/a.h
    "#include \"camera/cameraManager.h\"")
expect("detection must not include camera/hardwareCamera.h" detection/a.cpp
    "#include \"camera/hardwareCamera.h\"")
expect("detection must not include serverClient/NetworkClient.h" detection/a.cpp
    "#include \"serverClient/NetworkClient.h\"")
expect("calibration must not include serverClient/frameProtocol.h" calibration/a.cpp
    "#include \"serverClient/frameProtocol.h\"")
expect("client must not include camera/b.h" client/a.cpp "#include \"camera/b.h\"")
expect("camera must not include check/b.h" camera/a.cpp "#include \"check/b.h\"")
expect("camera must not include client/b.h" camera/a.cpp "#include \"client/b.h\"")
expect("include b.h by its subsystem's folder" camera/a.cpp "#include \"b.h\"")
expect("include ../client/b.h by its subsystem's folder" camera/a.cpp "#include \"../client/b.h\"")
expect("belongs to no subsystem" misc/a.cpp "")

# Platform conditionals.
expect("passes" foundation/volumes_linux.cpp "#ifdef __linux__")
expect("passes" foundation/volumes_macos.mm "#if defined(__APPLE__)")
expect("passes" include/serverClient/TcpClientWin.cpp "#ifdef SO_NOSIGPIPE")
expect("passes" client/a.h "#ifdef __cplusplus")
expect("conditional on the platform: #ifdef __linux__" foundation/a.cpp "#ifdef __linux__")
expect("conditional on the platform: #if defined(__APPLE__)" camera/a.cpp "#if defined(__APPLE__)")
expect("conditional on the platform: #elif defined _WIN32" client/a.cpp "#elif defined _WIN32")
expect("conditional on the platform: #ifdef SO_NOSIGPIPE" client/a.cpp "#ifdef SO_NOSIGPIPE")

file(REMOVE_RECURSE ${FOLDER})
