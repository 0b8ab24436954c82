# The compiler cache, the fast linker and the sanitizers, each used where the machine has it or the preset asks for it.

find_program(CCACHE_PROGRAM ccache)
if(CCACHE_PROGRAM)
  set(CMAKE_CXX_COMPILER_LAUNCHER "${CCACHE_PROGRAM}")
  set(CMAKE_C_COMPILER_LAUNCHER "${CCACHE_PROGRAM}")
endif()

find_program(MOLD_PROGRAM mold)
if(MOLD_PROGRAM)
  add_link_options(-fuse-ld=mold)
endif()

set(ZIVRA_SANITIZERS "" CACHE STRING "Sanitizers for every target, as -fsanitize takes them")
if(ZIVRA_SANITIZERS)
  # GCC takes variants for uninitialised once they are instrumented.
  add_compile_options(-fsanitize=${ZIVRA_SANITIZERS} -fno-sanitize-recover=all -fno-omit-frame-pointer
                      -Wno-maybe-uninitialized)
  add_link_options(-fsanitize=${ZIVRA_SANITIZERS})
endif()

add_compile_options(-Wall -Wextra -Wpedantic -Werror)
