# Sanitizer builds stop at the first finding. The engine's libraries carry no run-time types, and some of their calls end
# in our copies of the standard library's templates, so the check of dynamic types would find faults that are none.
if(QUILLMERE_SANITIZE)
    add_compile_options(-fsanitize=${QUILLMERE_SANITIZE} -fno-sanitize=vptr -fno-sanitize-recover=all
        -fno-omit-frame-pointer)
    add_link_options(-fsanitize=${QUILLMERE_SANITIZE})
endif()

# quillmere_without_sanitizers(TARGET): for a program that links nothing of ours and runs under limits that leave no room
# for a sanitizer's memory.
function(quillmere_without_sanitizers target)
    if(QUILLMERE_SANITIZE)
        target_compile_options(${target} PRIVATE -fno-sanitize=all)
        target_link_options(${target} PRIVATE -fno-sanitize=all)
    endif()
endfunction()
