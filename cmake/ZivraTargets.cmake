# A library for one folder of src/, named after the folder: src/desktop/x11 becomes zivra_desktop_x11.
#
# A library's headers are found only by those that link it: each folder gets an include root of its own,
# so that an include against the architecture's arrows fails to compile.
#
#   zivra_library(SOURCES file... LINKS zivra_... [PRIVATE_LINKS library...])
function(zivra_library)
  cmake_parse_arguments(ARG "" "" "SOURCES;LINKS;PRIVATE_LINKS" ${ARGN})
  file(RELATIVE_PATH folder "${CMAKE_SOURCE_DIR}/src" "${CMAKE_CURRENT_SOURCE_DIR}")
  string(REPLACE "/" "_" name "${folder}")
  set(include_root "${CMAKE_BINARY_DIR}/include-roots/${name}")
  get_filename_component(parent "${include_root}/${folder}" DIRECTORY)
  file(MAKE_DIRECTORY "${parent}")
  file(CREATE_LINK "${CMAKE_CURRENT_SOURCE_DIR}" "${include_root}/${folder}" SYMBOLIC)

  set(compiled ${ARG_SOURCES})
  list(FILTER compiled INCLUDE REGEX "\\.cpp$")
  if(compiled)
    add_library(zivra_${name} STATIC ${ARG_SOURCES})
    target_include_directories(zivra_${name} PUBLIC "${include_root}")
    target_link_libraries(zivra_${name} PUBLIC ${ARG_LINKS} PRIVATE ${ARG_PRIVATE_LINKS})
  else()
    add_library(zivra_${name} INTERFACE)
    target_include_directories(zivra_${name} INTERFACE "${include_root}")
    target_link_libraries(zivra_${name} INTERFACE ${ARG_LINKS})
  endif()
endfunction()

# A test program for one folder of src/, run by CTest. PRIVATE_DESKTOP runs it in a display, sound server and
# session bus of its own (scripts/private-desktop), with options for that script; WRAPPER is a command that runs it.
#
#   zivra_test(name SOURCES file... LINKS library... [TIMEOUT seconds]
#              [PRIVATE_DESKTOP [option...] | WRAPPER program [argument...]])
function(zivra_test name)
  cmake_parse_arguments(ARG "" "TIMEOUT" "SOURCES;LINKS;PRIVATE_DESKTOP;WRAPPER" ${ARGN})
  if(NOT TARGET zivra_${name}_test)
    add_executable(zivra_${name}_test ${ARG_SOURCES})
    target_include_directories(zivra_${name}_test PRIVATE "${CMAKE_SOURCE_DIR}/tests")
    target_link_libraries(zivra_${name}_test PRIVATE ${ARG_LINKS} GTest::gtest)
  endif()
  set(command ${ARG_WRAPPER} "$<TARGET_FILE:zivra_${name}_test>")
  set(qt_platform offscreen)
  if("PRIVATE_DESKTOP" IN_LIST ARGN)
    set(command "${CMAKE_SOURCE_DIR}/scripts/private-desktop" ${ARG_PRIVATE_DESKTOP} -- "$<TARGET_FILE:zivra_${name}_test>")
    set(qt_platform xcb)
  endif()
  add_test(NAME ${name} COMMAND ${command})
  set_tests_properties(${name} PROPERTIES ENVIRONMENT "QT_QPA_PLATFORM=${qt_platform}")
  if(ARG_TIMEOUT)
    set_tests_properties(${name} PROPERTIES TIMEOUT ${ARG_TIMEOUT})
  endif()
endfunction()
