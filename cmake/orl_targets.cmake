# orl_add_room(NAME SOURCES a.cpp ... [LIBS other_room ...]): a static library of one room.
function(orl_add_room name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LIBS" ${ARGN})
  add_library(${name} STATIC ${ARG_SOURCES})
  target_link_libraries(${name} PUBLIC ${ARG_LIBS} PRIVATE orl_options)
  target_include_directories(${name} PUBLIC ${PROJECT_SOURCE_DIR})
  target_compile_features(${name} PUBLIC cxx_std_20)
  set_target_properties(${name} PROPERTIES POSITION_INDEPENDENT_CODE ON)
endfunction()

# orl_unite(TARGET): compiles a target's sources as one file where ORL_UNITY_BUILD asks for it, so that
# what they include is read once. Never used for what ships.
function(orl_unite target)
  set_target_properties(${target} PROPERTIES UNITY_BUILD ${ORL_UNITY_BUILD} UNITY_BUILD_BATCH_SIZE 0)
endfunction()

# Optimising tests takes longer than running them, the more so under the sanitizers. The slow second
# implementations that they compare whole stages with are rooms of their own, optimised like the rest.
if(WIN32)
  set(orl_test_compile_options -O1)  # or linking takes long: functions never inlined are many
else()
  set(orl_test_compile_options -O0)
endif()

# orl_add_test(NAME SOURCES a_test.cpp ... [LIBS room ...]): a GoogleTest program, one CTest entry.
# Its results go to <build>/test-results/NAME.xml, where the totals are taken from.
function(orl_add_test name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LIBS" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE ${ARG_LIBS} GTest::gmock_main orl_options)
  target_precompile_headers(${name} REUSE_FROM orl_test_headers)
  target_compile_options(${name} PRIVATE ${orl_test_compile_options})
  set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/tests)
  set(results ${PROJECT_BINARY_DIR}/test-results/${name}.xml)
  if(WIN32 AND CMAKE_CROSSCOMPILING)
    # The emulator's drive for the whole file system; a path without a drive is a relative one.
    string(PREPEND results "Z:")
  endif()
  add_test(NAME ${name}
    COMMAND ${name} --gtest_output=xml:${results}
    WORKING_DIRECTORY ${PROJECT_SOURCE_DIR})
  set_tests_properties(${name} PROPERTIES TIMEOUT 900)
endfunction()
