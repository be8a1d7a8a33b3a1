# Builds and runs the consumer in one of the ways. An installed library lies in a folder of which nothing knows that made
# it; then pkg-config and the workbench are tried as well.
#   installed                   cmake --install
#   archive, deb                packages: made of BUILD, or taken from the folder PACKAGES
#   subdirectory, fetchcontent  the sources
include("${CMAKE_CURRENT_LIST_DIR}/Unpacking.cmake")

file(REMOVE_RECURSE "${SCRATCH}")
file(MAKE_DIRECTORY "${SCRATCH}")
set(prefix)
if(WAY STREQUAL "installed")
  run("${CMAKE_COMMAND}" --install "${BUILD}" --prefix "${SCRATCH}/first")
  file(RENAME "${SCRATCH}/first" "${SCRATCH}/moved")
  set(prefix "${SCRATCH}/moved")
elseif(WAY STREQUAL "archive")
  unpack(TGZ .tar.gz 1)
elseif(WAY STREQUAL "deb")
  unpack(DEB .deb 4)
  # Each names who answers for it, as the build was told.
  file(STRINGS "${BUILD}/CMakeCache.txt" maintainer REGEX "^QXBC_MAINTAINER:")
  string(REGEX REPLACE "^[^=]*=" "" maintainer "${maintainer}")
  foreach(package IN LISTS packages)
    run(dpkg-deb --field "${package}" Maintainer)
    string(STRIP "${output}" output)
    if(NOT maintainer OR NOT output STREQUAL maintainer)
      message(FATAL_ERROR "${package} names ${output} as its maintainer, not ${maintainer}")
    endif()
  endforeach()
  find_program(lintian lintian)
  if(lintian)
    run("${lintian}" --allow-root --fail-on error ${packages})
    message(STATUS "lintian: ${output}")
  else()
    message(STATUS "SKIPPED: no lintian")
  endif()
endif()

run("${CMAKE_COMMAND}" -S "${CMAKE_CURRENT_LIST_DIR}/consumer" -B "${SCRATCH}/build" -G Ninja
  "-DCMAKE_CXX_COMPILER=${COMPILER}" "-DWAY=${WAY}" "-DLIBRARY_SOURCE=${SOURCE}"
  "-DCMAKE_FIND_USE_CMAKE_SYSTEM_PATH=OFF" "-DCMAKE_PREFIX_PATH=${prefix}" "-DPACKAGE_FOLDER=${prefix}")
run("${CMAKE_COMMAND}" --build "${SCRATCH}/build")
run("${SCRATCH}/build/consumer")
expect_corrected("${output}")
if(NOT prefix)
  return()
endif()
run("${SCRATCH}/build/c_consumer")
expect_corrected("${output}")

# Nothing that is installed may know where it was built or installed first.
file(GLOB_RECURSE texts "${prefix}/*.cmake" "${prefix}/*.pc")
file(GLOB_RECURSE binaries "${prefix}/lib*/*.so" "${prefix}/bin/*")
foreach(file IN LISTS texts binaries)
  file(STRINGS "${file}" lines)
  foreach(place "${SOURCE}" "${BUILD}" "${SCRATCH}")
    string(FIND "${lines}" "${place}" position)
    if(NOT position EQUAL -1 AND (file MATCHES "[.](cmake|pc)$" OR WAY MATCHES "archive|deb"))
      message(FATAL_ERROR "${file} has the path ${place}")
    endif()
  endforeach()
endforeach()

# By pkg-config, which describes each of the two libraries.
file(GLOB_RECURSE description "${prefix}/*.pc")
expect_one("${description}" "descriptions for pkg-config" 2)
foreach(host "qx_backgroundcorrection;${COMPILER};${CMAKE_CURRENT_LIST_DIR}/consumer/Consumer.cpp"
    "qx_backgroundcorrection_c;cc;${prefix}/share/doc/qx-backgroundcorrection/examples/c_host.c")
  list(POP_FRONT host name)
  ask_pkg_config(${name} "${description}")
  run(${host} "-DPACKAGE_VERSION=\"${modversion}\"" -o "${SCRATCH}/${name}" ${cflags} ${libs} "-Wl,-rpath,${libdir}")
  run("${SCRATCH}/${name}")
  expect_corrected("${output}")
