# What keeps a fault from becoming somebody else's way in: checks at run time, in the product as in
# its tests, and an image that is loaded anywhere and runs no data. tools/check_image.py reads from
# the product that all of it is there. The sanitizers, which see more, are left alone.
if(NOT CMAKE_BUILD_TYPE STREQUAL "Sanitize" AND NOT QUILLON_FUZZ)
  target_compile_options(quillon_options INTERFACE -fstack-protector-strong)
  target_compile_definitions(quillon_options INTERFACE _FORTIFY_SOURCE=2 _GLIBCXX_ASSERTIONS)
  target_link_options(quillon_options INTERFACE -fstack-protector-strong)
endif()
if(WIN32)
  # Nothing here takes an address for a signed number, so that all 4 GiB of a 64-bit system can be
  # given to the program.
  # --no-seh: there is no structured exception handler in the image, so the system takes an address in
  # it for none. The compiler has no control-flow guard.
  target_link_options(quillon_options INTERFACE
    -Wl,--dynamicbase,--nxcompat,--large-address-aware,--no-seh)
endif()
