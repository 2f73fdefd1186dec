# Programs that are not the product: the embedded mail host, the message splitter and the packing of
# attachments as programs, benchmarks, and for Windows the clients and stand-in libraries of the
# end-to-end tests.
file(GLOB_RECURSE mailhost_sources CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/tools/mailhost/*.cpp")
if(mailhost_sources AND NOT WIN32)
  # A peer for the product's tests shares no code with the product.
  quillon_executable(mailhost SOURCES ${mailhost_sources} LINK OpenSSL::SSL OpenSSL::Crypto)
endif()

if(NOT WIN32)
  quillon_executable(splitmail SOURCES "${PROJECT_SOURCE_DIR}/tools/splitmail/main.cpp"
    LINK quillon_codec quillon_platform)
  target_include_directories(splitmail PRIVATE "${PROJECT_SOURCE_DIR}")
  quillon_executable(zipfiles SOURCES "${PROJECT_SOURCE_DIR}/tools/zipfiles/main.cpp"
    LINK quillon_codec quillon_platform)
endif()

# The sample of a provider library knows nothing of this tree but sdk/. On Windows it is what its users
# get; elsewhere the tests link it.
file(GLOB sample_sources CONFIGURE_DEPENDS
  "${PROJECT_SOURCE_DIR}/examples/provider/*.cpp" "${PROJECT_SOURCE_DIR}/examples/provider/*.def")
if(WIN32)
  add_library(sample_provider SHARED ${sample_sources})
  set_target_properties(sample_provider PROPERTIES PREFIX ""
    RUNTIME_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/examples")
else()
  list(FILTER sample_sources EXCLUDE REGEX "\\.def$")
  add_library(sample_provider STATIC ${sample_sources})
endif()
target_include_directories(sample_provider PRIVATE "${PROJECT_SOURCE_DIR}/sdk")
target_compile_options(sample_provider PRIVATE -Wall -Wextra -Wpedantic -Wshadow -Werror)
set_target_properties(sample_provider PROPERTIES CXX_STANDARD 17)

# The sample for C++ knows nothing of this tree but what is made of the type library's source.
if(WIN32)
  add_executable(samples "${PROJECT_SOURCE_DIR}/samples/cpp/samples.cpp")
  set_target_properties(samples PROPERTIES RUNTIME_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/samples")
  target_compile_options(samples PRIVATE -Wall -Wextra -Wpedantic -Wshadow -Werror)
  target_link_libraries(samples PRIVATE quillon_idl ole32 oleaut32 uuid user32)
  target_link_options(samples PRIVATE -municode -static)
endif()

# bench/support is shared by the benchmarks. Table and Main are for both systems; the rest compares the
# native engine with its peers.
if(WIN32)
  quillon_programs(benches "${PROJECT_SOURCE_DIR}/bench/windows")
  set(bench_support
    "${PROJECT_SOURCE_DIR}/bench/support/Table.cpp" "${PROJECT_SOURCE_DIR}/bench/support/Main.cpp")
  set(bench_peers quillon_idl)
else()
  quillon_programs(benches "${PROJECT_SOURCE_DIR}/bench")
  quillon_programs(bench_support "${PROJECT_SOURCE_DIR}/bench/support")
  set(bench_peers CURL::libcurl)
endif()
if(CMAKE_BUILD_TYPE STREQUAL "Sanitize")
  set(benches "")  # they would measure the sanitizers
endif()
if(benches)
  add_library(quillon_bench_support STATIC ${bench_support})
  target_include_directories(quillon_bench_support PUBLIC "${PROJECT_SOURCE_DIR}")
  target_link_libraries(quillon_bench_support
    PRIVATE quillon_options PUBLIC quillon_server quillon_platform ${bench_peers})
endif()
foreach(source IN LISTS benches)
  cmake_path(GET source STEM name)
  quillon_executable(bench_${name} SOURCES ${source} LINK quillon_bench_support)
endforeach()

if(WIN32)
  quillon_programs(clients "${PROJECT_SOURCE_DIR}/tests/e2e/clients")
  foreach(source IN LISTS clients)
    cmake_path(GET source STEM name)
    quillon_executable(${name} SOURCES ${source} LINK quillon_idl quillon_net quillon_platform)
    set_target_properties(${name} PROPERTIES
      RUNTIME_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/clients")
  endforeach()

  # The same for clients of 64 bit, by the compiler that ./dev setup --wine10 brings.
  set(clients64 "")
  file(GLOB clients64_headers CONFIGURE_DEPENDS
    "${PROJECT_SOURCE_DIR}/src/platform/win32/*.h" "${PROJECT_SOURCE_DIR}/tests/e2e/clients/*.h")
  foreach(name EarlyBound TypedListener)
    set(program "${PROJECT_BINARY_DIR}/clients64/${name}.exe")
    set(sources "${PROJECT_SOURCE_DIR}/tests/e2e/clients/${name}.cpp"
      "${PROJECT_SOURCE_DIR}/src/platform/win32/WideText.cpp"
      "${PROJECT_SOURCE_DIR}/src/core/Utf8.cpp")
    add_custom_command(OUTPUT "${program}"
      COMMAND ${CMAKE_COMMAND} -E make_directory "${PROJECT_BINARY_DIR}/clients64"
      COMMAND x86_64-w64-mingw32-g++-posix -std=c++20 -O1 -Wall -Wextra -Werror -static
        -DUNICODE -D_UNICODE -D_WIN32_WINNT=0x0601 -I "${PROJECT_SOURCE_DIR}/src"
        -isystem "${generated}" -o "${program}" ${sources} -lole32 -loleaut32 -luuid -lntdll
      DEPENDS ${sources} ${clients64_headers} quillon_idl "${generated}/quillon_h.h"
      COMMENT "Building ${name} for 64 bit" VERBATIM)
    list(APPEND clients64 "${program}")
  endforeach()
  add_custom_target(clients64 DEPENDS ${clients64})

  # tests/doubles/<name>/ -> doubles/<name>.dll: a stand-in for a library of another maker, a face of
  # the desk.
  file(GLOB doubles CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/tests/doubles/*/*.cpp")
  list(FILTER doubles EXCLUDE REGEX "/doubles/desk/")
  list(TRANSFORM doubles REPLACE "/[^/]*$" "")
  list(REMOVE_DUPLICATES doubles)
  add_custom_target(doubles)
  foreach(directory IN LISTS doubles)
    cmake_path(GET directory FILENAME name)
    file(GLOB sources CONFIGURE_DEPENDS
      "${directory}/*.cpp" "${directory}/*.def" "${directory}/*.rc")
    add_library(double_${name} SHARED ${sources})
    target_link_libraries(double_${name} PRIVATE quillon_options quillon_desk quillon_platform)
    set_target_properties(double_${name} PROPERTIES PREFIX "" OUTPUT_NAME "${name}"
      RUNTIME_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/doubles")
    add_dependencies(doubles double_${name})
  endforeach()
endif()
