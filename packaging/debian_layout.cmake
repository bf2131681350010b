# SPDX-License-Identifier: MIT
# What only a Debian package has: the Python module where the system's python3 finds it, modes as Debian wants them.
set(root "${CPACK_TEMPORARY_INSTALL_DIRECTORY}${CPACK_PACKAGING_INSTALL_PREFIX}")
if(IS_DIRECTORY "${root}/lib/skindesk/python/skindesk")
  file(MAKE_DIRECTORY "${root}/lib/python3/dist-packages")
  file(CREATE_LINK ../../skindesk/python/skindesk "${root}/lib/python3/dist-packages/skindesk" SYMBOLIC)
endif()
file(GLOB_RECURSE libraries "${root}/lib/skindesk/*.so")
foreach(library ${libraries})
  file(CHMOD "${library}" PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)
endforeach()
