# The settings of every target of the project, but of no target of an enclosing project.

if(PROJECT_IS_TOP_LEVEL AND NOT CMAKE_BUILD_TYPE)
  set(CMAKE_BUILD_TYPE Release)
endif()

# Programs link what the library links, wherever they are.
set(CMAKE_FIND_PACKAGE_TARGETS_GLOBAL ON)
set(THREADS_PREFER_PTHREAD_FLAG ON)
find_package(Threads REQUIRED)
find_package(LibXml2 REQUIRED)

add_library(logger_build_settings INTERFACE)
target_compile_options(logger_build_settings INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wformat=2
  # Our functions are not interposed one by one: calls between them skip the PLT, and the library's own
  # names no search when it is loaded.
  -fno-semantic-interposition -fno-plt
  # Each function starts a cache line: by measurement that saves a twentieth of an event's time to a
  # file.
  $<$<CONFIG:Release>:-falign-functions=64>
  # Thread-local variables are few enough for the TLS model without a call.
  -ftls-model=initial-exec
  # __FILE__ does not depend on where the project was built.
  -fmacro-prefix-map=${PROJECT_SOURCE_DIR}/=
  $<$<BOOL:${LOGGER_WARNINGS_AS_ERRORS}>:-Werror>
  # A unique symbol would keep the library mapped after dlclose.
  $<$<CXX_COMPILER_ID:GNU>:-fno-gnu-unique>)
target_link_options(logger_build_settings INTERFACE "LINKER:-Bsymbolic" "LINKER:-z,now")
if(LOGGER_SANITIZE)
  # More optimisation takes several times as long with a sanitizer, and hides places.
  target_compile_options(logger_build_settings INTERFACE
    -O1 -g1 -fsanitize=${LOGGER_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  target_link_options(logger_build_settings INTERFACE -fsanitize=${LOGGER_SANITIZE})
endif()
if(LOGGER_BUILD_FUZZERS)  # libFuzzer sees which code an input reaches.
  target_compile_options(logger_build_settings INTERFACE -fsanitize=fuzzer-no-link)
endif()

# Gives targets these settings, and the properties that only a target itself can have. The objects of a
# static library are plain ones, which any linker reads.
function(logger_build_settings)
  foreach(target ${ARGN})
    set_target_properties(${target} PROPERTIES
      CXX_STANDARD 17
      CXX_STANDARD_REQUIRED ON
      CXX_EXTENSIONS OFF
      CXX_VISIBILITY_PRESET hidden
      VISIBILITY_INLINES_HIDDEN ON
      INTERPROCEDURAL_OPTIMIZATION_RELEASE ${LOGGER_SHARED})
    target_link_libraries(${target} PRIVATE logger_build_settings)
  endforeach()
endfunction()

# For code that runs once, which takes longer to optimise than to run. Linked after the settings above.
add_library(logger_unoptimised INTERFACE)
target_compile_options(logger_unoptimised INTERFACE -O0 -g1)
