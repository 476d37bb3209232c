# The platform's own libtcor, as the target that tcor/ would be.
find_path(TCOR_INCLUDE_DIR tcor.h REQUIRED)
find_library(TCOR_LIBRARY tcor REQUIRED)
add_library(tcor UNKNOWN IMPORTED)
set_target_properties(tcor PROPERTIES
  IMPORTED_LOCATION ${TCOR_LIBRARY} INTERFACE_INCLUDE_DIRECTORIES ${TCOR_INCLUDE_DIR})
