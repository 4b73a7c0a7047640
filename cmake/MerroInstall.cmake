# What `cmake --install` puts in place for a host: the shared library with the component and its package-free
# surroundings, the one with movies and posters where FFmpeg is there, the headers, and a CMake package.

include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(core_folders platform timecode dv catalogue views capture recapture
    native virtualtime session deck dvframebuilder)
function(merro_shared_library target)
  cmake_parse_arguments(ARG "" "" "FOLDERS;PUBLIC;PRIVATE" ${ARGN})
  add_library(${target} SHARED)
  foreach(folder ${ARG_FOLDERS})
    if(TARGET merro_${folder})
      target_sources(${target} PRIVATE $<TARGET_OBJECTS:merro_${folder}>)
    endif()
  endforeach()
  set_target_properties(${target} PROPERTIES VERSION ${PROJECT_VERSION} SOVERSION 0 LINKER_LANGUAGE CXX)
  target_compile_features(${target} PUBLIC cxx_std_20)
  target_include_directories(${target} INTERFACE $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/BXMerroCapture>)
  target_link_libraries(${target} PUBLIC ${ARG_PUBLIC} PRIVATE $<BUILD_INTERFACE:merro_options> ${ARG_PRIVATE})
  install(TARGETS ${target} EXPORT BXMerroCaptureTargets LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
endfunction()

merro_shared_library(BXMerroCapture FOLDERS ${core_folders} PUBLIC Threads::Threads)
set(header_folders platform timecode dv catalogue views capture recapture)
if(TARGET merro_ffmpeg)
  merro_shared_library(BXMerroCaptureMovies FOLDERS ffmpeg PUBLIC BXMerroCapture
                       PRIVATE $<BUILD_INTERFACE:PkgConfig::FFMPEG>)
endif()

foreach(folder ${header_folders})
  install(DIRECTORY ${PROJECT_SOURCE_DIR}/${folder} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/BXMerroCapture
          FILES_MATCHING PATTERN "*.h")
endforeach()
install(EXPORT BXMerroCaptureTargets NAMESPACE merro:: DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/BXMerroCapture)
file(WRITE ${CMAKE_CURRENT_BINARY_DIR}/BXMerroCaptureConfig.cmake
"include(CMakeFindDependencyMacro)
find_dependency(Threads)
include(\${CMAKE_CURRENT_LIST_DIR}/BXMerroCaptureTargets.cmake)
")
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/BXMerroCaptureConfigVersion.cmake
                                 COMPATIBILITY SameMinorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/BXMerroCaptureConfig.cmake
              ${CMAKE_CURRENT_BINARY_DIR}/BXMerroCaptureConfigVersion.cmake
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/BXMerroCapture)
if(TARGET merro)
  install(TARGETS merro RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
  install(TARGETS merro_movies LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}/BXMerroCapture)
endif()
