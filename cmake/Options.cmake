# Compiler settings that every target of the project shares.

add_library(surveymsg_options INTERFACE)

# The same angle prints the same on every processor.
target_compile_options(surveymsg_options INTERFACE -ffp-contract=off)
if(CMAKE_SYSTEM_PROCESSOR MATCHES "^(i.86|x86)$" OR (CMAKE_SIZEOF_VOID_P EQUAL 4 AND CMAKE_SYSTEM_PROCESSOR MATCHES "x86_64|AMD64"))
    target_compile_options(surveymsg_options INTERFACE -msse2 -mfpmath=sse)
endif()

if(SURVEYMSG_DEVELOPER)
    target_compile_options(surveymsg_options INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Werror
        $<$<NOT:$<BOOL:$<TARGET_PROPERTY:SURVEYMSG_IS_TEST>>>:-Wconversion>)
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
        # g++ 12 reports the tail of an inline text as unset where it is only swapped along, and overlaps
        # in the standard library's own "text" + string.
        target_compile_options(surveymsg_options INTERFACE -Wno-maybe-uninitialized -Wno-restrict)
    endif()
endif()

if(SURVEYMSG_FUZZ)
    target_compile_options(surveymsg_options INTERFACE -fsanitize=fuzzer-no-link)
endif()

if(SURVEYMSG_SANITIZE)
    target_compile_options(surveymsg_options INTERFACE
        -fsanitize=${SURVEYMSG_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(surveymsg_options INTERFACE -fsanitize=${SURVEYMSG_SANITIZE})
endif()
