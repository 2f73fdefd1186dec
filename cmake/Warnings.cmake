# quillon_options: what every target of ours is compiled with. Other people's code (GoogleTest) is not.
add_library(quillon_options INTERFACE)
target_compile_features(quillon_options INTERFACE cxx_std_20)
target_compile_options(quillon_options INTERFACE
  -Wall -Wextra -Wpedantic -Werror
  -Wconversion -Wsign-conversion -Wshadow -Wold-style-cast -Wcast-qual -Wformat=2
  -Woverloaded-virtual -Wextra-semi -Wimplicit-fallthrough -Wundef
  $<$<CXX_COMPILER_ID:GNU>:-Wduplicated-cond -Wlogical-op -Wsuggest-override>)

if(NOT WIN32)
  # COM interfaces have no virtual destructor, so this one is left to the other build.
  target_compile_options(quillon_options INTERFACE -Wnon-virtual-dtor)
else()
  # Windows 7 and everything after it.
  target_compile_definitions(quillon_options INTERFACE
    _WIN32_WINNT=0x0601 WINVER=0x0601 NTDDI_VERSION=0x06010000
    UNICODE _UNICODE WIN32_LEAN_AND_MEAN NOMINMAX)
endif()
