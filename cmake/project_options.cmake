# All compile and link flags of the project, in one INTERFACE target that every own target links.
add_library(orl_options INTERFACE)

target_compile_features(orl_options INTERFACE cxx_std_20 c_std_11)
target_include_directories(orl_options INTERFACE ${PROJECT_SOURCE_DIR})
target_compile_options(orl_options INTERFACE
  -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror
  # One result for every a*b+c: the matcher's floats are the same bits on every compiler.
  -ffp-contract=off
  -fvisibility=hidden
  $<$<COMPILE_LANGUAGE:CXX>:-fvisibility-inlines-hidden>)

if(ORL_SANITIZE)
  target_compile_options(orl_options INTERFACE
    -fsanitize=${ORL_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer -g1)
  target_link_options(orl_options INTERFACE -fsanitize=${ORL_SANITIZE})
  # Third-party code built beside ours (the test framework) must be instrumented the same way.
  add_compile_options(-fsanitize=${ORL_SANITIZE} -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${ORL_SANITIZE})
endif()

if(MINGW)
  # GCC takes it that a function it has compiled is the one that will be called, and relies on the
  # registers which that one leaves alone. On Windows it does so for inline functions too, of which
  # the linker keeps one copy of many, perhaps one that was compiled otherwise.
  add_compile_options(-fno-ipa-ra)
endif()

if(ORL_COVERAGE)
  target_compile_options(orl_options INTERFACE -fprofile-instr-generate -fcoverage-mapping)
  add_link_options(-fprofile-instr-generate)
endif()

if(WIN32)
  target_compile_definitions(orl_options INTERFACE
    WIN32_LEAN_AND_MEAN NOMINMAX UNICODE _UNICODE _WIN32_WINNT=0x0A00 __USE_MINGW_ANSI_STDIO=1)
  # The C++ runtime and the thread library are linked in: the products need Windows' own DLLs only.
  target_link_options(orl_options INTERFACE
    -static -static-libgcc -static-libstdc++ -Wl,--dynamicbase,--nxcompat,--high-entropy-va)
else()
  find_package(Threads REQUIRED)
  target_link_libraries(orl_options INTERFACE Threads::Threads)
endif()
