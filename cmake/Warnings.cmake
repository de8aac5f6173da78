# One set of warnings for g++ and clang, for every target of the project; none is switched off anywhere.
option(TARVOK_WERROR "Treat warnings as errors" OFF)

add_library(tarvok_warnings INTERFACE)
target_compile_options(tarvok_warnings INTERFACE
  -Wall
  -Wextra
  -Wpedantic
  -Wshadow
  -Wconversion
  -Wmissing-declarations
  -Wcast-qual
  $<$<BOOL:${TARVOK_WERROR}>:-Werror>)
