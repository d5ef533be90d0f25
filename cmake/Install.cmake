# What `cmake --install` copies, in two components: "runtime" is mkvx with the plug-in, "development" is what other programs
# compile the reader or load the plug-in with. scripts/install and scripts/deb drive it.
include(CMakePackageConfigHelpers)

set_target_properties(matroska_ext stagefright_host PROPERTIES INSTALL_RPATH "$ORIGIN")
install(TARGETS matroska_ext stagefright_host
        LIBRARY DESTINATION ${MKVX_PRIVATE_LIBDIR} COMPONENT runtime)
install(TARGETS matroska_ext_core
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development)
install(DIRECTORY extractor/matroska extractor/utils
        DESTINATION ${MKVX_HEADER_DIR} COMPONENT development FILES_MATCHING PATTERN "*.h")
install(DIRECTORY platform/include/ DESTINATION ${MKVX_HEADER_DIR} COMPONENT development FILES_MATCHING PATTERN "*.h")

configure_package_config_file(cmake/matroska_extConfig.cmake.in ${PROJECT_BINARY_DIR}/matroska_extConfig.cmake
  INSTALL_DESTINATION ${MKVX_CONFIG_DIR}
  PATH_VARS MKVX_HEADER_DIR MKVX_PRIVATE_LIBDIR CMAKE_INSTALL_LIBDIR)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/matroska_extConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/matroska_extConfig.cmake ${PROJECT_BINARY_DIR}/matroska_extConfigVersion.cmake
        DESTINATION ${MKVX_CONFIG_DIR} COMPONENT development)
configure_file(cmake/matroska_ext.pc.in ${PROJECT_BINARY_DIR}/matroska_ext.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/matroska_ext.pc DESTINATION ${MKVX_PKGCONFIG_DIR} COMPONENT development)

if(MKVX_BUILD_TOOL)
  set_target_properties(mkvx PROPERTIES INSTALL_RPATH "$ORIGIN/${MKVX_PLUGIN_FOLDER}")
  install(TARGETS mkvx RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT runtime)
  install(TARGETS mkvx_decode mkvx_decode_aac mkvx_http
          RUNTIME DESTINATION ${MKVX_PRIVATE_LIBDIR} LIBRARY DESTINATION ${MKVX_PRIVATE_LIBDIR} COMPONENT runtime)

  # Manual page and completion come out of the program's own help texts.
  set(manuals ${PROJECT_BINARY_DIR}/manuals)
  file(MAKE_DIRECTORY ${manuals})
  add_custom_command(OUTPUT ${manuals}/mkvx.1.gz ${manuals}/mkvx.bash ${manuals}/_mkvx
    COMMAND mkvx help --man > ${manuals}/mkvx.1
    COMMAND gzip -9nf ${manuals}/mkvx.1
    COMMAND mkvx help --completion bash > ${manuals}/mkvx.bash
    COMMAND mkvx help --completion zsh > ${manuals}/_mkvx
    DEPENDS mkvx VERBATIM)
  # A sanitizer build is not for installing.
  set(with_everything ALL)
  if(MKVX_SANITIZE)
    set(with_everything "")
  endif()
  add_custom_target(mkvx_manuals ${with_everything} DEPENDS ${manuals}/mkvx.1.gz)
  install(FILES ${manuals}/mkvx.1.gz DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT runtime)
  install(FILES ${manuals}/mkvx.bash DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions
          RENAME mkvx COMPONENT runtime)
  # zsh looks into another folder for what a distribution packaged.
  set(zsh_folder site-functions)
  if(CMAKE_INSTALL_PREFIX STREQUAL "/usr")
    set(zsh_folder vendor-completions)
  endif()
  install(FILES ${manuals}/_mkvx DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/${zsh_folder} COMPONENT runtime)
endif()
install(FILES README.md THIRD_PARTY.md DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/mkvx COMPONENT runtime)
install(FILES docs/mkvx.md docs/words.md DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/mkvx/docs COMPONENT runtime)
if(NOT CMAKE_INSTALL_PREFIX STREQUAL "/usr")    # a distribution's package says this in files of its own
  install(FILES LICENSE CHANGELOG.md DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/mkvx COMPONENT runtime)
endif()
