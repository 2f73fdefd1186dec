# GoogleTest programs, one per layer: tests/<layer>/ -> test_<layer>, with the helpers and doubles of
# tests/support. tests/automation and tests/win32 exist on Windows only.
include(GoogleTest)

set(BUILD_GMOCK ON CACHE BOOL "" FORCE)
set(INSTALL_GTEST OFF CACHE BOOL "" FORCE)
set(gtest_force_shared_crt ON CACHE BOOL "" FORCE)
set(googletest_source /usr/src/googletest)
if(NOT EXISTS ${googletest_source}/CMakeLists.txt)
  message(FATAL_ERROR "GoogleTest is missing: run ./dev setup (package googletest)")
endif()
add_subdirectory(${googletest_source} googletest EXCLUDE_FROM_ALL SYSTEM)

quillon_sources(support_sources "${PROJECT_SOURCE_DIR}/tests/support")
if(support_sources)
  add_library(quillon_test_support STATIC ${support_sources})
  set(support_scope PUBLIC)
  target_link_libraries(quillon_test_support PRIVATE quillon_options)
else()
  add_library(quillon_test_support INTERFACE)
  set(support_scope INTERFACE)
endif()
target_include_directories(quillon_test_support ${support_scope} "${PROJECT_SOURCE_DIR}/tests")
target_compile_definitions(quillon_test_support ${support_scope}
  "QUILLON_TESTS_DIR=\"${PROJECT_SOURCE_DIR}/tests\"")
target_link_libraries(quillon_test_support
  ${support_scope} quillon_server quillon_platform gmock ZLIB::ZLIB)

function(quillon_test layer)
  quillon_sources(sources "${PROJECT_SOURCE_DIR}/tests/${layer}")
  if(NOT sources)
    return()
  endif()
  quillon_executable(test_${layer} SOURCES ${sources} LINK quillon_test_support ${ARGN})
  if(NOT sources MATCHES "/main\\.cpp(;|$)")
    target_link_libraries(test_${layer} PRIVATE gtest_main)
  endif()
  # Discovered when the tests run, so that building needs no Wine.
  gtest_discover_tests(test_${layer}
    TEST_PREFIX "${layer}." DISCOVERY_MODE PRE_TEST DISCOVERY_TIMEOUT 60
    WORKING_DIRECTORY "${PROJECT_SOURCE_DIR}" PROPERTIES TIMEOUT 120 LABELS "${layer}")
endfunction()

# The store that the doubles of other mail systems are faces of.
quillon_sources(desk_sources "${PROJECT_SOURCE_DIR}/tests/doubles/desk")
add_library(quillon_desk STATIC ${desk_sources})
target_include_directories(quillon_desk PUBLIC "${PROJECT_SOURCE_DIR}/tests/doubles")
target_link_libraries(quillon_desk PRIVATE quillon_options PUBLIC quillon_core)
if(WIN32)
  target_link_libraries(quillon_desk PUBLIC quillon_platform)
endif()
quillon_test(desk quillon_desk)

foreach(layer core codec sasl oauth mail net platform internet backends addressbook dialer dialogs server administration)
  quillon_test(${layer} quillon_${layer})
endforeach()
if(NOT WIN32)
  target_link_libraries(test_platform PRIVATE sample_provider)
endif()
if(WIN32)
  quillon_test(win32)
  if(TARGET test_dialogs)
    # The windows of the program are resources of its test too, which shows them to nobody.
    enable_language(RC)
    set(resources "${PROJECT_BINARY_DIR}/generated/idl/test_dialogs.rc")
    file(CONFIGURE OUTPUT "${resources}"
      CONTENT "#include \"dialogs/win32/dialogs.rc\"\n1 24 \"quillon.exe.manifest\"\n")
    set(dialog_resources "${PROJECT_SOURCE_DIR}/src/dialogs/win32")
    set_source_files_properties("${resources}" PROPERTIES OBJECT_DEPENDS
      "${dialog_resources}/dialogs.rc;${dialog_resources}/resource.h;\
${PROJECT_SOURCE_DIR}/cmake/quillon.exe.manifest")
    target_sources(test_dialogs PRIVATE "${resources}" "${PROJECT_SOURCE_DIR}/tests/win32/main.cpp")
    target_include_directories(test_dialogs PRIVATE cmake)
  endif()
  add_dependencies(test_win32 double_badprovider)
  quillon_test(automation quillon_automation)
  if(TARGET test_automation)
    # The type library is a resource of the test program too, beside that of a class of its own.
    enable_language(RC)
    set(resources "${PROJECT_BINARY_DIR}/generated/idl/test_automation.rc")
    file(CONFIGURE OUTPUT "${resources}"
      CONTENT "1 TYPELIB \"quillon.tlb\"\n2 TYPELIB \"Tally.tlb\"\n")
    set(generated "${PROJECT_BINARY_DIR}/generated/idl")
    quillon_compile_idl(Tally "${PROJECT_SOURCE_DIR}/tests/automation/Tally.idl")
    set_source_files_properties("${resources}" PROPERTIES
      OBJECT_DEPENDS "${generated}/quillon.tlb;${generated}/Tally.tlb")
    target_sources(test_automation PRIVATE "${resources}" "${generated}/Tally_h.h")
    target_include_directories(test_automation SYSTEM PRIVATE "${generated}")
  endif()
endif()
