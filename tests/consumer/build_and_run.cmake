# Installs the build into a folder of its own, builds the project against it, runs the result.
function(run)
    execute_process(COMMAND ${ARGV} COMMAND_ECHO STDOUT RESULT_VARIABLE result)
    if(NOT result EQUAL 0)
        message(FATAL_ERROR "failed: ${ARGV}")
    endif()
endfunction()

file(REMOVE_RECURSE ${WORK})
file(MAKE_DIRECTORY ${WORK})
set(prefix ${WORK}/prefix)
set(flags "")
if(SANITIZE)
    set(flags -fsanitize=${SANITIZE})
endif()
set(ENV{QVR_CAMERA} simulated:pace=off)
set(ENV{QVR_VOLUMES} ${EXAMPLES})

run(${CMAKE_COMMAND} --install ${BUILD} --prefix ${prefix})
run(${CMAKE_COMMAND} -G Ninja -S ${PROJECT} -B ${WORK}/build -DCMAKE_PREFIX_PATH=${prefix}
    -DCMAKE_CXX_COMPILER=${CXX} "-DCMAKE_CXX_FLAGS=${flags}" -DCMAKE_BUILD_TYPE=Debug)
run(${CMAKE_COMMAND} --build ${WORK}/build)
run(${WORK}/build/small_server)

# The same program by pkg-config alone, found wherever the prefix was moved to.
file(RENAME ${prefix} ${WORK}/moved)
file(GLOB pc ${WORK}/moved/lib*/pkgconfig ${WORK}/moved/lib/*/pkgconfig)
set(ENV{PKG_CONFIG_PATH} ${pc})
execute_process(COMMAND pkg-config --cflags --libs qvr-touch
    OUTPUT_VARIABLE arguments OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
separate_arguments(arguments)
execute_process(COMMAND pkg-config --variable=libdir qvr-touch
    OUTPUT_VARIABLE libdir OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
run(${CXX} -std=c++20 ${flags} ${PROJECT}/small_server.cpp -o ${WORK}/by_pkg_config ${arguments}
    -Wl,-rpath,${libdir})
run(${WORK}/by_pkg_config)

# A moved installation's programs find their libraries beside them.
run(${WORK}/moved/bin/qvr-server --version)
run(${WORK}/moved/bin/qvr-host --version)
if(EXISTS ${WORK}/moved/bin/qvr-replay)
    run(${WORK}/moved/bin/qvr-replay --version)
    run(${WORK}/moved/bin/qvr-camera --version)
    file(READ ${WORK}/moved/share/qvr-touch/udev/60-qvr-camera.rules rules)
endif()
