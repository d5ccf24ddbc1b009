# dbsweep_manual(<target>)
# Copies the manual (manual/, HTML and pictures) into a "manual" folder beside the target's
# executable, where the help entry opens it.
function(dbsweep_manual target)
  set(source ${PROJECT_SOURCE_DIR}/manual)
  file(GLOB_RECURSE files CONFIGURE_DEPENDS ${source}/*)
  if(NOT files)
    return()
  endif()
  set(stamp ${CMAKE_CURRENT_BINARY_DIR}/${target}_manual.stamp)
  add_custom_command(OUTPUT ${stamp}
    COMMAND ${CMAKE_COMMAND} -E copy_directory ${source} $<TARGET_FILE_DIR:${target}>/manual
    COMMAND ${CMAKE_COMMAND} -E touch ${stamp}
    DEPENDS ${files}
    COMMENT "Copying the manual beside ${target}"
    VERBATIM)
  add_custom_target(${target}_manual ALL DEPENDS ${stamp})
  add_dependencies(${target} ${target}_manual)
endfunction()
