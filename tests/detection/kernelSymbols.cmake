# cmake -DNM=<nm> -DOBJECTS=<objects of detection> -P kernelSymbols.cmake
# A vector form is built for instructions that not every processor has. A function that its object
# shares (an inline function, a template) might be the copy that the linker takes for everyone, so
# the table of its steps has to be all that each form defines for others.
set(forms 0)
foreach(object IN LISTS OBJECTS)
    if(NOT object MATCHES "kernels_(avx2|avx512|sse)")
        continue()
    endif()
    set(form ${CMAKE_MATCH_1})
    math(EXPR forms "${forms} + 1")
    execute_process(COMMAND ${NM} -g --defined-only ${object}
        OUTPUT_VARIABLE symbols COMMAND_ERROR_IS_FATAL ANY)
    string(REGEX MATCHALL "[^\n]+" symbols "${symbols}")
    list(FILTER symbols EXCLUDE REGEX "__(asan|ubsan|tsan|odr_asan)|sanitizer|DW\\.ref")
    list(LENGTH symbols count)
    if(NOT count EQUAL 1 OR NOT symbols MATCHES "${form}Kernels")
        message(FATAL_ERROR "${form} defines for others:\n${symbols}")
    endif()
endforeach()
if(OBJECTS MATCHES "vectorForms_x86" AND NOT forms EQUAL 3)
    message(FATAL_ERROR "found ${forms} of three forms")
endif()
message(STATUS "${forms} forms define their table only")
