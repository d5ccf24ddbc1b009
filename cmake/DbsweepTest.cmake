# dbsweep_add_test(NAME <name> SOURCES <files...> [WIDGETS] [LIBS <libs...>])
# Builds one Qt Test executable and registers it with CTest. Window tests (WIDGETS) link the UI
# library and run on the offscreen platform, so they pass without a display.
function(dbsweep_add_test)
  cmake_parse_arguments(T "WIDGETS" "NAME" "SOURCES;LIBS" ${ARGN})
  add_executable(${T_NAME} ${T_SOURCES})
  target_link_libraries(${T_NAME} PRIVATE dbsweep_testsupport Qt6::Test ${T_LIBS})
  if(T_WIDGETS)
    target_link_libraries(${T_NAME} PRIVATE dbsweep_ui)
  endif()
  add_test(NAME ${T_NAME} COMMAND ${T_NAME})
  set_tests_properties(${T_NAME} PROPERTIES
    ENVIRONMENT "QT_QPA_PLATFORM=offscreen"
    TIMEOUT 300)
endfunction()
