# The rules every target of the project follows: the language, the warnings and the sanitizers.
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_AUTOMOC ON)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}")
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

option(QUILLON_SANITIZE "Build with the address and undefined behaviour sanitizers" OFF)
option(QUILLON_FUZZ "Build the fuzzers with their engine, which clang has, and everything so that it shows its way" OFF)

add_library(quillon_rules INTERFACE)
target_compile_definitions(quillon_rules INTERFACE
  QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_KEYWORDS QT_NO_FOREACH)
if(WIN32)
  # Everywhere, because the precompiled headers are shared.
  target_compile_definitions(quillon_rules INTERFACE NOMINMAX)
endif()
if(MSVC)
  target_compile_options(quillon_rules INTERFACE /W4 /WX /utf-8)
else()
  target_compile_options(quillon_rules INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Wold-style-cast -Woverloaded-virtual -Wcast-qual
    -Werror)
  # One of the libraries used asks for this; libraries share precompiled headers only if all are compiled alike.
  target_compile_options(quillon_rules INTERFACE -pthread)
  target_link_options(quillon_rules INTERFACE -pthread)
endif()
# Some ninety test programs are linked; the quick linker spares minutes.
include(CheckLinkerFlag)
check_linker_flag(CXX -fuse-ld=lld QUILLON_HAVE_LLD)
if(QUILLON_HAVE_LLD)
  target_link_options(quillon_rules INTERFACE -fuse-ld=lld)
endif()
if(QUILLON_SANITIZE)
  target_compile_options(quillon_rules INTERFACE -fsanitize=address,undefined -fno-sanitize-recover=undefined
    -fno-omit-frame-pointer)
  target_link_options(quillon_rules INTERFACE -fsanitize=address,undefined)
endif()
if(QUILLON_FUZZ)
  target_compile_options(quillon_rules INTERFACE -fsanitize=fuzzer-no-link)
endif()

# A static library of one folder. Whatever it may include, it must link: the link list is the layering.
function(quillon_library name)
  cmake_parse_arguments(arg "" "PCH_FROM" "SOURCES;LINK;PCH" ${ARGN})
  add_library(${name} STATIC ${arg_SOURCES})
  target_include_directories(${name} PUBLIC "${PROJECT_SOURCE_DIR}")
  target_link_libraries(${name} PUBLIC quillon_rules ${arg_LINK})
  if(arg_PCH)
    target_precompile_headers(${name} PRIVATE ${arg_PCH})
  elseif(arg_PCH_FROM)
    target_precompile_headers(${name} REUSE_FROM ${arg_PCH_FROM})
  endif()
endfunction()
