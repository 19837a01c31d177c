# What every target of ours compiles with. Linked PRIVATE, so users of our libraries keep their own settings.
add_library(orvex_warnings INTERFACE)
target_compile_options(orvex_warnings INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion
    $<$<COMPILE_LANGUAGE:CXX>:-Wold-style-cast -Wnon-virtual-dtor -Woverloaded-virtual>
    $<$<COMPILE_LANG_AND_ID:CXX,GNU>:-Wsuggest-override>
    $<$<BOOL:${ORVEX_WARNINGS_AS_ERRORS}>:-Werror>
    # No multiply-add is rounded once instead of twice: a frame's size is the same on every processor.
    -ffp-contract=off
    # Assertion texts name files relative to the repository, and builds are reproducible.
    "-ffile-prefix-map=${PROJECT_SOURCE_DIR}/=")
if(CMAKE_UNITY_BUILD)
    # Several sources compiled as one see each other's local names; the other presets warn of what is meant here.
    target_compile_options(orvex_warnings INTERFACE $<$<COMPILE_LANGUAGE:CXX>:-Wno-shadow>
        $<$<COMPILE_LANG_AND_ID:CXX,GNU>:-Wno-subobject-linkage>)
endif()
if(ORVEX_SANITIZE)
    # With sanitizers GCC loses track of what is initialised and warns of code that is right.
    target_compile_options(orvex_warnings INTERFACE $<$<COMPILE_LANG_AND_ID:CXX,GNU>:-Wno-maybe-uninitialized>)
    # GCC and Clang tell it in different ways.
    target_compile_definitions(orvex_warnings INTERFACE ORVEX_SANITIZED)
    if(ORVEX_SANITIZE MATCHES thread)
        target_compile_definitions(orvex_warnings INTERFACE ORVEX_THREAD_SANITIZED)
    endif()
    add_compile_options(-fsanitize=${ORVEX_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    add_link_options(-fsanitize=${ORVEX_SANITIZE})
endif()

# orvex_compile_apart(target files…): sources whose local names other sources of the target use too. The presets with
# sanitizers compile several sources as one (CMAKE_UNITY_BUILD), in a quarter of the time.
function(orvex_compile_apart target)
    set_source_files_properties(${ARGN} TARGET_DIRECTORY ${target} PROPERTIES SKIP_UNITY_BUILD_INCLUSION ON)
endfunction()
