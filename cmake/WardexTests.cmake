find_package(GTest REQUIRED)
include(GoogleTest)

# wardex_compile_fast(NAME)
#
# For a target of the tests: what they are made of takes longer to compile than to run, the more so
# when the sanitizers' checks are optimized.
function(wardex_compile_fast name)
    if(WARDEX_BATCH_TESTS)
        set_target_properties(${name} PROPERTIES UNITY_BUILD ON)
    endif()
    # Expected values are plain numbers.
    target_compile_options(${name} PRIVATE -Wno-sign-conversion)
    if(WARDEX_SANITIZE)
        target_compile_options(${name} PRIVATE -O0)
    elseif(CMAKE_CROSSCOMPILING)
        # The packages' hardening wants to be optimized.
        target_compile_options(${name} PRIVATE -O0 -U_FORTIFY_SOURCE)
    endif()
endfunction()

# What a test starts must be able to run here: for another processor a script of the program's name
# that puts the emulator in front.
set(WARDEX_STARTED_FOLDER ${CMAKE_RUNTIME_OUTPUT_DIRECTORY})
if(CMAKE_CROSSCOMPILING)
    set(WARDEX_STARTED_FOLDER ${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/emulated)
endif()

# wardex_started_by_tests(TARGET ...): puts them into WARDEX_STARTED_FOLDER.
function(wardex_started_by_tests)
    if(NOT CMAKE_CROSSCOMPILING)
        return()
    endif()
    # It finds its libraries as the test does that starts it.
    list(GET CMAKE_CROSSCOMPILING_EMULATOR 0 emulator)
    foreach(target IN LISTS ARGN)
        file(GENERATE OUTPUT ${WARDEX_STARTED_FOLDER}/${target}
            CONTENT "#!/bin/sh\nexec ${emulator} -0 \"$0\" $<TARGET_FILE:${target}> \"$@\"\n"
            FILE_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE
                WORLD_READ WORLD_EXECUTE)
    endforeach()
endfunction()

# wardex_test_launcher(VARIABLE BOX): what is put in front of a test program: the box if BOX is true, and
# the emulator in a cross build. Exit status 77 of either means "cannot be shown".
function(wardex_test_launcher variable is_boxed)
    set(support ${PROJECT_SOURCE_DIR}/tests/support)
    set(launcher)
    if(CMAKE_CROSSCOMPILING)
        set(launcher ${support}/emulated)
        if(is_boxed)
            list(APPEND launcher --box)
        endif()
        list(APPEND launcher ${CMAKE_CROSSCOMPILING_EMULATOR})
    elseif(is_boxed)
        set(launcher ${support}/in-box)
    endif()
    set(${variable} ${launcher} PARENT_SCOPE)
endfunction()

# wardex_add_test(NAME LABEL unit|component SOURCES ... [LINKS ...] [BOX] [LONG] [MOC] [TIMEOUT s])
#
# One test program; each of its claims becomes a test of its own in ctest. With BOX every claim runs
# in a private box with the device's fixed paths (tests/support/in-box), so that claims can run side
# by side; exit status 77 there means "cannot be shown on this machine" and ctest says Skipped.
# Where starting a program costs more than a small claim (WARDEX_UNITS_BY_PROGRAM), a program of the
# label unit is one test.
# With LONG the claims of suites called Long... have the label soak and half an hour. They are about
# memory: the C library keeps no blocks for a thread's next use, which would count as allocated.
function(wardex_add_test name)
    cmake_parse_arguments(ARG "BOX;LONG;MOC" "LABEL;TIMEOUT" "SOURCES;LINKS" ${ARGN})
    if(NOT ARG_TIMEOUT)
        set(ARG_TIMEOUT 60)
    endif()
    set(moc)
    if(ARG_MOC)
        set(moc MOC)
    endif()
    wardex_add_executable(${name} ${moc} SOURCES ${ARG_SOURCES}
        LINKS ${ARG_LINKS} GTest::gtest GTest::gmock GTest::gtest_main)
    wardex_compile_fast(${name})
    set(properties)
    wardex_test_launcher(launcher ${ARG_BOX})
    if(launcher)
        set_property(TARGET ${name} PROPERTY CROSSCOMPILING_EMULATOR ${launcher})
        list(APPEND properties SKIP_RETURN_CODE 77)
    endif()
    if(WARDEX_UNITS_BY_PROGRAM AND ARG_LABEL STREQUAL unit AND NOT ARG_BOX)
        add_test(NAME ${name}/all COMMAND ${name})
        set_tests_properties(${name}/all PROPERTIES ${properties} LABELS unit TIMEOUT 300)
        return()
    endif()
    set(chosen)
    if(ARG_LONG)
        list(APPEND properties ENVIRONMENT GLIBC_TUNABLES=glibc.malloc.tcache_count=0)
        set(chosen TEST_FILTER -Long*)
        gtest_discover_tests(${name} TEST_PREFIX "${name}/" TEST_FILTER Long* TEST_LIST ${name}_long
            PROPERTIES ${properties} LABELS soak TIMEOUT 1800
            DISCOVERY_TIMEOUT 30)
    endif()
    gtest_discover_tests(${name} TEST_PREFIX "${name}/" ${chosen}
        PROPERTIES ${properties} LABELS ${ARG_LABEL} TIMEOUT ${ARG_TIMEOUT} DISCOVERY_TIMEOUT 30)
endfunction()

# wardex_not_emulated(NAME REASON): a test that a cross build leaves out, and says so.
function(wardex_not_emulated name reason)
    add_test(NAME ${name}/left_out COMMAND ${CMAKE_COMMAND} -E echo "not under emulation: ${reason}")
    set_tests_properties(${name}/left_out PROPERTIES
        LABELS component SKIP_REGULAR_EXPRESSION "not under emulation")
endfunction()

# wardex_add_pytest(NAME LABEL unit|component|system FOLDER dir [BY_FILE] [TIMEOUT s])
#
# The test_*.py of a folder; each of their claims becomes a test of its own in ctest (with BY_FILE
# those of a file together: starting Python costs more than a small claim), and what pytest skips is
# Skipped there too. They import the packages of the simulator and the benchmarks, and find the built
# programs in the folder that WARDEX_BIN names. Not in a cross build: they show what this machine's
# Python and a whole device do, which the board does for the other processor.
function(wardex_add_pytest name)
    if(CMAKE_CROSSCOMPILING)
        add_custom_target(${name})
        wardex_not_emulated(${name} "Python runs on this machine, whatever the programs are built for")
        return()
    endif()
    cmake_parse_arguments(ARG "BY_FILE" "LABEL;FOLDER;TIMEOUT" "" ${ARGN})
    set(unit claim)
    if(ARG_BY_FILE)
        set(unit file)
    endif()
    if(NOT ARG_TIMEOUT)
        set(ARG_TIMEOUT 60)
    endif()
    file(GLOB files CONFIGURE_DEPENDS ${ARG_FOLDER}/*.py)
    file(GLOB packages CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/simulator/wardex_desk/*.py
        ${PROJECT_SOURCE_DIR}/simulator/wardex_board/*.py
        ${PROJECT_SOURCE_DIR}/benchmarks/wardex_bench/*.py
        ${PROJECT_SOURCE_DIR}/benchmarks/wardex_bench/rows/*.py)
    set(python /usr/bin/python3)
    set(claims ${PROJECT_SOURCE_DIR}/tests/support/pytest_claims.py)
    set(collected ${CMAKE_CURRENT_BINARY_DIR}/${name}_claims.cmake)
    set(path PYTHONPATH=${PROJECT_SOURCE_DIR}/simulator:${PROJECT_SOURCE_DIR}/benchmarks
        PYTHONDONTWRITEBYTECODE=1
        PYTEST_DISABLE_PLUGIN_AUTOLOAD=1)
    add_custom_command(OUTPUT ${collected}
        COMMAND ${CMAKE_COMMAND} -E env ${path} ${python} ${claims} collect
            ${name} ${collected} ${ARG_LABEL} ${ARG_TIMEOUT} ${ARG_FOLDER} ${unit}
        DEPENDS ${files} ${packages} ${claims}
        COMMENT "Collecting the claims of ${name}")
    add_custom_target(${name} ALL DEPENDS ${collected})

    set(environment ${path} WARDEX_BIN=${CMAKE_RUNTIME_OUTPUT_DIRECTORY})
    set(included ${CMAKE_CURRENT_BINARY_DIR}/${name}_include.cmake)
    file(WRITE ${included}
        "set(${name}_ENVIRONMENT [==[${environment}]==])\n"
        "if(EXISTS \"${collected}\")\n  include(\"${collected}\")\n"
        "else()\n  add_test(${name}_NOT_BUILT ${name}_NOT_BUILT)\nendif()\n")
    set_property(DIRECTORY APPEND PROPERTY TEST_INCLUDE_FILES ${included})
endfunction()

# wardex_one_device_at_a_time(TEST ...)
#
# Where the kernel offers no namespaces the device's box is the container itself, which has room for
# one: these tests then run one after the other.
function(wardex_one_device_at_a_time)
    execute_process(COMMAND bwrap --unshare-pid --unshare-net --ro-bind / / true
        RESULT_VARIABLE refused OUTPUT_QUIET ERROR_QUIET)
    if(refused)
        set_tests_properties(${ARGN} PROPERTIES RESOURCE_LOCK container)
    endif()
endfunction()
