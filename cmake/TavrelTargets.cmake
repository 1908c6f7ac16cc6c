# What every target of ours shares. A library holds one folder and is named after it.

include_guard()
include(CheckLinkerFlag)
include(${CMAKE_CURRENT_LIST_DIR}/PrecompiledHeaders.cmake)

# Off for whoever just wants to build: a newer compiler knows new warnings.
option(TAVREL_WARNINGS_AS_ERRORS "Stop at the first warning in our own code" OFF)
set(TAVREL_SANITIZE "" CACHE STRING "Sanitizers to build with, as -fsanitize= takes them")
option(TAVREL_COVERAGE "Count executed lines and branches" OFF)
option(TAVREL_UNITY_TESTS "Compile several sources of the tests as one" OFF)
option(TAVREL_UNITY_LIBRARIES "Compile several sources of a library as one" OFF)
option(TAVREL_TESTS_TOGETHER "Run all tests of a program at once, if they drive no other program" OFF)

add_library(tavrel_options INTERFACE)
target_include_directories(tavrel_options INTERFACE ${PROJECT_SOURCE_DIR})
target_compile_options(tavrel_options INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wnon-virtual-dtor
  -Wold-style-cast -Woverloaded-virtual -Wextra-semi)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  # False alarms of GCC 12 on "text" + std::to_string(…) when optimising (GCC bug 105651).
  target_compile_options(tavrel_options INTERFACE -Wno-array-bounds -Wno-restrict
    -Wno-stringop-overflow)
endif()
if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
  # The library of GCC 12 uses in std::stable_sort what it declares deprecated, and recent Clangs
  # say so. What we use ourselves, GCC tells.
  target_compile_options(tavrel_options INTERFACE -Wno-deprecated-declarations)
  # Its own linker is much quicker than the system's, and the tests are many programs.
  check_linker_flag(CXX -fuse-ld=lld TAVREL_LLD_LINKS)
  if(TAVREL_LLD_LINKS)
    target_link_options(tavrel_options INTERFACE -fuse-ld=lld)
  endif()
endif()
if(TAVREL_WARNINGS_AS_ERRORS)
  target_compile_options(tavrel_options INTERFACE -Werror)
endif()
if(TAVREL_SANITIZE)
  target_compile_options(tavrel_options INTERFACE
    -fsanitize=${TAVREL_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(tavrel_options INTERFACE -fsanitize=${TAVREL_SANITIZE})
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # The sanitizers' added paths mislead GCC's flow analysis into false alarms.
    target_compile_options(tavrel_options INTERFACE -Wno-maybe-uninitialized)
  endif()
endif()
if(TAVREL_COVERAGE)
  target_compile_options(tavrel_options INTERFACE --coverage -fprofile-update=atomic)
  target_link_options(tavrel_options INTERFACE --coverage)
  target_compile_definitions(tavrel_options INTERFACE TAVREL_COVERAGE)
endif()

# What GLib asks for, which some tests use; its fields are named like Qt's keywords. Targets
# that share precompiled headers must agree on both.
target_compile_options(tavrel_options INTERFACE -pthread)
target_compile_definitions(tavrel_options INTERFACE QT_NO_KEYWORDS)

tavrel_precompile(tavrel_precompiled HEADERS ${TAVREL_STANDARD_HEADERS} <nlohmann/json.hpp>
  LINK nlohmann_json::nlohmann_json)
tavrel_precompile(tavrel_precompiled_widgets HEADERS ${TAVREL_STANDARD_HEADERS}
  <QApplication> <QPainter> <QPainterPath> <QWidget> LINK Qt6::Widgets)

# Sources of one folder share most of what they include and instantiate, so several compiled as
# one take half the time. Only what is not handed out is compiled like this: in most presets tests,
# in those of Clang libraries too (when GCC 12 optimises so much at once it gives false alarms).
function(tavrel_unite target several)
  # The linter joins what is not joined here.
  if(several)
    set_target_properties(${target} PROPERTIES UNITY_BUILD ON UNITY_BUILD_BATCH_SIZE 16)
  endif()
endfunction()

function(tavrel_unite_tests target)
  tavrel_unite(${target} ${TAVREL_UNITY_TESTS})
endfunction()

# tavrel_library(NAME SOURCES… [LINK LIBRARIES…]): a static library of this folder.
function(tavrel_library name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "LINK")
  add_library(${name} STATIC ${arg_UNPARSED_ARGUMENTS})
  target_link_libraries(${name} PUBLIC tavrel_options ${arg_LINK})
  tavrel_unite(${name} ${TAVREL_UNITY_LIBRARIES})
  tavrel_use_precompiled(${name} tavrel_precompiled tavrel_precompiled_widgets ${arg_LINK})
endfunction()

# tavrel_test_program(NAME SOURCES… [LINK LIBRARIES…]): an executable that only tests need.
function(tavrel_test_program name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "LINK")
  add_executable(${name} ${arg_UNPARSED_ARGUMENTS})
  target_link_libraries(${name} PRIVATE tavrel_options tavrel_test_options ${arg_LINK})
  tavrel_use_precompiled(${name} tavrel_test_precompiled tavrel_test_precompiled_widgets
    ${arg_LINK})
  tavrel_unite_tests(${name})
  set_target_properties(${name} PROPERTIES
    RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/tests)
endfunction()

# tavrel_test_library(NAME SOURCES… [LINK LIBRARIES…]): a static library that only tests need, and
# that takes little processor time itself: it is compiled as they are.
function(tavrel_test_library name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "LINK")
  add_library(${name} STATIC ${arg_UNPARSED_ARGUMENTS})
  target_link_libraries(${name} PUBLIC tavrel_options ${arg_LINK} PRIVATE tavrel_test_options)
  # Programs and libraries are compiled alike where nothing of Qt's is linked.
  tavrel_use_precompiled(${name} tavrel_test_precompiled "" ${arg_LINK})
  tavrel_unite_tests(${name})
endfunction()

# tavrel_test(NAME SOURCES… [LINK LIBRARIES…] [LABELS …]): a GoogleTest executable. Those that drive
# other programs have labels, and ctest runs their tests one by one. So it does with the others,
# unless the preset runs them together: to start a program takes far longer than most tests do.
function(tavrel_test name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "LINK;LABELS")
  tavrel_test_program(${name} ${arg_UNPARSED_ARGUMENTS} LINK GTest::gmock_main ${arg_LINK})
  # What waits for other processes most of the time starts early: what just reckons fills the
  # processors beside it.
  if(arg_LABELS)
    gtest_discover_tests(${name} DISCOVERY_TIMEOUT 60
      PROPERTIES TIMEOUT 300 COST 1 LABELS "${arg_LABELS}")
  elseif(NOT TAVREL_TESTS_TOGETHER)
    gtest_discover_tests(${name} DISCOVERY_TIMEOUT 60 PROPERTIES TIMEOUT 300 COST 0)
  else()
    add_test(NAME ${name} COMMAND ${name})
    # Some of its tests wait, one after the other. A skipped one must not count as passed: it is named
    # at the end, and what FAILED only after that.
    set_tests_properties(${name} PROPERTIES
      TIMEOUT 900 COST 1 SKIP_REGULAR_EXPRESSION "\\[  SKIPPED \\] [^ \n]+\n[^F]*$")
  endif()
endfunction()
