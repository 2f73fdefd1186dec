# The automation server: IDL -> type library and header, then quillon.exe around src/automation.
if(DEFINED ENV{QUILLON_CACHE})
  set(cache "$ENV{QUILLON_CACHE}")
elseif(DEFINED ENV{XDG_CACHE_HOME})
  set(cache "$ENV{XDG_CACHE_HOME}/quillon")
else()
  set(cache "$ENV{HOME}/.cache/quillon")
endif()
# widl imports the system's IDL files and stdole2.tlb, which come with the private Wine.
set(wine_root "${cache}/wine/root")
set(idl_includes "${wine_root}/usr/include/wine/wine/windows")
set(idl_libraries "${wine_root}/usr/lib/i386-linux-gnu/wine/i386-windows")

set(idl "${PROJECT_SOURCE_DIR}/src/automation/quillon.idl")
set(generated "${PROJECT_BINARY_DIR}/generated/idl")
file(MAKE_DIRECTORY "${generated}")
add_library(quillon_idl INTERFACE)
target_include_directories(quillon_idl SYSTEM INTERFACE "${generated}")

file(GLOB idl_present CONFIGURE_DEPENDS "${idl}")
if(idl_present)
  if(NOT EXISTS "${idl_includes}/oaidl.idl" OR NOT EXISTS "${idl_libraries}/stdole2.tlb")
    message(FATAL_ERROR "the private Wine is missing from ${wine_root}: run ./dev setup")
  endif()
  find_program(WIDL i686-w64-mingw32-widl REQUIRED)
  set(widl env LC_ALL=C TZ=UTC ${WIDL} -m32 -I "${idl_includes}" -L "${idl_libraries}")
  # <name>.idl -> <name>.tlb and <name>_h.h; ARGN is done with them afterwards.
  function(quillon_compile_idl name source)
    add_custom_command(
      OUTPUT "${generated}/${name}.tlb" "${generated}/${name}_h.h"
      COMMAND ${widl} -t -o "${generated}/${name}.tlb" "${source}"
      COMMAND ${widl} -h -o "${generated}/${name}_h.h" "${source}"
      ${ARGN} DEPENDS "${source}" COMMENT "Compiling ${name}.idl" VERBATIM)
  endfunction()
  set(finish "${PROJECT_SOURCE_DIR}/cmake/finish_typelib.py")
  quillon_compile_idl(quillon "${idl}"
    COMMAND python3 "${finish}" "${generated}/quillon.tlb" "${generated}/quillon_h.h"
    DEPENDS "${finish}")
  add_custom_target(quillon_typelib DEPENDS "${generated}/quillon.tlb" "${generated}/quillon_h.h")
  add_dependencies(quillon_idl quillon_typelib)
endif()

quillon_layer(automation DEPENDS administration addressbook dialer platform idl EXCLUDE "/automation/main\\.cpp$")

file(GLOB server_main CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/src/automation/main.cpp")
if(server_main AND idl_present)
  enable_language(RC)
  configure_file(cmake/version.rc.in generated/idl/quillon.rc @ONLY)
  add_executable(quillon WIN32 ${server_main} "${generated}/quillon.rc")
  set_source_files_properties("${generated}/quillon.rc" PROPERTIES
    OBJECT_DEPENDS "${generated}/quillon.tlb;${PROJECT_SOURCE_DIR}/cmake/quillon.exe.manifest;\
${PROJECT_SOURCE_DIR}/src/automation/quillon.ico;\
${PROJECT_SOURCE_DIR}/src/dialogs/win32/dialogs.rc;\
${PROJECT_BINARY_DIR}/generated/Commit.h;\
${PROJECT_SOURCE_DIR}/src/dialogs/win32/resource.h")
  target_include_directories(quillon PRIVATE "${generated}" "${PROJECT_BINARY_DIR}/generated" cmake)
  add_dependencies(quillon quillon_commit)
  target_link_libraries(quillon PRIVATE quillon_options quillon_automation)
  # The map tells what an address in a crash report was, which the stripped program cannot. Without a
  # time in it, two builds of a commit are the same bytes.
  target_link_options(quillon PRIVATE -municode -s -Wl,--no-insert-timestamp
    "-Wl,-Map=${PROJECT_BINARY_DIR}/quillon.map")
endif()
