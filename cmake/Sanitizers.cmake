# Sanitizer builds stop at the first finding.
if(QUILLMERE_SANITIZE)
    add_compile_options(-fsanitize=${QUILLMERE_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    add_link_options(-fsanitize=${QUILLMERE_SANITIZE})
endif()
