# Installation, the Debian package, and the executable for engine-testing frameworks.
include(GNUInstallDirs)

# The one place of the version is the engine itself.
set(version_source ${PROJECT_SOURCE_DIR}/src/shell/start_up.h)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${version_source})
file(STRINGS ${version_source} version_line REGEX "Version = \"[0-9.]+\"")
string(REGEX REPLACE ".*\"([0-9.]+)\".*" "\\1" version "${version_line}")
if(NOT version MATCHES "^[0-9.]+$")
  message(FATAL_ERROR "No version found in ${version_source}")
endif()

# Manual pages, and the log of changes in Debian's form, are installed compressed. The engine's target makes them, so
# that building that one is enough for an installation.
function(compressed source target)
  add_custom_command(
    OUTPUT ${target}
    COMMAND gzip --best --no-name --stdout ${source} > ${target}
    DEPENDS ${source}
    COMMENT "Compressing ${source}"
    VERBATIM)
endfunction()
set(maintainer "Tarvok developers <tarvok@example.org>") # no such address: there is none yet
string(TIMESTAMP date "%a, %d %b %Y %H:%M:%S +0000" UTC) # SOURCE_DATE_EPOCH where that is set
set(debian_changelog ${PROJECT_BINARY_DIR}/changelog)
configure_file(cmake/debian/changelog.in ${debian_changelog} @ONLY)
set(manual ${PROJECT_BINARY_DIR}/tarvok.6.gz)
compressed(${PROJECT_SOURCE_DIR}/docs/tarvok.6 ${manual})
compressed(${debian_changelog} ${debian_changelog}.gz)
add_custom_target(tarvok_compressed DEPENDS ${manual} ${debian_changelog}.gz)
add_dependencies(tarvok tarvok_compressed)

# The documents keep their places to each other, so that their links work.
install(TARGETS tarvok RUNTIME COMPONENT engine)
install(FILES ${manual} DESTINATION ${CMAKE_INSTALL_MANDIR}/man6 COMPONENT documents)
install(FILES README.md CHANGELOG.md CONTRIBUTING.md DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT documents)
install(DIRECTORY docs DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT documents
  FILES_MATCHING PATTERN "*.md" PATTERN "examples/*")

# Debian keeps games and chess engines in /usr/games. Everywhere else the engine goes to bin.
install(TARGETS tarvok RUNTIME DESTINATION games COMPONENT debian EXCLUDE_FROM_ALL)
install(FILES cmake/debian/copyright ${debian_changelog}.gz DESTINATION share/doc/tarvok
  COMPONENT debian EXCLUDE_FROM_ALL)
install(FILES cmake/debian/lintian-overrides DESTINATION share/lintian/overrides RENAME tarvok
  COMPONENT debian EXCLUDE_FROM_ALL)

set(CPACK_GENERATOR DEB)
set(CPACK_INSTALL_CMAKE_PROJECTS
  "${PROJECT_BINARY_DIR};tarvok;debian;/;${PROJECT_BINARY_DIR};tarvok;documents;/")
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_STRIP_FILES ON)
set(CPACK_PACKAGE_NAME tarvok)
set(CPACK_PACKAGE_VERSION ${version})
set(CPACK_PACKAGE_VENDOR "Tarvok developers")
set(CPACK_PACKAGE_CONTACT "${maintainer}")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "UCI chess engine for standard chess and Chess960")
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION
  "Tarvok searches on up to 128 threads, has a hand-written evaluation, reads
opening books and endgame tables, and can grow a Monte Carlo search tree.
It has no board of its own: a chess interface that speaks the Universal Chess
Interface starts it.

It needs a processor with BMI2 and POPCNT.")
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "${maintainer}")
set(CPACK_DEBIAN_PACKAGE_SECTION games)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SUGGESTS "xboard, polyglot, pychess, scid")
# `cmake --build ... --target package_source`: the source and nothing that was built or fetched beside it.
set(CPACK_SOURCE_GENERATOR TGZ)
set(CPACK_SOURCE_IGNORE_FILES "/\\\\.git(/|$)" "/node_modules/" "/__pycache__/" "^${PROJECT_SOURCE_DIR}/build/"
  "^${PROJECT_SOURCE_DIR}/tarvok$" "^${PROJECT_SOURCE_DIR}/match[^/]*\\\\.(pgn|log)$"
  "^${PROJECT_SOURCE_DIR}/tune[^/]*\\\\.(json|json\\\\.new|log|svg)$")
include(CPack)

# `make EXE=name`. It is linked as the engine is.
add_executable(tarvok_framework EXCLUDE_FROM_ALL scripts/framework_main.cpp)
target_link_libraries(tarvok_framework PRIVATE tarvok_shell tarvok_processor_check tarvok_warnings)
target_link_options(tarvok_framework PRIVATE $<TARGET_PROPERTY:tarvok,LINK_OPTIONS>)
