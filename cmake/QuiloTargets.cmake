# What every target of this project shares: quilo_target(NAME) hangs the language level, the
# floating-point rules and our warnings on it. Nothing here reaches a project that embeds us.

include(${CMAKE_CURRENT_LIST_DIR}/QuiloLint.cmake)

set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/bin)
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/bin)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

function(quilo_target name)
    target_compile_features(${name} PUBLIC cxx_std_20)
    set_target_properties(${name} PROPERTIES CXX_EXTENSIONS OFF)
    if(MSVC)
        target_compile_options(${name} PRIVATE /W4 /WX /utf-8 /fp:precise /permissive-)
    else()
        # Geometry compares and rounds the same on every compiler: no contraction, no fast-math.
        target_compile_options(${name} PRIVATE
            -ffp-contract=off
            -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wdouble-promotion
            -Wold-style-cast -Woverloaded-virtual -Wnon-virtual-dtor -Werror)
    endif()
    if(WIN32 AND NOT MSVC)
        # What ships is the same wherever and whenever it is built.
        target_compile_options(${name} PRIVATE -fmacro-prefix-map=${PROJECT_SOURCE_DIR}/=)
        target_link_options(${name} PRIVATE LINKER:--no-insert-timestamp)
    endif()
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
        # Optimising, g++ 12 sees overlapping memory in every "text" + std::string.
        target_compile_options(${name} PRIVATE -Wno-restrict)
    endif()
    if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang" AND CMAKE_CXX_COMPILER_VERSION VERSION_GREATER_EQUAL 19)
        # libstdc++ 12 uses a deprecated function inside std::stable_sort, which clang blames on us.
        target_compile_options(${name} PRIVATE -Wfunction-effects -Wthread-safety -Wno-deprecated-declarations)
    endif()
    if(CMAKE_UNITY_BUILD AND NOT MSVC)
        target_compile_options(${name} PRIVATE -Wno-shadow)  # of names in files that are no neighbours
    endif()
    if(QUILO_LINT)
        quilo_lint_header_filter(headers ${PROJECT_SOURCE_DIR})
        set(tidy clang-tidy-19 --quiet "--header-filter=${headers}")
        if(QUILO_LINT_DEEP)
            list(APPEND tidy "--checks=clang-analyzer-*,-clang-analyzer-optin.performance.Padding")
        endif()
        set_target_properties(${name} PROPERTIES CXX_CLANG_TIDY "${tidy}")
    endif()
endfunction()
