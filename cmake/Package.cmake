# The Debian packages that `cpack -G DEB` makes of an installation: mkvx with the plug-in, and mkvx-dev.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME mkvx)
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "what a stagefright device gets out of a Matroska file")
set(CPACK_PACKAGE_VENDOR "the matroska_ext developers")
# Who makes the packages, as Debian's own tools find it out.
set(MKVX_MAINTAINER "the matroska_ext developers <matroska-ext@localhost>")
if(DEFINED ENV{DEBFULLNAME} AND DEFINED ENV{DEBEMAIL})
  set(MKVX_MAINTAINER "$ENV{DEBFULLNAME} <$ENV{DEBEMAIL}>")
endif()
set(CPACK_PACKAGE_CONTACT ${MKVX_MAINTAINER})
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGING_INSTALL_PREFIX ${CMAKE_INSTALL_PREFIX})
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR}/packages)
set(CPACK_RESOURCE_FILE_LICENSE ${PROJECT_SOURCE_DIR}/LICENSE)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL runtime development)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
# It needs the AAC decoder library, which is in the distribution's non-free component.
set(CPACK_DEBIAN_PACKAGE_SECTION contrib/video)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_LIBRARY_OUTPUT_DIRECTORY})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME mkvx)
set(CPACK_DEBIAN_RUNTIME_DESCRIPTION
    "mkvx loads the extractor plug-in that a device of the Lollipop line would load,\nand shows which tracks, access units and seek points its player would receive.")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME mkvx-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION contrib/libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SHLIBDEPS OFF)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS
    "mkvx (= ${PROJECT_VERSION}), android-libutils-dev, android-liblog-dev, zlib1g-dev, libfdk-aac-dev")
set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION
    "Headers, static library, CMake package and pkg-config file of the EBML and\nMatroska reader that mkvx is built on, and of the host build of the media\ninterfaces.")
include(CPack)

# What every Debian package carries in its documentation folder.
find_program(GZIP gzip)
if(CMAKE_INSTALL_PREFIX STREQUAL "/usr" AND GZIP)
  set(package_docs ${PROJECT_BINARY_DIR}/packages/doc)
  configure_file(cmake/debian-copyright ${package_docs}/copyright COPYONLY)
  configure_file(cmake/debian-changelog.in ${package_docs}/changelog @ONLY)
  execute_process(COMMAND ${GZIP} -9nf ${package_docs}/changelog)
  configure_file(cmake/lintian-overrides ${package_docs}/mkvx COPYONLY)
  install(FILES ${package_docs}/mkvx DESTINATION ${CMAKE_INSTALL_DATADIR}/lintian/overrides COMPONENT runtime)
  foreach(pair "runtime;mkvx" "development;mkvx-dev")
    list(GET pair 0 component)
    list(GET pair 1 package)
    install(FILES ${package_docs}/copyright ${package_docs}/changelog.gz
            DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${package} COMPONENT ${component})
  endforeach()
endif()
