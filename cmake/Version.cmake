# The version of the project, for the programs' help and version texts and the Windows version
# resource: the header DcfVersion.h, reached through the target dcf_version.
configure_file("${CMAKE_CURRENT_LIST_DIR}/DcfVersion.h.in" "${CMAKE_BINARY_DIR}/generated/DcfVersion.h"
               @ONLY)
add_library(dcf_version INTERFACE)
target_include_directories(dcf_version INTERFACE "${CMAKE_BINARY_DIR}/generated")
