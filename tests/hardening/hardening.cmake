# cmake -DREADELF=<readelf> -DBINARY=<file> -DKIND=<program|library> -P hardening.cmake
#
# Fails when the built file lacks one of the protections that it is shipped with.

cmake_minimum_required(VERSION 3.22)

execute_process(COMMAND ${READELF} --wide --file-header --segments --dynamic --dyn-syms ${BINARY}
    OUTPUT_VARIABLE contents COMMAND_ERROR_IS_FATAL ANY)

set(missing "")
function(expect pattern protection)
    if(NOT contents MATCHES "${pattern}")
        set(missing "${missing}\n  ${protection}" PARENT_SCOPE)
    endif()
endfunction()

expect("Type: +DYN" "position-independent code")
if(KIND STREQUAL "program")
    expect("FLAGS_1[^\n]* PIE" "a load address that cannot be guessed")
endif()
expect("GNU_RELRO" "linker tables that become read-only")
expect("FLAGS_1[^\n]* NOW" "symbols bound at load, so that all those tables do")
expect("GNU_STACK[^\n]* RW " "a stack that does not run")
expect(" __stack_chk_fail[@ \n]" "the stack protector")
expect(" __[a-z]*(cpy|move|set|cat|printf|read|recv|poll|gets|longjmp|fdelt)[a-z]*_chk[@ \n]"
    "checked copies")

if(NOT missing STREQUAL "")
    message(FATAL_ERROR "${BINARY} lacks:${missing}")
endif()
message(STATUS "${BINARY} has every protection")
