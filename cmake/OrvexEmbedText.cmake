# orvex_embed_text(TARGET FILE MODE): makes FILE's text available to TARGET's sources as an include file.
# FILE is relative to the current source folder, which must be TARGET's own; the include is "<path from the part's
# src>.inc" (from Core/src, Image/src, Tools/src), rebuilt when FILE changes.
# MODE whole: one raw string literal. MODE rows: one quoted literal per line, each followed by a comma.
set(ORVEX_EMBED_SCRIPT "${CMAKE_CURRENT_LIST_DIR}/EmbedText.cmake")
function(orvex_embed_text target file mode)
    cmake_path(ABSOLUTE_PATH file BASE_DIRECTORY "${CMAKE_CURRENT_SOURCE_DIR}" OUTPUT_VARIABLE input)
    string(REGEX REPLACE "^.*/(Core|Image|Tools)/src/" "" relative "${input}")
    set(output "${PROJECT_BINARY_DIR}/generated/${relative}.inc")
    add_custom_command(OUTPUT "${output}"
        COMMAND "${CMAKE_COMMAND}" "-DINPUT=${input}" "-DOUTPUT=${output}" "-DMODE=${mode}" -P "${ORVEX_EMBED_SCRIPT}"
        DEPENDS "${input}" "${ORVEX_EMBED_SCRIPT}"
        COMMENT "Embedding ${relative}" VERBATIM)
    target_sources(${target} PRIVATE "${output}")
    target_include_directories(${target} PRIVATE "${PROJECT_BINARY_DIR}/generated")
endfunction()