endforeach()

# The newest changes are those of this version.
file(GLOB_RECURSE changes "${prefix}/*CHANGELOG.md")
expect_one("${changes}" "lists of changes" 1)
file(STRINGS "${changes}" headings REGEX "^## ")
list(GET headings 0 heading)
string(FIND "${heading} " "## ${modversion} " position)
if(NOT position EQUAL 0)
  message(FATAL_ERROR "the packages are of version ${modversion}, and the newest changes of ${heading}")
endif()

if(EXISTS "${prefix}/bin/qxbackground")
  run("${prefix}/bin/qxbackground" simulate -o "${SCRATCH}/images" --width 16 --height 16)
  run("${prefix}/bin/qxbackground" correct --dark "${SCRATCH}/images/dark_1s.tif" --dark-exposure 1 --dark-intensity 100
    --exposure 2 --intensity 100 "${SCRATCH}/images/light_2s.tif" -o "${SCRATCH}/corrected.tif")
  run("${prefix}/bin/qxbackground" --version)
  if(NOT output MATCHES "^qxbackground ${modversion}\n$")
    message(FATAL_ERROR "the packages are of version ${modversion}, and the workbench says ${output}")
  endif()
  # Its manual page, and what makes shells complete.
  find_program(man man REQUIRED)
  run("${CMAKE_COMMAND}" -E env LC_ALL=C MANWIDTH=80 "${man}" -l "${prefix}/share/man/man1/qxbackground.1.gz")
  if(NOT output MATCHES "qxbackground - background correction" OR NOT output MATCHES "EXIT STATUS")
    message(FATAL_ERROR "the manual page says: ${output}")
  endif()
  set(zsh_folder site-functions)
  if(WAY STREQUAL "deb")
    set(zsh_folder vendor-completions)
  endif()
  foreach(place IN ITEMS "bash;bash-completion/completions/qxbackground" "zsh;zsh/${zsh_folder}/_qxbackground"
      "fish;fish/vendor_completions.d/qxbackground.fish")
    list(POP_FRONT place shell file)
    run("${prefix}/bin/qxbackground" completion ${shell})
    file(READ "${prefix}/share/${file}" installed_text)
    if(NOT output STREQUAL installed_text)
      message(FATAL_ERROR "${file} is not what the workbench prints")
    endif()
  endforeach()
elseif(WAY MATCHES "archive|deb")
  message(FATAL_ERROR "no workbench in ${prefix}/bin")
endif()

if(WAY STREQUAL "archive")
  include("${CMAKE_CURRENT_LIST_DIR}/Examples.cmake")
endif()

# The Python package, with the library that lies beside it.
find_program(python NAMES python3 HINTS /usr/bin REQUIRED)
file(WRITE "${SCRATCH}/python.py" "
import numpy, importlib.metadata, qx_backgroundcorrection as package
image = numpy.full((2, 3), 7, numpy.uint16)
print(package.correct(image, darks=image, dark_exposure=7, exposure=1).sum(), package.__version__,
      importlib.metadata.version('qx_backgroundcorrection'), package.library_path())")
run("${CMAKE_COMMAND}" -E env --unset=QX_BACKGROUNDCORRECTION_LIBRARY
  "PYTHONPATH=${prefix}/lib/python3/dist-packages" "${python}" -B "${SCRATCH}/python.py")
if(NOT output MATCHES "^36 ${modversion} ${modversion} ${prefix}/lib/libQX_BACKGROUNDCORRECTION_C.so\n$")
  message(FATAL_ERROR "the Python package says: ${output}")
endif()
