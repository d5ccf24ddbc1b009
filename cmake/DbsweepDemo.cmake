# dbsweep_demo_files(<target> [NAME_MASTERS])
# Copies demo/ into a "demo" folder beside the target's executable, which is where local:demo is
# built from on first use. NAME_MASTERS puts the name-master files beside the executable too,
# where the program reads them.
function(dbsweep_demo_files target)
  cmake_parse_arguments(D "NAME_MASTERS" "" "" ${ARGN})
  set(source ${PROJECT_SOURCE_DIR}/demo)
  set(masters ${source}/TBTBLM.dat ${source}/TBCLMM.dat)
  set(destination $<TARGET_FILE_DIR:${target}>)
  set(stamp ${CMAKE_CURRENT_BINARY_DIR}/${target}_demo.stamp)
  set(commands
    COMMAND ${CMAKE_COMMAND} -E make_directory ${destination}/demo
    COMMAND ${CMAKE_COMMAND} -E copy_if_different ${source}/demo.sql ${masters} ${destination}/demo)
  if(D_NAME_MASTERS)
    list(APPEND commands COMMAND ${CMAKE_COMMAND} -E copy_if_different ${masters} ${destination})
  endif()
  add_custom_command(OUTPUT ${stamp} ${commands}
    COMMAND ${CMAKE_COMMAND} -E touch ${stamp}
    DEPENDS ${source}/demo.sql ${masters}
    COMMENT "Copying the demo files beside ${target}"
    VERBATIM)
  add_custom_target(${target}_demo ALL DEPENDS ${stamp})
  # Building the program alone brings its demo along: it cannot log on to local:demo without it.
  add_dependencies(${target} ${target}_demo)
endfunction()
