# What CMAKE_UNITY_BUILD does here, which the presets of newcomers and of CI switch on: the sources
# of a folder are compiled as one, since most of a source's time goes into the headers that its
# neighbours read as well. A source still includes all that it uses: scripts/check-sources compiles
# each by itself. UTDATA_CONFIGURE=-DCMAKE_UNITY_BUILD=OFF before scripts/build switches it off.

# utdata_unity(TARGET) makes one batch of each folder of the target's sources.
function(utdata_unity target)
  set_target_properties(${target} PROPERTIES UNITY_BUILD_MODE GROUP)
  get_target_property(sources ${target} SOURCES)
  foreach(source IN LISTS sources)
    cmake_path(ABSOLUTE_PATH source OUTPUT_VARIABLE folder)
    cmake_path(GET folder PARENT_PATH folder)
    cmake_path(RELATIVE_PATH folder BASE_DIRECTORY ${CMAKE_CURRENT_SOURCE_DIR})
    string(MAKE_C_IDENTIFIER ${folder} group)
    set_source_files_properties(${source} PROPERTIES UNITY_GROUP ${group})
  endforeach()
endfunction()
