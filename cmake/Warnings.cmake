# The one list of warnings. Every target of ours links this interface; the presets make a
# warning an error, a plain configuration does not.
add_library(quillmere_warnings INTERFACE)
target_compile_options(quillmere_warnings INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wnon-virtual-dtor -Woverloaded-virtual
    -Wcast-align -Wold-style-cast -Wnull-dereference -Wdouble-promotion -Wformat=2 -Wimplicit-fallthrough -Wundef
    -Wswitch-enum)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    target_compile_options(quillmere_warnings INTERFACE -Wduplicated-cond -Wlogical-op -Wuseless-cast)
    # GCC 12 reports these inside inlined standard-library code at -O2 and under the sanitizers.
    target_compile_options(quillmere_warnings INTERFACE -Wno-null-dereference -Wno-restrict)
endif()
