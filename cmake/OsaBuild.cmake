# The house's targets: rooms (static libraries), tests and fuzz targets, each with one set of flags.

# Four-character codes are written the way the Mac writes them: as character constants.
add_compile_options(-Wall -Wextra -Wpedantic -Werror -Wno-multichar)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # g++ 12 warns of overlaps inside std::string that cannot be (GCC bug 105329).
    add_compile_options(-Wno-restrict)
endif()
# TCLString's units are `unsigned short`, ICU's are `char16_t`: the same bytes under two types.
add_compile_options(-fno-strict-aliasing)
if(OSA_SANITIZE)
    add_compile_options(-fsanitize=${OSA_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    add_link_options(-fsanitize=${OSA_SANITIZE})
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
        # With instrumentation g++ 12 no longer sees that an empty std::optional is not read.
        add_compile_options(-Wno-maybe-uninitialized)
    endif()
endif()
if(OSA_FUZZ)
    add_compile_options(-fsanitize=fuzzer-no-link)
    add_link_options(-fsanitize=fuzzer-no-link)
endif()

find_program(OSA_CCACHE ccache)
if(OSA_CCACHE)
    set(CMAKE_CXX_COMPILER_LAUNCHER ${OSA_CCACHE})
endif()

# osa_room(NAME FLOOR n SOURCES a.cpp ... [DEPS room ...] [LIBS imported ...])
# One room: a static library of position-independent code. DEPS are rooms of lower floors, which is
# checked here; the include direction inside the sources is checked by tools/check_layers.py.
function(osa_room name)
    cmake_parse_arguments(ROOM "" "FLOOR" "SOURCES;DEPS;LIBS" ${ARGN})
    add_library(${name} STATIC ${ROOM_SOURCES})
    target_include_directories(${name} PUBLIC ${CMAKE_SOURCE_DIR} ${CMAKE_SOURCE_DIR}/platform/include)
    set_target_properties(${name} PROPERTIES OSA_FLOOR ${ROOM_FLOOR})
    foreach(dep IN LISTS ROOM_DEPS)
        get_target_property(floor ${dep} OSA_FLOOR)
        if(NOT floor LESS ROOM_FLOOR)
            message(FATAL_ERROR "${name} (floor ${ROOM_FLOOR}) may not depend on ${dep} (floor ${floor})")
        endif()
    endforeach()
    target_link_libraries(${name} PUBLIC ${ROOM_DEPS} PRIVATE ${ROOM_LIBS})
endfunction()

# osa_test(NAME SOURCES a.cpp ... DEPS target ... [ENVIRONMENT VAR=value ...] [LABELS label ...])
# One GoogleTest program, run as one CTest.
function(osa_test name)
    cmake_parse_arguments(TEST "" "" "SOURCES;DEPS;ENVIRONMENT;LABELS" ${ARGN})
    add_executable(${name} ${TEST_SOURCES})
    target_include_directories(${name} PRIVATE ${CMAKE_SOURCE_DIR} ${CMAKE_SOURCE_DIR}/platform/include)
    # First: what the shared library has must not be taken from a static room, whose fault counter
    # nobody asks.
    if("osaplatform" IN_LIST TEST_DEPS)
        list(REMOVE_ITEM TEST_DEPS osaplatform)
        list(PREPEND TEST_DEPS osaplatform)
    endif()
    target_link_libraries(${name} PRIVATE ${TEST_DEPS} GTest::gtest_main)
    add_test(NAME ${name} COMMAND ${name})
    set_tests_properties(${name} PROPERTIES TIMEOUT 300 LABELS "${TEST_LABELS}"
        ENVIRONMENT "OSA_SOURCE_DIR=${CMAKE_SOURCE_DIR};OSA_BINARY_DIR=${CMAKE_BINARY_DIR};${TEST_ENVIRONMENT}")
endfunction()

# osa_fuzz_target(NAME SOURCE a.cpp SEEDS dir DEPS target ...)
# A libFuzzer target with OSA_FUZZ; always a CTest that replays the seeds in `dir` (files of bytes kept
# small, each named after what it holds).
function(osa_fuzz_target name)
    cmake_parse_arguments(FUZZ "" "SOURCE;SEEDS" "DEPS" ${ARGN})
    if(OSA_FUZZ)
        add_executable(${name} ${FUZZ_SOURCE})
        target_link_options(${name} PRIVATE -fsanitize=fuzzer)
        set(replay -runs=0)
    else()
        add_executable(${name} ${FUZZ_SOURCE} ${CMAKE_SOURCE_DIR}/fuzz/ReplayMain.cpp)
        set(replay)
    endif()
    target_link_libraries(${name} PRIVATE ${FUZZ_DEPS})
    add_dependencies(fuzz_targets ${name})
    add_test(NAME ${name}_seeds COMMAND ${name} ${replay} ${CMAKE_CURRENT_SOURCE_DIR}/${FUZZ_SEEDS})
    set_tests_properties(${name}_seeds PROPERTIES TIMEOUT 120 LABELS fuzz)
endfunction()
