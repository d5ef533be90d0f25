# Where things are installed. The plug-in and the host library are no libraries for everybody: they have a folder of their
# own, which mkvx finds by its place relative to its own.
set(MKVX_PRIVATE_LIBDIR ${CMAKE_INSTALL_LIBDIR}/mkvx)
set(MKVX_HEADER_DIR ${CMAKE_INSTALL_INCLUDEDIR}/matroska_ext)
set(MKVX_CONFIG_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/matroska_ext)
set(MKVX_PKGCONFIG_DIR ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

file(RELATIVE_PATH MKVX_PLUGIN_FOLDER ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR}/mkvx)
file(RELATIVE_PATH MKVX_PREFIX_FROM_PKGCONFIG
     ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
