# Installation and the Debian package. The programs live together in a folder of their own with
# the demo, the name-master files and the manual beside them, as they are found at run time;
# the usual bin folder gets links to them, and the desktop gets an entry and an icon. Nothing the
# programs write goes there: settings, data and exports go to the user's own folders.
set(DBSWEEP_PROGRAM_DIR lib/dbsweep)

install(TARGETS dbsweep dbsweep-tray dbsweep-sql RUNTIME DESTINATION ${DBSWEEP_PROGRAM_DIR})
install(FILES demo/demo.sql demo/TBTBLM.dat demo/TBCLMM.dat DESTINATION ${DBSWEEP_PROGRAM_DIR}/demo)
install(FILES demo/TBTBLM.dat demo/TBCLMM.dat DESTINATION ${DBSWEEP_PROGRAM_DIR})
if(EXISTS ${PROJECT_SOURCE_DIR}/manual)
  install(DIRECTORY manual/ DESTINATION ${DBSWEEP_PROGRAM_DIR}/manual)
endif()
install(FILES packaging/dbsweep.desktop DESTINATION share/applications)
install(FILES packaging/dbsweep.svg DESTINATION share/icons/hicolor/scalable/apps)
foreach(program dbsweep dbsweep-tray dbsweep-sql)
  install(CODE "
    file(MAKE_DIRECTORY \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/bin\")
    file(CREATE_LINK ../${DBSWEEP_PROGRAM_DIR}/${program} \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/bin/${program}\" SYMBOLIC)")
endforeach()

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME dbsweep)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT "DBSWEEP developers")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "Oracle clean-up tool: count, delete, drop and export rows across tables")
set(CPACK_PACKAGE_DESCRIPTION
    "DBSWEEP logs on to one Oracle schema, finds every table that shares the key columns you pick and runs
batch jobs over them: count, delete (truncate, one statement or row by row, with commit or
rollback), drop and export to delimited text. Japanese user interface. It comes with an embedded
demo database, a SQL console (dbsweep-sql) and a tray companion (dbsweep-tray).")
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION database)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# The desktop's platform plugin and a font that holds Japanese are needed to see anything; the
# libraries the programs link (libedit for dbsweep-sql's line editing among them) are found by
# shlibdeps.
set(CPACK_DEBIAN_PACKAGE_DEPENDS "qt6-qpa-plugins, fonts-noto-cjk | fonts-ipafont-gothic")
set(CPACK_DEBIAN_PACKAGE_SUGGESTS "libaio1")
include(CPack)
