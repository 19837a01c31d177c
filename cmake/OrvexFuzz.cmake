# orvex_add_fuzz_target(NAME.cpp LINK targets…): one program fed with bytes that nobody promised.
# In the preset `fuzz` it looks for new inputs (scripts/fuzz); in every other it replays those of NAME.corpus inside
# ctest, which is also how a finding stays fixed. NAME.dict, where there is one, holds words of the format.
option(ORVEX_FUZZ "Let the fuzz targets look for new inputs; needs Clang" OFF)
function(orvex_add_fuzz_target source)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "LINK")
    cmake_path(GET source STEM name)
    cmake_path(GET source PARENT_PATH folder)
    add_executable(${name} ${source})
    target_compile_features(${name} PRIVATE cxx_std_20)
    target_include_directories(${name} PRIVATE "${PROJECT_SOURCE_DIR}/Core/fuzz" "${PROJECT_SOURCE_DIR}/Core/test")
    target_link_libraries(${name} PRIVATE ${arg_LINK} FuzzMain orvex_warnings)
    set(corpus "${CMAKE_CURRENT_SOURCE_DIR}/${folder}/${name}.corpus")
    add_test(NAME "Fuzz/${name}" COMMAND ${name} $<$<BOOL:${ORVEX_FUZZ}>:-runs=0> "${corpus}" COMMAND_EXPAND_LISTS)
    set_tests_properties("Fuzz/${name}" PROPERTIES LABELS fuzz TIMEOUT 120)
endfunction()
