# What every binary of ours is compiled and linked with, so that a fault in reading a hostile file ends a program instead
# of serving the file's author. tests/bundle looks for it in what was built.
include(CheckPIESupported)
check_pie_supported(LANGUAGES CXX)

add_compile_options(-fstack-protector-strong -fstack-clash-protection)
if(CMAKE_SYSTEM_PROCESSOR MATCHES "x86_64|AMD64")
    add_compile_options(-fcf-protection=full)
elseif(CMAKE_SYSTEM_PROCESSOR MATCHES "aarch64")
    add_compile_options(-mbranch-protection=standard)
endif()
add_link_options(-Wl,-z,relro,-z,now,-z,noexecstack)
# Sanitizers watch the same functions themselves, and the checks want optimised code.
if(NOT QUILLMERE_SANITIZE)
    add_compile_definitions($<$<NOT:$<CONFIG:Debug>>:_GLIBCXX_ASSERTIONS>)
    add_compile_options($<$<NOT:$<CONFIG:Debug>>:-U_FORTIFY_SOURCE> $<$<NOT:$<CONFIG:Debug>>:-D_FORTIFY_SOURCE=3>)
endif()
