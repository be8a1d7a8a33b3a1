# How binaries are built that users get: qxbc_shipped, for the libraries and the workbench. What is not possible is
# said in docs/packages.md; tests/structure/check_hardening.py reads the binaries.
add_library(qxbc_shipped INTERFACE)
if(NOT QXBC_HARDEN)
  return()
endif()
if(CMAKE_CXX_COMPILER_FRONTEND_VARIANT STREQUAL "MSVC")
  target_compile_options(qxbc_shipped INTERFACE /guard:cf)
  target_link_options(qxbc_shipped INTERFACE /guard:cf)
  return()
endif()
target_compile_options(qxbc_shipped INTERFACE
  -fstack-protector-strong
  "-ffile-prefix-map=${PROJECT_SOURCE_DIR}=.") # the same bytes wherever it is built
if(QXBC_MSVC_ABI_DIRECTORY)
  # What a debugger needs goes into a file of its own, the PDB, and changes nothing in the DLL but a reference by name.
  target_compile_options(qxbc_shipped INTERFACE
    -gcodeview -gno-codeview-command-line "-fdebug-compilation-dir=.")
  target_link_options(qxbc_shipped INTERFACE
    "LINKER:/DEBUG:FULL,/OPT:REF,/OPT:ICF,/PDBALTPATH:%_PDB%,/PDBSOURCEPATH:.")
elseif(MINGW)
  target_link_options(qxbc_shipped INTERFACE -fstack-protector-strong) # what ends the program is a library of its own
else()
  target_compile_options(qxbc_shipped INTERFACE
    -fstack-clash-protection
    -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=3) # some compilers define it by themselves
  if(CMAKE_SYSTEM_PROCESSOR MATCHES "^(x86_64|AMD64|amd64)$")
    target_compile_options(qxbc_shipped INTERFACE -fcf-protection)
  endif()
  target_link_options(qxbc_shipped INTERFACE LINKER:-z,relro,-z,now,-z,noexecstack)
endif()
