# HostPlugin: the plug-in against the host's own interface, if DDIMAGE_ROOT names a folder with include/DDImage and
# libDDImage.so. Nothing of the substitute is on its include path or linked into it. One build serves one version X.Y of
# the host; its library is put in host-plugins/X.Y of the build tree.
set(DDIMAGE_ROOT "" CACHE PATH "Folder of the compositing host, for a plug-in that it loads")
if(NOT DDIMAGE_ROOT)
    return()
endif()
foreach(wanted include/DDImage/PlanarIop.h include/DDImage/ddImageVersionNumbers.h)
    if(NOT EXISTS "${DDIMAGE_ROOT}/${wanted}")
        message(FATAL_ERROR "DDIMAGE_ROOT is \"${DDIMAGE_ROOT}\", which has no ${wanted}. Give the folder in which the host is installed.")
    endif()
endforeach()
find_library(hostLibrary DDImage PATHS "${DDIMAGE_ROOT}" "${DDIMAGE_ROOT}/lib" NO_DEFAULT_PATH NO_CACHE)
if(NOT hostLibrary)
    message(FATAL_ERROR "DDIMAGE_ROOT is \"${DDIMAGE_ROOT}\", which has no libDDImage.so. Give the folder in which the host is installed.")
endif()
file(STRINGS "${DDIMAGE_ROOT}/include/DDImage/ddImageVersionNumbers.h" versionLine REGEX "define +kDDImageVersion +\"")
if(NOT versionLine MATCHES "\"([0-9]+\\.[0-9]+)")
    message(FATAL_ERROR "\"${DDIMAGE_ROOT}/include/DDImage/ddImageVersionNumbers.h\" does not tell kDDImageVersion.")
endif()
set(hostVersion "${CMAKE_MATCH_1}")

add_library(HostDDImage SHARED IMPORTED)
set_target_properties(HostDDImage PROPERTIES IMPORTED_LOCATION "${hostLibrary}"
    INTERFACE_INCLUDE_DIRECTORIES "${DDIMAGE_ROOT}/include")

get_target_property(sources LensCorrectionNodes SOURCES)
add_library(HostPlugin MODULE StaticBoost.cpp ${sources})
target_compile_features(HostPlugin PRIVATE cxx_std_17)
target_include_directories(HostPlugin PRIVATE src)
set_target_properties(HostPlugin PROPERTIES PREFIX "" OUTPUT_NAME OrvexLensDistortionCorrection
    CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON
    LIBRARY_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/host-plugins/${hostVersion}"
    # The host has loaded its library before any plug-in: no path of this machine may lead to another one.
    SKIP_BUILD_RPATH ON INSTALL_RPATH "" LINK_DEPENDS "${CMAKE_CURRENT_SOURCE_DIR}/exports.map"
    ORVEX_HOST_VERSION "${hostVersion}")
target_link_libraries(HostPlugin PRIVATE Orvex::Core HostDDImage orvex_warnings)
target_link_options(HostPlugin PRIVATE
    "-Wl,--exclude-libs,ALL" "-Wl,--version-script=${CMAKE_CURRENT_SOURCE_DIR}/exports.map")
configure_file(OrvexLensShadingCorrection.tcl
    "${PROJECT_BINARY_DIR}/host-plugins/${hostVersion}/OrvexLensShadingCorrection.tcl" COPYONLY)
message(STATUS "Plug-in for version ${hostVersion} of the host: host-plugins/${hostVersion}")
