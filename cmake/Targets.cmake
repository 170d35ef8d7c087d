# quillmere_library(NAME sources...): a static library of one folder, included from the root of the tree.
function(quillmere_library name)
    add_library(quillmere_${name} STATIC ${ARGN})
    target_include_directories(quillmere_${name} PUBLIC ${PROJECT_SOURCE_DIR})
    target_link_libraries(quillmere_${name} PRIVATE quillmere_warnings)
endfunction()

# quillmere_executable(NAME sources...): a program of ours.
function(quillmere_executable name)
    add_executable(${name} ${ARGN})
    target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR})
    target_link_libraries(${name} PRIVATE quillmere_warnings)
endfunction()

# quillmere_test(FOLDER sources... LIBS libraries...): the tests of one folder, one process.
function(quillmere_test name)
    cmake_parse_arguments(arg "" "" "LIBS" ${ARGN})
    add_executable(test_${name} ${arg_UNPARSED_ARGUMENTS})
    target_include_directories(test_${name} PRIVATE ${PROJECT_SOURCE_DIR})
    target_link_libraries(test_${name} PRIVATE quillmere_warnings ${arg_LIBS} GTest::gmock GTest::gtest_main)
    add_test(NAME ${name} COMMAND test_${name})
    set_tests_properties(${name} PROPERTIES TIMEOUT 300)
endfunction()
