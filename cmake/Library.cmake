# The sources are compiled once, as utdata_objects, and linked twice: utdata is the shared library,
# of which only what UTDATA_API marks is visible; utdata_internal is the same code as an archive,
# for tests of what is not.

find_package(Eigen3 3.3 REQUIRED NO_MODULE)
find_package(Threads REQUIRED)
find_path(UTDATA_XXHASH_INCLUDE_DIR xxhash.h REQUIRED)

file(GLOB_RECURSE utdata_sources CONFIGURE_DEPENDS
  ${PROJECT_SOURCE_DIR}/src/*.cpp ${PROJECT_SOURCE_DIR}/platform/*.cpp)

add_library(utdata_objects OBJECT ${utdata_sources})
utdata_unity(utdata_objects)
set_target_properties(utdata_objects PROPERTIES
  POSITION_INDEPENDENT_CODE ON
  CXX_VISIBILITY_PRESET hidden
  VISIBILITY_INLINES_HIDDEN ON)
target_compile_definitions(utdata_objects PRIVATE UTDATA_BUILDING)
if(UTDATA_FUZZ) # counts which code an input reaches
  target_compile_options(utdata_objects PRIVATE -fsanitize=fuzzer-no-link)
endif()
if(UTDATA_COVERAGE)
  target_compile_options(utdata_objects PRIVATE -fprofile-instr-generate -fcoverage-mapping)
  add_link_options(-fprofile-instr-generate)
endif()
# What a write is signed with when its host says nothing; one source knows it, so that a new version
# compiles no other anew.
set_source_files_properties(${PROJECT_SOURCE_DIR}/platform/kvtiff19/signature.cpp PROPERTIES
  COMPILE_DEFINITIONS UTDATA_LIBRARY_VERSION="${PROJECT_VERSION}"
  SKIP_UNITY_BUILD_INCLUSION ON)
target_include_directories(utdata_objects
  PUBLIC ${PROJECT_SOURCE_DIR} ${PROJECT_SOURCE_DIR}/include)
# xxhash.h is used with XXH_INLINE_ALL, so that the shared library needs no other.
target_include_directories(utdata_objects SYSTEM PRIVATE ${UTDATA_XXHASH_INCLUDE_DIR})
target_link_libraries(utdata_objects PUBLIC Eigen3::Eigen Threads::Threads PRIVATE utdata_strict)

add_library(utdata SHARED $<TARGET_OBJECTS:utdata_objects>)
add_library(utdata::utdata ALIAS utdata)
set_target_properties(utdata PROPERTIES
  LINKER_LANGUAGE CXX
  VERSION ${PROJECT_VERSION}
  SOVERSION ${PROJECT_VERSION_MAJOR})
target_compile_features(utdata PUBLIC cxx_std_20)
target_include_directories(utdata PUBLIC
  $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>
  $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include>
  $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
# Headers find each other from where they stand: include/utdata/ is on no path, since its error.h
# and unit.h would hide those of the C library and of the host.
target_link_libraries(utdata PUBLIC Eigen3::Eigen PRIVATE Threads::Threads)
if(NOT MSVC AND NOT APPLE AND NOT UTDATA_SANITIZE)
  set(exports ${PROJECT_SOURCE_DIR}/cmake/exports.map)
  target_link_options(utdata PRIVATE -Wl,--no-undefined -Wl,--version-script=${exports})
  set_target_properties(utdata PROPERTIES LINK_DEPENDS ${exports})
endif()

add_library(utdata_internal STATIC EXCLUDE_FROM_ALL $<TARGET_OBJECTS:utdata_objects>)
set_target_properties(utdata_internal PROPERTIES LINKER_LANGUAGE CXX)
target_compile_definitions(utdata_internal INTERFACE UTDATA_STATIC)
target_include_directories(utdata_internal
  PUBLIC ${PROJECT_SOURCE_DIR} ${PROJECT_SOURCE_DIR}/include)
target_include_directories(utdata_internal SYSTEM INTERFACE ${UTDATA_XXHASH_INCLUDE_DIR})
target_link_libraries(utdata_internal PUBLIC Eigen3::Eigen Threads::Threads)
