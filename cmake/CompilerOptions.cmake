# Warnings, hardening and sanitizers, the same for every target of the project.

# A compiler that is newer than ours knows more warnings; whoever only wants the program is not stopped by one.
option(VANTREL_WERROR "Treat warnings as errors; on in the presets that developers use" OFF)
set(VANTREL_SANITIZE "" CACHE STRING "Sanitizers to build with: empty, 'address,undefined' or 'thread'")
option(VANTREL_COVERAGE "Build for lcov" OFF)
option(VANTREL_QUICK_COMPILE "Compile Qt's headers once and sources in batches; hides an include that is missing" OFF)

find_program(CCACHE_PROGRAM ccache)
if(CCACHE_PROGRAM AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
    set(CMAKE_CXX_COMPILER_LAUNCHER ${CCACHE_PROGRAM})
endif()

function(vantrel_warnings target)
    target_compile_options(${target} PRIVATE ${ARGN} $<$<BOOL:${VANTREL_WERROR}>:-Werror>)
endfunction()

function(vantrel_compiler_options target)
    vantrel_warnings(${target}
        -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wnon-virtual-dtor -Woverloaded-virtual
        -Wold-style-cast -Wcast-qual -Wformat=2 -Wundef -Wnull-dereference)
    target_compile_definitions(${target} PRIVATE QT_NO_CAST_TO_ASCII QT_DEPRECATED_WARNINGS
        QT_DISABLE_DEPRECATED_BEFORE=0x050F00 _FILE_OFFSET_BITS=64)
    if(VANTREL_SANITIZE)
        # The checks that the sanitizers put in lead these warnings astray.
        target_compile_options(${target} PRIVATE -Wno-null-dereference
            $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)
        target_compile_options(${target} PRIVATE -fsanitize=${VANTREL_SANITIZE} -fno-omit-frame-pointer
            -fno-sanitize-recover=undefined)
        target_link_options(${target} PRIVATE -fsanitize=${VANTREL_SANITIZE})
    endif()
    if(VANTREL_COVERAGE)
        target_compile_options(${target} PRIVATE --coverage -fprofile-abs-path)
        target_link_options(${target} PRIVATE --coverage)
    endif()
    if(CMAKE_BUILD_TYPE MATCHES "Rel")
        target_compile_options(${target} PRIVATE -fstack-protector-strong -fstack-clash-protection)
        target_compile_definitions(${target} PRIVATE _FORTIFY_SOURCE=2)
        target_link_options(${target} PRIVATE -Wl,-z,relro,-z,now -Wl,--as-needed)
    endif()
endfunction()
