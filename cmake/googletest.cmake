# GoogleTest is compiled from Debian's sources inside the build, so that every preset's flags match.
set(ORL_GOOGLETEST_SOURCE /usr/src/googletest CACHE PATH "Sources of GoogleTest (Debian: googletest)")
set(INSTALL_GTEST OFF CACHE BOOL "" FORCE)
set(gtest_force_shared_crt ON CACHE BOOL "" FORCE)
add_subdirectory(${ORL_GOOGLETEST_SOURCE} ${PROJECT_BINARY_DIR}/googletest EXCLUDE_FROM_ALL SYSTEM)
if(NOT TARGET GTest::gmock_main)
  add_library(GTest::gmock_main ALIAS gmock_main)
endif()
# Its headers are not ours to keep warning-free.
foreach(target gtest gmock gmock_main)
  get_target_property(dirs ${target} INTERFACE_INCLUDE_DIRECTORIES)
  target_compile_options(${target} PRIVATE ${orl_test_compile_options})
  set_target_properties(${target} PROPERTIES INTERFACE_SYSTEM_INCLUDE_DIRECTORIES "${dirs}")
endforeach()
