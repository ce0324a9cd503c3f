find_package(GTest REQUIRED)
include(GoogleTest)

# wardex_add_test(NAME LABEL unit|component SOURCES ... [LINKS ...] [BOX] [MOC] [TIMEOUT s])
#
# One test program; each of its claims becomes a test of its own in ctest. With BOX every claim runs
# in a private box with the device's fixed paths (tests/support/in-box), so that claims can run side
# by side; exit status 77 there means "cannot be shown on this machine" and ctest says Skipped.
function(wardex_add_test name)
    cmake_parse_arguments(ARG "BOX;MOC" "LABEL;TIMEOUT" "SOURCES;LINKS" ${ARGN})
    if(NOT ARG_TIMEOUT)
        set(ARG_TIMEOUT 60)
    endif()
    set(moc)
    if(ARG_MOC)
        set(moc MOC)
    endif()
    wardex_add_executable(${name} ${moc} SOURCES ${ARG_SOURCES}
        LINKS ${ARG_LINKS} GTest::gtest GTest::gmock GTest::gtest_main)
    set(properties LABELS ${ARG_LABEL} TIMEOUT ${ARG_TIMEOUT})
    if(ARG_BOX)
        set_property(TARGET ${name} PROPERTY CROSSCOMPILING_EMULATOR
            ${PROJECT_SOURCE_DIR}/tests/support/in-box)
        list(APPEND properties SKIP_RETURN_CODE 77)
    endif()
    gtest_discover_tests(${name} TEST_PREFIX "${name}/" PROPERTIES ${properties} DISCOVERY_TIMEOUT 30)
endfunction()
