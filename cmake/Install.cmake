# The way into a system's folders: the bundle as it is in libexec, a link to its program, and what a desktop looks for.
include(GNUInstallDirs)
set(bundle ${CMAKE_INSTALL_LIBEXECDIR}/quillmere/Quillmere.app)
set(contents ${bundle}/Contents)
set(packaging ${PROJECT_SOURCE_DIR}/packaging)
set(made ${CMAKE_BINARY_DIR}/packaging)

install(TARGETS Quillmere RUNTIME DESTINATION ${contents}/MacOS)
install(TARGETS quillmere-archive-reader quillmere-image-worker RUNTIME DESTINATION ${contents}/Helpers)
install(TARGETS quillmere-media LIBRARY DESTINATION ${contents}/Helpers/web-process)
install(DIRECTORY ${QUILLMERE_CONTENTS}/Resources DESTINATION ${contents})
install(FILES ${QUILLMERE_CONTENTS}/Info.plist DESTINATION ${contents})
file(RELATIVE_PATH from_bin /${CMAKE_INSTALL_BINDIR} /${contents}/MacOS/Quillmere)
file(MAKE_DIRECTORY ${made})
file(CREATE_LINK ${from_bin} ${made}/quillmere SYMBOLIC)
install(FILES ${made}/quillmere DESTINATION ${CMAKE_INSTALL_BINDIR})

# The entry and the icons are those that the program itself writes for a user, but for the command, which is in the path.
quillmere_executable(desktop-files ${packaging}/desktop-files.cpp)
target_link_libraries(desktop-files PRIVATE quillmere_platform_gtk)
set(entry ${made}/share/applications/app.quillmere.viewer.desktop)
add_custom_command(OUTPUT ${entry}
    COMMAND ${CMAKE_COMMAND} -E rm -rf ${made}/share
    COMMAND ${CMAKE_COMMAND} -E make_directory ${made}/share/applications
    COMMAND desktop-files add ${QUILLMERE_BUNDLE} ${made}/share
    COMMAND sed -i -e "s|^Exec=.*|Exec=quillmere %f|" -e "s|^TryExec=.*|TryExec=quillmere|" ${entry}
    COMMAND ${CMAKE_COMMAND} -E rm -f ${made}/share/applications/mimeinfo.cache ${made}/share/applications/mimeapps.list
    DEPENDS desktop-files resources VERBATIM)
find_program(QUILLMERE_GZIP gzip REQUIRED)
function(quillmere_zipped from to) # without a name and a date, so that two builds make the same bytes
    add_custom_command(OUTPUT ${made}/${to} COMMAND ${QUILLMERE_GZIP} -9nc ${packaging}/${from} > ${made}/${to}
        DEPENDS ${packaging}/${from} VERBATIM)
endfunction()
quillmere_zipped(quillmere.1 quillmere.1.gz)
quillmere_zipped(debian/changelog changelog.gz)
add_custom_target(packaging ALL DEPENDS ${entry} ${made}/quillmere.1.gz ${made}/changelog.gz)

install(DIRECTORY ${made}/share/ DESTINATION ${CMAKE_INSTALL_DATADIR})
install(FILES ${packaging}/app.quillmere.viewer.metainfo.xml DESTINATION ${CMAKE_INSTALL_DATADIR}/metainfo)
install(FILES ${made}/quillmere.1.gz DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
install(FILES ${packaging}/quillmere.bash DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions
    RENAME quillmere)
install(FILES ${made}/changelog.gz DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/quillmere)
install(FILES ${packaging}/debian/copyright ${PROJECT_SOURCE_DIR}/LICENSE DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/quillmere)
