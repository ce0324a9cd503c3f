# Every target of ours is made by one of these, so that warnings, sanitizers and include rules are
# the same everywhere. Link order is the architecture: see docs/architecture.md.

add_library(wardex_compile_options INTERFACE)
target_compile_options(wardex_compile_options INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wformat=2 -Wnon-virtual-dtor
    # What the device's processor is stricter about than a desk's: alignment, and char without a sign.
    $<$<CXX_COMPILER_ID:GNU>:-Wcast-align=strict>
    $<$<CXX_COMPILER_ID:GNU>:-Wsign-conversion>
    $<$<BOOL:${WARDEX_WERROR}>:-Werror>)
target_compile_definitions(wardex_compile_options INTERFACE
    QT_NO_CAST_FROM_BYTEARRAY QT_NO_KEYWORDS
    $<$<CONFIG:Release>:QT_NO_DEBUG_OUTPUT>)
# Where a target's sources become one: what is private to each of them is not meant for others.
target_compile_options(wardex_compile_options INTERFACE
    $<$<AND:$<CXX_COMPILER_ID:GNU>,$<BOOL:$<TARGET_PROPERTY:UNITY_BUILD>>>:-Wno-subobject-linkage>)
if(CMAKE_SYSTEM_PROCESSOR MATCHES "^arm")
    # A remark about mixing with code of GCC 6; one compiler makes the whole image.
    target_compile_options(wardex_compile_options INTERFACE -Wno-psabi)
endif()
if(WARDEX_SANITIZE)
    target_compile_options(wardex_compile_options INTERFACE
        -fsanitize=${WARDEX_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer
        # The checks that the sanitizers add make GCC see unset values in its own <regex>; the
        # builds without them look for real ones.
        $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)
    target_link_options(wardex_compile_options INTERFACE -fsanitize=${WARDEX_SANITIZE})
endif()
if(WARDEX_COVERAGE)
    # Counted in a file that is mapped, one for all processes of a program: killed ones count, too.
    # The boxes of the tests show this folder to the programs inside.
    set(counts ${PROJECT_BINARY_DIR}/counts)
    file(MAKE_DIRECTORY ${counts})
    target_compile_options(wardex_compile_options INTERFACE
        -fcoverage-mapping "SHELL:-mllvm -runtime-counter-relocation"
        -fprofile-instr-generate=${counts}/%m%c.profraw)
    target_link_options(wardex_compile_options INTERFACE -fprofile-instr-generate)
endif()

# wardex_add_library(NAME SOURCES ... [PUBLIC_INCLUDE dir] [LINKS ...] [PRIVATE_LINKS ...] [MOC])
# MOC: some class carries Q_OBJECT; list its header among the SOURCES.
function(wardex_add_library name)
    cmake_parse_arguments(ARG "MOC" "PUBLIC_INCLUDE" "SOURCES;LINKS;PRIVATE_LINKS" ${ARGN})
    add_library(${name} STATIC ${ARG_SOURCES})
    set_target_properties(${name} PROPERTIES AUTOMOC ${ARG_MOC})
    if(ARG_PUBLIC_INCLUDE)
        target_include_directories(${name} PUBLIC
            $<BUILD_INTERFACE:${CMAKE_CURRENT_SOURCE_DIR}/${ARG_PUBLIC_INCLUDE}>)
    endif()
    # Our warnings are no business of a program that links an installed library.
    target_link_libraries(${name} PUBLIC ${ARG_LINKS}
        PRIVATE ${ARG_PRIVATE_LINKS} $<BUILD_INTERFACE:wardex_compile_options>)
endfunction()

# wardex_add_executable(NAME SOURCES ... [LINKS ...] [MOC])
function(wardex_add_executable name)
    cmake_parse_arguments(ARG "MOC" "" "SOURCES;LINKS" ${ARGN})
    add_executable(${name} ${ARG_SOURCES})
    set_target_properties(${name} PROPERTIES AUTOMOC ${ARG_MOC})
    target_link_libraries(${name} PRIVATE ${ARG_LINKS} wardex_compile_options)
endfunction()
