# Headers of others that many sources include are compiled once for all targets that are
# compiled alike. A source still includes what it uses: the linter and the compilers of other
# systems, which do without precompiled headers, hold it to that.

include_guard()

# Tried with these alone.
if(NOT CMAKE_CXX_COMPILER_ID MATCHES "^(GNU|Clang)$")
  set(CMAKE_DISABLE_PRECOMPILE_HEADERS ON)
endif()

# tavrel_precompile(NAME [PROGRAM] HEADERS HEADERS… [LINK LIBRARIES…]): compiles headers for
# libraries, or for programs, that link these libraries.
function(tavrel_precompile name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "PROGRAM" "" "HEADERS;LINK")
  # Only a target that has a source has precompiled headers.
  set(source ${CMAKE_BINARY_DIR}/precompiled.cpp)
  file(CONFIGURE OUTPUT ${source} CONTENT "int main() {}\n")
  if(arg_PROGRAM)
    # Where position matters, programs are compiled in another way than libraries.
    add_executable(${name} EXCLUDE_FROM_ALL ${source})
  else()
    add_library(${name} OBJECT EXCLUDE_FROM_ALL ${source})
  endif()
  target_link_libraries(${name} PRIVATE tavrel_options ${arg_LINK})
  target_precompile_headers(${name} PRIVATE ${arg_HEADERS})
endfunction()

# tavrel_use_precompiled(TARGET PLAIN WIDGETS LIBRARIES…): lets a target that links these
# libraries use what was compiled as PLAIN, or as WIDGETS if it links Qt's. One that links
# another part of Qt only is compiled like neither.
function(tavrel_use_precompiled target plain widgets)
  set(qt none)
  foreach(library IN LISTS ARGN)
    if(library STREQUAL "Qt6::Widgets")
      set(of_library widgets)
    elseif(library MATCHES "^Qt6::")
      set(of_library other)
    elseif(TARGET ${library})
      get_target_property(of_library ${library} TAVREL_QT)
    else()
      set(of_library none)
    endif()
    if(of_library STREQUAL "widgets" OR (of_library STREQUAL "other" AND qt STREQUAL "none"))
      set(qt ${of_library})
    endif()
  endforeach()
  set_target_properties(${target} PROPERTIES TAVREL_QT ${qt})
  if(qt STREQUAL "widgets")
    target_precompile_headers(${target} REUSE_FROM ${widgets})
  elseif(qt STREQUAL "none")
    target_precompile_headers(${target} REUSE_FROM ${plain})
  endif()
endfunction()

set(TAVREL_STANDARD_HEADERS
  <algorithm> <chrono> <condition_variable> <cstdint> <deque> <filesystem> <fstream> <functional>
  <future> <map> <memory> <mutex> <optional> <random> <set> <sstream> <string> <string_view>
  <thread> <utility> <variant> <vector>)
