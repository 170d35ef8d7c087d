# Sanitizer builds stop at the first finding. The engine's libraries carry no run-time types, and some of their calls end
# in our copies of the standard library's templates, so the check of dynamic types would find faults that are none.
if(QUILLMERE_SANITIZE)
    add_compile_options(-fsanitize=${QUILLMERE_SANITIZE} -fno-sanitize=vptr -fno-sanitize-recover=all
        -fno-omit-frame-pointer)
    add_link_options(-fsanitize=${QUILLMERE_SANITIZE})
endif()
