# What every target of ours is compiled with: utdata_strict carries the warnings and the rules of
# arithmetic, and the sanitizers apply to all.

add_library(utdata_strict INTERFACE)
if(NOT MSVC)
  target_compile_options(utdata_strict INTERFACE
    -Wall -Wextra -Wpedantic -Wconversion -Wsign-conversion -Wshadow
    # One rounding per operation, so that codes and units are the same numbers on every processor.
    -ffp-contract=off
    $<$<CXX_COMPILER_ID:Clang>:-Wthread-safety>
    # g++ 12 takes inlined assignments of short texts for overlapping copies.
    $<$<AND:$<CXX_COMPILER_ID:GNU>,$<VERSION_LESS:$<CXX_COMPILER_VERSION>,13>>:-Wno-restrict>
    # A source in a batch would be warned of its neighbours' names; scripts/check-sources warns.
    $<$<BOOL:${CMAKE_UNITY_BUILD}>:-Wno-shadow>
    $<$<BOOL:${UTDATA_WERROR}>:-Werror>)
endif()

if(UTDATA_CHECKED)
  target_compile_definitions(utdata_strict INTERFACE UTDATA_CHECKED _GLIBCXX_ASSERTIONS)
endif()

if(UTDATA_SANITIZE)
  string(REPLACE ";" "," sanitizers "${UTDATA_SANITIZE}")
  add_compile_options(-fsanitize=${sanitizers} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${sanitizers})
endif()
