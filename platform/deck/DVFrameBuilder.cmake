# Frames for tapes: included by whoever is configured first, the deck or the tests of the frame builder.
if(NOT TARGET merro::dvframebuilder)
  merro_library(dvframebuilder
    SOURCES ${CMAKE_CURRENT_LIST_DIR}/DVFrameBuilder.cpp
    DEPENDS merro::dv merro::platform)
endif()
