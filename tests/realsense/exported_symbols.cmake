# Compares what the camera library exports with its interface:
#   cmake -DLIBRARY=FILE -DNM=PROGRAM -P exported_symbols.cmake
set(expected
    rs_create_context
    rs_delete_context
    rs_device_supports_option
    rs_enable_stream_ex
    rs_free_error
    rs_get_current_mode
    rs_get_device
    rs_get_device_count
    rs_get_device_depth_scale
    rs_get_device_extrinsics
    rs_get_device_firmware_version
    rs_get_device_name
    rs_get_device_serial
    rs_get_error_message
    rs_get_failed_args
    rs_get_failed_function
    rs_get_frame_data
    rs_get_scene_truth
    rs_get_stream_height
    rs_get_stream_intrinsics
    rs_get_stream_modes
    rs_get_stream_width
    rs_has_ended
    rs_is_device_streaming
    rs_select_camera_source
    rs_set_device_option
    rs_start_source
    rs_stop_source
    rs_take_device_notices
    rs_wait_for_frames)

execute_process(COMMAND ${NM} -D --defined-only --format=posix ${LIBRARY}
    OUTPUT_VARIABLE output RESULT_VARIABLE failed)
if(failed)
    message(FATAL_ERROR "${NM} failed on ${LIBRARY}")
endif()
string(REGEX MATCHALL "[^\n]+" lines "${output}")
set(found "")
foreach(line IN LISTS lines)
    string(REGEX MATCH "^[^ ]+" name "${line}")
    list(APPEND found ${name})
endforeach()
list(SORT found)
list(SORT expected)
if(NOT found STREQUAL expected)
    set(missing ${expected})
    list(REMOVE_ITEM missing ${found} "")
    set(surplus ${found})
    list(REMOVE_ITEM surplus ${expected})
    message(FATAL_ERROR "${LIBRARY}\nmissing: ${missing}\nsurplus: ${surplus}")
endif()
