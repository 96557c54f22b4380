# The ZIP that people get, made by the target "package": the program and its guide, in a folder of their own.
find_package(Python3 COMPONENTS Interpreter)

install(TARGETS Vardeko RUNTIME DESTINATION .)
# Made while packaging, not while building: only this takes Python and cmark-gfm.
install(CODE "
  execute_process(
    COMMAND \"${Python3_EXECUTABLE}\" \"${CMAKE_SOURCE_DIR}/scripts/make_guide.py\"
            \"${CMAKE_SOURCE_DIR}/docs/anleitung.md\" \"\${CMAKE_INSTALL_PREFIX}/Anleitung.html\"
    COMMAND_ERROR_IS_FATAL ANY)")

set(CPACK_GENERATOR ZIP)
set(CPACK_PACKAGE_NAME Vardeko)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR})
set(CPACK_PACKAGE_FILE_NAME ${CPACK_PACKAGE_NAME}-${CPACK_PACKAGE_VERSION})
include(CPack)
