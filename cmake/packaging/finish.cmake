# CPack runs this when the files of a package lie in their temporary folder: adds what only packages have, and gives
# every file the time of SOURCE_DATE_EPOCH, so that packing twice gives the same bytes.
set(epoch "$ENV{SOURCE_DATE_EPOCH}")
if(epoch STREQUAL "")
  string(TIMESTAMP epoch %s UTC)
endif()
set(root "${CPACK_TEMPORARY_DIRECTORY}")

function(run)
  execute_process(COMMAND ${ARGN} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

# Debian wants to be told about each package: copyright, changes, and which of its rules are broken on purpose. Its zsh
# looks elsewhere for what packages bring.
if(CPACK_GENERATOR STREQUAL "DEB")
  if(EXISTS "${root}/Workbench/usr/share/zsh/site-functions")
    file(RENAME "${root}/Workbench/usr/share/zsh/site-functions" "${root}/Workbench/usr/share/zsh/vendor-completions")
  endif()
  execute_process(COMMAND date -u -R -d "@${epoch}" OUTPUT_VARIABLE date OUTPUT_STRIP_TRAILING_WHITESPACE
    COMMAND_ERROR_IS_FATAL ANY)
  foreach(component IN LISTS CPACK_COMPONENTS_ALL)
    string(TOUPPER "${component}" name)
    set(package "${CPACK_DEBIAN_${name}_PACKAGE_NAME}")
    set(docs "${root}/${component}/usr/share/doc/${package}")
    file(MAKE_DIRECTORY "${docs}")
    file(COPY "${CPACK_QXBC_FOLDER}/copyright" DESTINATION "${docs}")
    file(WRITE "${docs}/changelog.Debian"
      "qx-backgroundcorrection (${CPACK_PACKAGE_VERSION}-1) unstable; urgency=medium\n\n"
      "  * The changes are in CHANGELOG.md, in the development package.\n\n"
      " -- ${CPACK_PACKAGE_CONTACT}  ${date}\n")
    run(gzip -9nf "${docs}/changelog.Debian")
    set(overrides "${CPACK_QXBC_FOLDER}/debian/${package}.lintian-overrides")
    if(EXISTS "${overrides}")
      file(MAKE_DIRECTORY "${root}/${component}/usr/share/lintian/overrides")
      configure_file("${overrides}" "${root}/${component}/usr/share/lintian/overrides/${package}" COPYONLY)
    endif()
  endforeach()
endif()

file(GLOB_RECURSE files LIST_DIRECTORIES false "${root}/*")
list(SORT files)
if(CPACK_GENERATOR STREQUAL "ZIP")
  set(sums)
  foreach(file IN LISTS files)
    file(SHA256 "${file}" sum)
    file(RELATIVE_PATH name "${root}" "${file}")
    string(APPEND sums "${sum}  ${name}\n")
  endforeach()
  file(WRITE "${root}/SHA256SUMS" "${sums}")
endif()

if(CMAKE_HOST_UNIX)
  run(find "${root}" -type d -exec chmod 755 {} +)
  run(find "${root}" -type f -not -perm -u+x -exec chmod 644 {} +)
  run(find "${root}" -type f -perm -u+x -exec chmod 755 {} +)
  run(find "${root}" -exec touch -h -d "@${epoch}" {} +)
endif()
