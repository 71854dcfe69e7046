# Compiler settings that every target of the project shares.

set(CMAKE_CXX_STANDARD 17)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
# The loader finds libkoralink.so.1 on the host, or where LD_LIBRARY_PATH points: never by a path in the binary.
set(CMAKE_SKIP_RPATH ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

add_library(kora_warnings INTERFACE)
target_compile_options(kora_warnings INTERFACE
  -Wall -Wextra -Wpedantic $<$<CXX_COMPILER_ID:GNU>:-Wshadow=local> -Wnon-virtual-dtor -Woverloaded-virtual
  -Wcast-align -Wformat=2 -Wimplicit-fallthrough -Werror)

add_library(kora_qt_strict INTERFACE)
target_compile_definitions(kora_qt_strict INTERFACE
  QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_CAST_FROM_BYTEARRAY
  QT_NO_URL_CAST_FROM_STRING
  QT_DISABLE_DEPRECATED_BEFORE=0x050E00 QT_DEPRECATED_WARNINGS)

if(KORA_SANITIZE)
  add_compile_options(-fsanitize=${KORA_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${KORA_SANITIZE})
endif()
if(KORA_COVERAGE)
  add_compile_options(--coverage -O0)
  add_link_options(--coverage)
endif()

# Daily work links some forty suites: where mold is at hand it does so several times faster.
if(CMAKE_BUILD_TYPE STREQUAL "Debug")
  find_program(MOLD_LINKER mold)
  if(MOLD_LINKER)
    add_link_options(-fuse-ld=mold)
  endif()
endif()
