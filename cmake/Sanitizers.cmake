# TARVOK_SANITIZE names the sanitizers of a build, as -fsanitize= takes them: "address,undefined" or "thread".
set(TARVOK_SANITIZE "" CACHE STRING "Sanitizers of this build, separated by commas")

if(TARVOK_SANITIZE)
  # No recovery: a report ends the process, so that the test that caused it fails.
  add_compile_options(-fsanitize=${TARVOK_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${TARVOK_SANITIZE})
endif()

if(TARVOK_FUZZ)
  if(NOT CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    message(FATAL_ERROR "TARVOK_FUZZ needs clang: libFuzzer is part of it")
  endif()
  # Coverage in every library; only the fuzzers themselves link libFuzzer's main.
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()
