# One directory, one target: sources are found by pattern, so that adding a file needs no edit here.

# The C++ sources below src/<...>, without those of the other operating system.
function(quillon_sources result directory)
  file(GLOB_RECURSE found CONFIGURE_DEPENDS "${directory}/*.cpp")
  if(WIN32)
    list(FILTER found EXCLUDE REGEX "/posix/")
  else()
    list(FILTER found EXCLUDE REGEX "/win32/")
  endif()
  set(${result} ${found} PARENT_SCOPE)
endfunction()

# The C++ sources directly in a directory, for directories that hold one program per file.
function(quillon_programs result directory)
  file(GLOB found CONFIGURE_DEPENDS "${directory}/*.cpp")
  set(${result} ${found} PARENT_SCOPE)
endfunction()

# A static library quillon_<layer> of src/<layer>, which may use the layers named after DEPENDS.
# A layer of headers alone is an interface library.
function(quillon_layer layer)
  cmake_parse_arguments(ARG "" "" "DEPENDS;EXCLUDE" ${ARGN})
  quillon_sources(sources "${PROJECT_SOURCE_DIR}/src/${layer}")
  foreach(pattern IN LISTS ARG_EXCLUDE)
    list(FILTER sources EXCLUDE REGEX "${pattern}")
  endforeach()
  list(TRANSFORM ARG_DEPENDS PREPEND quillon_)
  if(sources)
    add_library(quillon_${layer} STATIC ${sources})
    set(scope PUBLIC)
    target_link_libraries(quillon_${layer} PRIVATE quillon_options)
  else()
    add_library(quillon_${layer} INTERFACE)
    set(scope INTERFACE)
  endif()
  target_include_directories(quillon_${layer} ${scope}
    "${PROJECT_SOURCE_DIR}/src" "${PROJECT_BINARY_DIR}/generated")
  target_link_libraries(quillon_${layer} ${scope} ${ARG_DEPENDS})
endfunction()

# A program of our own.
function(quillon_executable name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LINK" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE quillon_options ${ARG_LINK})
endfunction()
