# Two Debian packages, by CPack: the tool, and what programs are built with. For the preset
# "package", whose prefix is Debian's; script/package makes and checks them.
set(CPACK_GENERATOR DEB)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL runtime development)
set(CPACK_STRIP_FILES ON)
set(CPACK_PRE_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/cmake/FinishPackages.cmake)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_PACKAGE_CONTACT "The tessel authors <authors@tessel.invalid>" CACHE STRING
  "The packages' maintainer")
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")  # each package has its own

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME tessel)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION graphics)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SHLIBDEPS ON)
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION "web gallery of a folder of JPEG photographs
tessel makes a thumbnail of each picture in a folder, and a page on which
they stand, five to a row, each linked to its picture. It remembers what
it has done: the next run makes only the thumbnails of pictures that are
new or changed.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libtessel-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS libjpeg-dev)
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION "library for raster pictures and JPEG files
Static libraries and headers to read, scale, change and write pictures: an
image record, three scalers, operations on colours, alpha and planes, and
JPEG files, whole or row by row.")

# Debian's copyright file: the licence, indented, with dots for blank lines.
file(READ LICENSE licence)
string(REGEX REPLACE "\n([^\n])" "\n \\1" licence "${licence}")
string(REGEX REPLACE "\n\n" "\n .\n" licence "${licence}")
string(REGEX MATCH "Copyright \\(c\\) ([^\n]*)" holder "${licence}")
set(holder ${CMAKE_MATCH_1})
string(REGEX REPLACE "^MIT License\n .\n Copyright[^\n]*\n .\n" "" licence "${licence}")
file(WRITE ${PROJECT_BINARY_DIR}/copyright
"Format: https://www.debian.org/doc/packaging-manuals/copyright-format/1.0/
Upstream-Name: tessel

Files: *
Copyright: ${holder}
License: Expat
${licence}")

string(TIMESTAMP today "%a, %d %b %Y %H:%M:%S +0000" UTC)  # SOURCE_DATE_EPOCH, where it is set
file(WRITE ${PROJECT_BINARY_DIR}/changelog
"tessel (${PROJECT_VERSION}) unstable; urgency=medium

  * Release ${PROJECT_VERSION}. What is new stands in NEWS.gz.

 -- ${CPACK_PACKAGE_CONTACT}  ${today}
")

function(install_papers package component)
  set(folder ${CMAKE_INSTALL_DATADIR}/doc/${package})
  install(FILES ${PROJECT_BINARY_DIR}/copyright ${PROJECT_BINARY_DIR}/changelog
    DESTINATION ${folder} COMPONENT ${component})
  install(FILES CHANGELOG.md RENAME NEWS DESTINATION ${folder} COMPONENT ${component})
endfunction()
install_papers(tessel runtime)
install_papers(libtessel-dev development)
include(CPack)
