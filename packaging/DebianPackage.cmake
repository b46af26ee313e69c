# The Debian package, which CPack makes of what is installed. It is one for i386, as all of its programs are; machines for
# x86-64 install it beside their own packages, once dpkg knows the architecture.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME shotlight)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT "The SpotlightZNK authors")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "file search by metadata")
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION "shotlight finds files by what the file system, photos, songs, films and
documents say about themselves, and by the text of documents, once or live.
Queries use the Spotlight query language. It also runs programs written in
the language of the plug-in's host.")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_DEBIAN_FILE_NAME shotlight_${PROJECT_VERSION}_i386.deb)
set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE i386)
set(CPACK_DEBIAN_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)

# Libraries, as the programs need them. What is started by name can be missing: it is complained of then.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_LIBRARY_OUTPUT_DIRECTORY})
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "libimage-exiftool-perl, poppler-utils")

set(CPACK_STRIP_FILES ON)
set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_CURRENT_SOURCE_DIR}/DebianFiles.cmake)
include(CPack)
