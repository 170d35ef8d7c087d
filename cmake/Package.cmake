# cpack -G DEB in the build folder makes a Debian package of what cmake/Install.cmake installs.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME quillmere)
set(CPACK_PACKAGE_CONTACT "The Quillmere authors <packages@quillmere.app>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "viewer for files, folders and archives")
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION
"Opens text and code of any size, PDF, pictures, camera files, office documents,
sound and film, folders and archives in one quiet window. Archives are listed
like folders, archives inside archives too.
.
Nothing that a document contains can reach the network or the rest of the
user's files.")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_DEPENDS
    "bubblewrap, shared-mime-info, hicolor-icon-theme, librsvg2-common, gstreamer1.0-plugins-base, gstreamer1.0-plugins-good")
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS
    "desktop-file-utils, adwaita-icon-theme, gstreamer1.0-plugins-bad, gstreamer1.0-libav")
set(CPACK_DEBIAN_PACKAGE_SUGGESTS "libreoffice-writer, libreoffice-calc, libreoffice-impress, ffmpeg")
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
include(CPack)
