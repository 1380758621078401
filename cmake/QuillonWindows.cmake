# What a program for Windows has and one for other systems lacks: all in one file, an icon, and what it tells the system.

# Gives the program `name` its icon, its version with a `description`, and its manifest.
function(quillon_windows_program name description)
  if(NOT WIN32)
    return()
  endif()
  set(icon "${PROJECT_SOURCE_DIR}/packaging/icons/quillon.ico")
  set(manifest "${CMAKE_CURRENT_BINARY_DIR}/${name}.manifest")
  configure_file("${PROJECT_SOURCE_DIR}/packaging/windows/program.manifest.in" "${manifest}" @ONLY)
  configure_file("${PROJECT_SOURCE_DIR}/packaging/windows/program.rc.in" "${name}.rc" @ONLY)
  target_sources(${name} PRIVATE "${CMAKE_CURRENT_BINARY_DIR}/${name}.rc")
  set_property(SOURCE "${CMAKE_CURRENT_BINARY_DIR}/${name}.rc" PROPERTY OBJECT_DEPENDS "${icon};${manifest}")
endfunction()

# Lets the program `name`, which has windows or needs none, be tried without a screen. Of a toolkit that is linked into
# the program only those parts are there that the program names.
function(quillon_without_screen name)
  if(TARGET Qt6::QOffscreenIntegrationPlugin AND NOT QT6_IS_SHARED_LIBS_BUILD)
    qt_import_plugins(${name} INCLUDE Qt6::QOffscreenIntegrationPlugin)
  endif()
endfunction()
