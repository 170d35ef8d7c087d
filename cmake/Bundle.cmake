# The bundle Quillmere.app in the build folder: programs are linked straight into it, resources are copied beside them.
set(QUILLMERE_BUNDLE ${CMAKE_BINARY_DIR}/Quillmere.app)
set(QUILLMERE_CONTENTS ${QUILLMERE_BUNDLE}/Contents)

# quillmere_bundle_executable(TARGET FOLDER): the target's file lies in Contents/FOLDER.
function(quillmere_bundle_executable target folder)
    set_target_properties(${target} PROPERTIES
        RUNTIME_OUTPUT_DIRECTORY ${QUILLMERE_CONTENTS}/${folder}
        LIBRARY_OUTPUT_DIRECTORY ${QUILLMERE_CONTENTS}/${folder})
endfunction()

# The page: built by its own tools whenever one of its sources is newer. The scripts install its packages before; without
# them the build fetches what is missing, unless QUILLMERE_NPM_CI forbids it.
option(QUILLMERE_NPM_CI "Let the build install the page's packages when they are missing or old" ON)
function(quillmere_add_page)
    find_program(QUILLMERE_NODE node HINTS ${PROJECT_SOURCE_DIR}/build/tools/bin NO_CACHE)
    find_program(QUILLMERE_NPM npm HINTS ${PROJECT_SOURCE_DIR}/build/tools/bin NO_CACHE)
    if(NOT QUILLMERE_NODE OR NOT QUILLMERE_NPM)
        message(FATAL_ERROR "Node.js 20 and npm are needed to build the page. scripts/setup installs them.")
    endif()
    set(page ${PROJECT_SOURCE_DIR}/page)
    file(GLOB_RECURSE sources CONFIGURE_DEPENDS ${page}/src/* ${page}/public/* ${page}/*.html ${page}/*.ts)
    list(FILTER sources EXCLUDE REGEX "node_modules|/dist/|\\.test\\.ts$")
    if(QUILLMERE_NPM_CI)
        add_custom_command(
            OUTPUT ${page}/node_modules/.package-lock.json
            COMMAND ${QUILLMERE_NPM} ci --ignore-scripts --no-audit --no-fund --loglevel=error
            DEPENDS ${page}/package-lock.json
            WORKING_DIRECTORY ${page}
            COMMENT "Installing the page's packages" VERBATIM)
    elseif(NOT EXISTS ${page}/node_modules/.package-lock.json)
        message(FATAL_ERROR "page/node_modules is missing, and QUILLMERE_NPM_CI is off.")
    endif()
    set(licences ${QUILLMERE_CONTENTS}/Resources/third-party-licences.txt)
    add_custom_command(
        OUTPUT ${licences}
        COMMAND ${QUILLMERE_NODE} ${PROJECT_SOURCE_DIR}/packaging/notices.mjs ${page} ${licences}
        DEPENDS ${PROJECT_SOURCE_DIR}/packaging/notices.mjs ${page}/node_modules/.package-lock.json
        COMMENT "Collecting the licences of the page's packages" VERBATIM)
    add_custom_command(
        OUTPUT ${CMAKE_BINARY_DIR}/page.stamp
        COMMAND ${QUILLMERE_NPM} run --silent build -- --outDir ${QUILLMERE_CONTENTS}/Resources/app --emptyOutDir --logLevel warn
        COMMAND ${CMAKE_COMMAND} -E touch ${CMAKE_BINARY_DIR}/page.stamp
        DEPENDS ${sources} ${page}/package.json ${page}/node_modules/.package-lock.json
        WORKING_DIRECTORY ${page}
        COMMENT "Building the page" VERBATIM)
    add_custom_target(page ALL DEPENDS ${CMAKE_BINARY_DIR}/page.stamp ${licences})
endfunction()

# Everything of resources/ that is copied as it is.
function(quillmere_add_resources)
    file(GLOB_RECURSE files CONFIGURE_DEPENDS RELATIVE ${PROJECT_SOURCE_DIR}/resources ${PROJECT_SOURCE_DIR}/resources/*)
    set(copied)
    foreach(file IN LISTS files)
        if(file STREQUAL "Info.plist")
            set(to ${QUILLMERE_CONTENTS}/Info.plist)
        else()
            set(to ${QUILLMERE_CONTENTS}/Resources/${file})
        endif()
        add_custom_command(OUTPUT ${to}
            COMMAND ${CMAKE_COMMAND} -E copy ${PROJECT_SOURCE_DIR}/resources/${file} ${to}
            DEPENDS ${PROJECT_SOURCE_DIR}/resources/${file} VERBATIM)
        list(APPEND copied ${to})
    endforeach()
    set(types ${QUILLMERE_CONTENTS}/Resources/file-types.json)
    find_program(QUILLMERE_NODE node HINTS ${PROJECT_SOURCE_DIR}/build/tools/bin NO_CACHE)
    add_custom_command(OUTPUT ${types}
        COMMAND ${QUILLMERE_NODE} ${PROJECT_SOURCE_DIR}/packaging/file-types.mjs ${PROJECT_SOURCE_DIR}/resources/Info.plist ${types}
        DEPENDS ${PROJECT_SOURCE_DIR}/packaging/file-types.mjs ${PROJECT_SOURCE_DIR}/resources/Info.plist VERBATIM)
    add_custom_target(resources ALL DEPENDS ${copied} ${types})
endfunction()
