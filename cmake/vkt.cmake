# What every target of the program shares: warnings, sanitisers, the tree that is laid out at run time.

add_library(vkt_flags INTERFACE)
target_include_directories(vkt_flags INTERFACE ${PROJECT_SOURCE_DIR})
target_compile_options(vkt_flags INTERFACE -Wall -Wextra -Wshadow -Wconversion -Wno-sign-conversion -Wold-style-cast
    -Wnon-virtual-dtor -Woverloaded-virtual -Wnull-dereference -Werror)
if(VKT_SANITIZE AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # GCC 12 reports null dereferences inside its own headers once the sanitisers instrument them.
    target_compile_options(vkt_flags INTERFACE -Wno-null-dereference -Wno-maybe-uninitialized)
endif()
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    # GCC 12 reports impossible copies inside its own std::string once the optimiser has inlined it (its PR 105651).
    foreach(check restrict array-bounds stringop-overflow stringop-overread)
        target_compile_options(vkt_flags INTERFACE $<$<CONFIG:Release>:-Wno-${check}>)
    endforeach()
endif()
if(VKT_SANITIZE)
    target_compile_options(vkt_flags INTERFACE -fsanitize=${VKT_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
    target_link_options(vkt_flags INTERFACE -fsanitize=${VKT_SANITIZE})
endif()
if(VKT_FUZZ)
    target_compile_options(vkt_flags INTERFACE -fsanitize=fuzzer-no-link)
endif()
target_link_libraries(vkt_flags INTERFACE Threads::Threads)

# The tree the program runs in: bin/ with ../res, ../log and ../tools beside it.
set(VKT_STAGE ${CMAKE_BINARY_DIR}/stage)

# vkt_library(NAME [DIRS dir...] [LINK target...] [HIDE target...]): a static library of every .cpp in the folders (this
# one by default). What it links by HIDE reaches its users at the link step alone: they get no include path of it.
function(vkt_library name)
    cmake_parse_arguments(A "" "" "DIRS;LINK;HIDE" ${ARGN})
    if(NOT A_DIRS)
        set(A_DIRS ${CMAKE_CURRENT_SOURCE_DIR})
    endif()
    set(sources)
    foreach(dir IN LISTS A_DIRS)
        file(GLOB here CONFIGURE_DEPENDS ${dir}/*.cpp)
        list(APPEND sources ${here})
    endforeach()
    list(FILTER sources EXCLUDE REGEX "_main\\.cpp$")
    if(sources)
        add_library(${name} STATIC ${sources})
        target_link_libraries(${name} PUBLIC vkt_flags ${A_LINK} PRIVATE ${A_HIDE})
    else()
        add_library(${name} INTERFACE)
        target_link_libraries(${name} INTERFACE vkt_flags ${A_LINK})
    endif()
endfunction()

# vkt_family(FOLDER [LINK target...] [PAGES target...]): a family of models: vkt_FOLDER, and with windows vkt_FOLDER_pages.
function(vkt_family folder)
    cmake_parse_arguments(F "" "" "LINK;PAGES" ${ARGN})
    vkt_library(vkt_${folder} LINK vkt_session ${F_LINK})
    if(VKT_GUI)
        vkt_library(vkt_${folder}_pages DIRS ${CMAKE_CURRENT_SOURCE_DIR}/pages LINK vkt_${folder} vkt_fields ${F_PAGES})
    endif()
endfunction()

# vkt_test(NAME DIR dir [WHOLE] [LINK target...] [LABELS label...]): one GoogleTest program of every .cpp in the folder.
# WHOLE makes it one test of ctest; otherwise each test of the program is one.
function(vkt_test name)
    cmake_parse_arguments(A "WHOLE" "DIR" "LINK;LABELS;PROPERTIES" ${ARGN})
    file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/${A_DIR}/*.cpp)
    if(NOT sources)
        return()
    endif()
    add_executable(${name} ${sources})
    target_link_libraries(${name} PRIVATE ${A_LINK} vkt_flags vkt_gtest)
    target_compile_definitions(${name} PRIVATE VKT_SOURCE_TREE="${PROJECT_SOURCE_DIR}")
    if(WIN32)
        # The only Windows build is the optimised one; the tests themselves compile in half the time without that.
        target_compile_options(${name} PRIVATE -O0)
    endif()
    target_precompile_headers(${name} PRIVATE <gmock/gmock.h> <gtest/gtest.h> <functional> <string> <vector>)
    set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/tests/${A_DIR})
    set(labels)
    if(A_LABELS) # an empty value would be lost on the way and take the next property's name for itself
        set(labels LABELS "${A_LABELS}")
    endif()
    if(A_WHOLE)
        add_test(NAME ${A_DIR}/all COMMAND ${name} WORKING_DIRECTORY ${CMAKE_BINARY_DIR}/tests/${A_DIR})
        set_tests_properties(${A_DIR}/all PROPERTIES TIMEOUT 300 ${labels} ${A_PROPERTIES})
        return()
    endif()
    # Values that print as raw bytes hold addresses: only the tests' own names are the same in every build.
    gtest_discover_tests(${name} NO_PRETTY_VALUES TEST_PREFIX "${A_DIR}/" WORKING_DIRECTORY ${CMAKE_BINARY_DIR}/tests/${A_DIR}
        DISCOVERY_MODE PRE_TEST DISCOVERY_TIMEOUT 120 PROPERTIES TIMEOUT 120 ${labels} ${A_PROPERTIES})
endfunction()
