# What every target of the project is built with.

set(CMAKE_CXX_STANDARD 17)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
if(NOT CMAKE_BUILD_TYPE)
  set(CMAKE_BUILD_TYPE Release)
endif()

set(THREADS_PREFER_PTHREAD_FLAG ON)
find_package(Threads REQUIRED)

add_compile_options(-Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wformat=2)
# Nobody replaces our functions one by one: calls between them need no detour, and the library's own
# names no search when it is loaded.
add_compile_options(-fno-semantic-interposition -fno-plt)
add_link_options("LINKER:-Bsymbolic" "LINKER:-z,now")
if(CMAKE_BUILD_TYPE STREQUAL "Release")
  set(CMAKE_INTERPROCEDURAL_OPTIMIZATION ON)
  # Each function starts a line of the processor's cache: by measurement that saves a twentieth of
  # an event's time to a file.
  add_compile_options(-falign-functions=64)
endif()
# What is kept for each thread is reached without a call; it is little enough for that.
add_compile_options(-ftls-model=initial-exec)
# What __FILE__ gives does not depend on where the project was built.
add_compile_options(-fmacro-prefix-map=${PROJECT_SOURCE_DIR}/=)
if(LOGGER_WARNINGS_AS_ERRORS)
  add_compile_options(-Werror)
endif()
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  # A unique symbol would keep the library mapped after dlclose.
  add_compile_options(-fno-gnu-unique)
endif()
if(LOGGER_SANITIZE)
  # More optimisation takes several times as long with a sanitizer, and hides places.
  add_compile_options(-O1 -g1 -fsanitize=${LOGGER_SANITIZE} -fno-omit-frame-pointer
                      -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${LOGGER_SANITIZE})
endif()
if(LOGGER_BUILD_FUZZERS)  # Tells libFuzzer which ways an input takes.
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()
