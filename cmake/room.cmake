# What every room shares: warnings as errors, sanitizers where asked for, and the declaration of rooms and tests.
include(GoogleTest)

add_library(vantrel_flags INTERFACE)
# -Wrestrict of GCC 12 misjudges std::string's operator+ on optimised code. The code is clean by the warnings of GCC;
# Clang, which compiles the fuzzers, has others.
target_compile_options(vantrel_flags INTERFACE -Wall -Wextra
                       $<$<CXX_COMPILER_ID:GNU>:-Wconversion -Wshadow -Werror -Wno-restrict>)
target_compile_definitions(vantrel_flags INTERFACE VANTREL_VERSION="${PROJECT_VERSION}")
if(VANTREL_SANITIZE)
  # At a fixed address and with its libraries, a program starts in two thirds of the time; tests start it very often.
  add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer -fno-pie)
  add_link_options(-fsanitize=address,undefined -no-pie -static-libasan -static-libubsan)
endif()
if(VANTREL_FUZZ)
  add_compile_options(-fsanitize=fuzzer-no-link,address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=address,undefined)
endif()
if(WIN32)
  # UNICODE: every call of the window is the wide one; ANSI stdio: printf with the standard's conversions.
  target_compile_definitions(vantrel_flags INTERFACE UNICODE _UNICODE WIN32_LEAN_AND_MEAN NOMINMAX
                             _WIN32_WINNT=0x0A00 __USE_MINGW_ANSI_STDIO=1)
else()
  target_compile_definitions(vantrel_flags INTERFACE _FILE_OFFSET_BITS=64)
endif()

# The headers of the standard library that most rooms include, compiled once. Sources include what they use themselves:
# fuzzers and clang-tidy compile them without.
add_library(vantrel_standard_headers OBJECT cmake/standard_headers.cpp)
target_link_libraries(vantrel_standard_headers PRIVATE vantrel_flags)
target_precompile_headers(vantrel_standard_headers
  PRIVATE
    <algorithm>
    <array>
    <cstdint>
    <functional>
    <map>
    <memory>
    <optional>
    <set>
    <span>
    <string>
    <string_view>
    <vector>
)

# vantrel_room(NAME [WINDOWS_ONLY] [SOURCES ...] [USES ROOM...] [LINKS LIBRARY...]): the library vantrel_NAME of the current
# folder. USES names the rooms whose headers it may include; check_rooms.py compares that with the includes. Without
# sources, the room is a header-only library. WINDOWS_ONLY: on other systems, the room is declared but not built.
function(vantrel_room name)
  cmake_parse_arguments(room "WINDOWS_ONLY" "" "SOURCES;USES;LINKS" ${ARGN})
  vantrel_declare_room(${name} ${room_USES})
  if(room_WINDOWS_ONLY AND NOT WIN32)
    return()
  endif()
  list(TRANSFORM room_USES PREPEND vantrel_ OUTPUT_VARIABLE uses)
  if(room_SOURCES)
    add_library(vantrel_${name} STATIC ${room_SOURCES})
    target_include_directories(vantrel_${name} PUBLIC ${PROJECT_SOURCE_DIR})
    target_link_libraries(vantrel_${name} PUBLIC ${uses} ${room_LINKS} PRIVATE vantrel_flags)
    if(NOT room_WINDOWS_ONLY)
      # GCC 12 misjudges the bounds of wide strings whose templates come from a precompiled header.
      target_precompile_headers(vantrel_${name} REUSE_FROM vantrel_standard_headers)
    endif()
  else()
    add_library(vantrel_${name} INTERFACE)
    target_include_directories(vantrel_${name} INTERFACE ${PROJECT_SOURCE_DIR})
    target_link_libraries(vantrel_${name} INTERFACE ${uses} ${room_LINKS})
  endif()
endfunction()

# vantrel_declare_room(NAME ROOM...): lists a target of the current folder, and the rooms it uses, for check_rooms.py.
function(vantrel_declare_room name)
  file(RELATIVE_PATH folder ${PROJECT_SOURCE_DIR} ${CMAKE_CURRENT_SOURCE_DIR})
  list(JOIN ARGN " " uses)
  set_property(GLOBAL APPEND PROPERTY VANTREL_ROOMS "${folder} ${name} ${uses}")
endfunction()

# vantrel_write_rooms(): writes what all rooms have declared to rooms.txt in the build folder, one target a line: its folder,
# its name and the rooms it uses.
function(vantrel_write_rooms)
  get_property(rooms GLOBAL PROPERTY VANTREL_ROOMS)
  list(JOIN rooms "\n" text)
  file(WRITE ${CMAKE_BINARY_DIR}/rooms.txt "${text}\n")
endfunction()

# vantrel_unit_test(NAME SOURCES ... [USES ROOM...] [LINKS TARGET...]): a GoogleTest program whose cases ctest lists as
# "<preset>.<name>.<case>".
function(vantrel_unit_test name)
  cmake_parse_arguments(unit "" "" "SOURCES;USES;LINKS" ${ARGN})
  list(TRANSFORM unit_USES PREPEND vantrel_)
  add_executable(${name} ${unit_SOURCES})
  target_link_libraries(${name} PRIVATE ${unit_USES} ${unit_LINKS} vantrel_test_support vantrel_flags GTest::gmock_main)
  target_precompile_headers(${name} REUSE_FROM vantrel_test_headers)
  get_filename_component(preset ${CMAKE_BINARY_DIR} NAME)
  gtest_discover_tests(${name} TEST_PREFIX "${preset}.${name}." DISCOVERY_MODE PRE_TEST DISCOVERY_TIMEOUT 120
                       PROPERTIES TIMEOUT 300)
endfunction()

# vantrel_resources(TARGET): what the resource script of a Windows program needs to know.
function(vantrel_resources target)
  foreach(part MAJOR MINOR PATCH)
    target_compile_definitions(${target} PRIVATE $<$<COMPILE_LANGUAGE:RC>:VERSION_${part}=${PROJECT_VERSION_${part}}>)
  endforeach()
  target_compile_definitions(${target} PRIVATE
                             $<$<COMPILE_LANGUAGE:RC>:VERSION_TEXT=\\\"${PROJECT_VERSION}\\\">)
  target_include_directories(${target} PRIVATE ${PROJECT_SOURCE_DIR})
  file(GLOB parts CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/resources/*.* ${PROJECT_SOURCE_DIR}/resources/*/*.*)
  get_target_property(sources ${target} SOURCES)
  list(FILTER sources INCLUDE REGEX "\\.rc$")
  set_source_files_properties(${sources} TARGET_DIRECTORY ${target} PROPERTIES OBJECT_DEPENDS "${parts}")
endfunction()
