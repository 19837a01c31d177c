# orvex_add_test(NAME LABEL label LINK targets…): one GoogleTest program; target_sources adds its sources.
# Each case runs in a process of its own, so once-only objects are fresh in every case. The OpenCL compiler's cache of
# the processor device lies in the build tree, so that tests need no writable home; what that device leaks is not reported.
if(ORVEX_BUILD_TESTS)
    enable_testing()
    find_package(GTest REQUIRED)
    include(GoogleTest)
endif()
# orvex_test_with_rusticl(NAME [FILTER pattern]): the cases of such a program that use OpenCL, once more with Mesa's driver
# on the processor, where that is installed. Sanitizers, for which it is not built, would report its own faults.
set(ORVEX_TEST_ENVIRONMENT "POCL_CACHE_DIR=${PROJECT_BINARY_DIR}/opencl-cache")
set(ORVEX_TEST_ENVIRONMENT_MODIFICATION
    "LSAN_OPTIONS=set:suppressions=${PROJECT_SOURCE_DIR}/cmake/leak-suppressions.txt:print_suppressions=0")
function(orvex_add_test name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "LABEL" "LINK")
    add_executable(${name})
    target_compile_features(${name} PRIVATE cxx_std_20)
    target_link_libraries(${name} PRIVATE ${arg_LINK} GTest::gmock GTest::gtest_main orvex_warnings)
    target_compile_definitions(${name} PRIVATE ORVEX_SOURCE_DIR="${PROJECT_SOURCE_DIR}" ORVEX_BINARY_DIR="${PROJECT_BINARY_DIR}")
    gtest_discover_tests(${name} TEST_PREFIX "${name}/" DISCOVERY_MODE PRE_TEST DISCOVERY_TIMEOUT 60
        PROPERTIES LABELS "${arg_LABEL}" TIMEOUT 300
        ENVIRONMENT "${ORVEX_TEST_ENVIRONMENT}"
        ENVIRONMENT_MODIFICATION "${ORVEX_TEST_ENVIRONMENT_MODIFICATION}")
endfunction()
if(EXISTS /etc/OpenCL/vendors/rusticl.icd AND NOT ORVEX_SANITIZE)
    set(ORVEX_RUSTICL /etc/OpenCL/vendors/rusticl.icd)
endif()
function(orvex_test_with_rusticl name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "FILTER" "")
    if(ORVEX_RUSTICL)
        gtest_discover_tests(${name} TEST_PREFIX "Rusticl/${name}/" TEST_LIST ${name}WithRusticl TEST_FILTER "${arg_FILTER}"
            DISCOVERY_MODE PRE_TEST DISCOVERY_TIMEOUT 60
            PROPERTIES LABELS rusticl TIMEOUT 300
            # One variable each: that function takes no lists.
            ENVIRONMENT RUSTICL_ENABLE=llvmpipe ENVIRONMENT_MODIFICATION "OCL_ICD_VENDORS=set:${ORVEX_RUSTICL}")
    endif()
endfunction()
