# CPack: on Linux one archive, and a Debian package for each component; for Windows one ZIP. scripts/package.sh packs.

# Who answers for the packages. Debian wants a name and an address in each; the default is a placeholder, an address that
# cannot exist. Whoever distributes packages changes it here, or gives it with -D QXBC_MAINTAINER="Name <address>"
# (scripts/package.sh takes it from the environment variable of that name). It is written nowhere else.
set(QXBC_MAINTAINER "QX_KRLSDK <backgroundcorrection@qx-krlsdk.invalid>" CACHE STRING
  "Name and address of the maintainer that packages name: Name <address>")
if(NOT QXBC_MAINTAINER MATCHES "^[^<>@]*[^<>@ ] <[^<>@ ]+@[^<>@ ]+>$")
  message(FATAL_ERROR "QXBC_MAINTAINER is \"${QXBC_MAINTAINER}\"; it has to be: Name <address>")
endif()

set(CPACK_PACKAGE_NAME qx-backgroundcorrection)
set(CPACK_PACKAGE_VENDOR "QX_KRLSDK")
set(CPACK_PACKAGE_CONTACT "${QXBC_MAINTAINER}")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_STRIP_FILES ON)
set(CPACK_THREADS 1)
set(CPACK_COMPONENTS_ALL Runtime Development)
if(QXBC_BUILD_TOOL OR QXBC_WINDOWS_WORKBENCH)
  list(APPEND CPACK_COMPONENTS_ALL Workbench)
endif()
if(NOT WIN32)
  list(APPEND CPACK_COMPONENTS_ALL Python)
endif()
# Whoever builds has a file mode creation mask; packages are to be the same without.
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_PRE_BUILD_SCRIPTS "${CMAKE_CURRENT_LIST_DIR}/finish.cmake")
set(CPACK_QXBC_FOLDER "${CMAKE_CURRENT_LIST_DIR}") # for finish.cmake

if(WIN32)
  set(CPACK_GENERATOR ZIP)
  set(CPACK_STRIP_FILES OFF)
  set(CPACK_PACKAGE_FILE_NAME "qx-backgroundcorrection-${PROJECT_VERSION}-windows-x64")
else()
  string(TOLOWER "${CMAKE_SYSTEM_NAME}-${CMAKE_SYSTEM_PROCESSOR}" system)
  set(CPACK_GENERATOR TGZ)
  if(NOT CMAKE_CROSSCOMPILING) # Debian's tools ask the system that they run on what a package is for and what it needs
    list(APPEND CPACK_GENERATOR DEB)
  endif()
  set(CPACK_PACKAGE_FILE_NAME "qx-backgroundcorrection-${PROJECT_VERSION}-${system}")
endif()

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)

set(library libqx-backgroundcorrection)
set(same_version "${library} (= ${PROJECT_VERSION}-1)")

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME ${library})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SHLIBDEPS ON)
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION "Removes the fixed background, made of dark frames, from live images. Host
applications load the library at run time by its plain name.")
# Nothing but a change of the files asks for ldconfig here; it makes the library known by its name.
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA "${CMAKE_CURRENT_LIST_DIR}/debian/triggers")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME ${library}-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${same_version}")
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION "Headers, the files for CMake and pkg-config, guides and examples for
programs that use the library.")

set(CPACK_DEBIAN_WORKBENCH_PACKAGE_NAME qxbackground)
set(CPACK_DEBIAN_WORKBENCH_PACKAGE_SECTION science)
set(CPACK_DEBIAN_WORKBENCH_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_WORKBENCH_PACKAGE_DEPENDS "${same_version}")
set(CPACK_COMPONENT_WORKBENCH_DESCRIPTION "Corrects images in files, and makes, lists and checks calibration files and
offline stores, by the library that host applications load.")

set(CPACK_DEBIAN_PYTHON_PACKAGE_NAME python3-qx-backgroundcorrection)
set(CPACK_DEBIAN_PYTHON_PACKAGE_SECTION python)
set(CPACK_DEBIAN_PYTHON_PACKAGE_ARCHITECTURE all)
set(CPACK_DEBIAN_PYTHON_PACKAGE_DEPENDS "python3:any (>= 3.9), python3-numpy, ${same_version}")
set(CPACK_DEBIAN_PYTHON_PACKAGE_SUGGESTS "python3-dask, python3-distributed, python3-zarr")
set(CPACK_COMPONENT_PYTHON_DESCRIPTION "The library for numpy and dask arrays in Python 3, and calibration files as
numpy arrays.")
set(CPACK_DEBIAN_PYTHON_PACKAGE_CONTROL_EXTRA
  "${CMAKE_CURRENT_LIST_DIR}/debian/python/postinst;${CMAKE_CURRENT_LIST_DIR}/debian/python/prerm")

include(CPack)
