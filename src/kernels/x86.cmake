# The kernels once more for each instruction set that x86 processors may have. Only these two units may use one: see the
# note on inline functions in KernelTable.h.
target_sources(qxbc_core PRIVATE kernels/KernelsAvx2.cpp kernels/KernelsAvx512.cpp)
target_compile_definitions(qxbc_core PRIVATE QX_KERNELS_FOR_X86)
if(CMAKE_CXX_COMPILER_FRONTEND_VARIANT STREQUAL "MSVC")
  set_source_files_properties(kernels/KernelsAvx2.cpp PROPERTIES COMPILE_OPTIONS /arch:AVX2)
  set_source_files_properties(kernels/KernelsAvx512.cpp PROPERTIES COMPILE_OPTIONS /arch:AVX512)
else()
  if(MINGW) # GCC does not align the stack for such registers on Windows
    set(unaligned "-Wa,-muse-unaligned-vector-move")
  endif()
  set_source_files_properties(kernels/KernelsAvx2.cpp PROPERTIES COMPILE_OPTIONS "-O3;-mavx2;${unaligned}")
  set_source_files_properties(kernels/KernelsAvx512.cpp PROPERTIES
    COMPILE_OPTIONS "-O3;-mavx512f;-mavx512bw;-mavx512dq;-mavx512vl;-mprefer-vector-width=512;${unaligned}")
endif()
