# HDF5, an optional component of the program: UTDATA_HDF5 is AUTO (when it is installed), ON or OFF.
# Defines the target utdata_hdf5 when the program is to have it.

set(UTDATA_HDF5 AUTO CACHE STRING "Let the program read and write HDF5 files: AUTO, ON or OFF")
set_property(CACHE UTDATA_HDF5 PROPERTY STRINGS AUTO ON OFF)
if(NOT UTDATA_HDF5 STREQUAL "AUTO" AND NOT UTDATA_HDF5)
  return()
endif()

# Debian keeps the serial build in a folder of its own.
find_path(UTDATA_HDF5_INCLUDE hdf5_hl.h PATH_SUFFIXES hdf5/serial DOC "Folder of HDF5's headers")
find_library(UTDATA_HDF5_LIBRARY NAMES hdf5_serial hdf5
  PATH_SUFFIXES hdf5/serial
  DOC "The HDF5 library")
find_library(UTDATA_HDF5_HL_LIBRARY NAMES hdf5_serial_hl hdf5_hl
  PATH_SUFFIXES hdf5/serial
  DOC "HDF5's library of dimension scales")
mark_as_advanced(UTDATA_HDF5_INCLUDE UTDATA_HDF5_LIBRARY UTDATA_HDF5_HL_LIBRARY)

if(UTDATA_HDF5_INCLUDE AND UTDATA_HDF5_LIBRARY AND UTDATA_HDF5_HL_LIBRARY)
  add_library(utdata_hdf5 INTERFACE)
  target_include_directories(utdata_hdf5 SYSTEM INTERFACE ${UTDATA_HDF5_INCLUDE})
  target_link_libraries(utdata_hdf5 INTERFACE ${UTDATA_HDF5_HL_LIBRARY} ${UTDATA_HDF5_LIBRARY})
  target_compile_definitions(utdata_hdf5 INTERFACE H5_USE_110_API)
elseif(UTDATA_HDF5 STREQUAL "AUTO")
  message(STATUS "No HDF5: the program will refuse HDF5 files")
else()
  message(FATAL_ERROR "UTDATA_HDF5 is ON and HDF5 is not installed (Debian: libhdf5-dev)")
endif()
