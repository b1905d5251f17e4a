# Read by CPack once for each kind of package.
set(varsul_packaging_dir "${CMAKE_CURRENT_LIST_DIR}")
if(CPACK_GENERATOR STREQUAL DEB)
  set(CPACK_PRE_BUILD_SCRIPTS "${CMAKE_CURRENT_LIST_DIR}/debian.cmake")
else()
  # A tarball is unpacked where its user likes.
  set(CPACK_PACKAGING_INSTALL_PREFIX "/")
endif()
