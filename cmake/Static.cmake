# TARVOK_STATIC_OPTIONS: how the engine is linked, so that it needs no library of the system that it runs on, of
# whatever age or make. It stays position independent, so that its addresses are random as usual.
set(TARVOK_STATIC_OPTIONS "")

if(TARVOK_STATIC)
  include(CheckCXXSourceCompiles)
  set(CMAKE_REQUIRED_FLAGS -fPIE)
  set(CMAKE_REQUIRED_LINK_OPTIONS -static-pie)
  check_cxx_source_compiles("#include <mutex>\nint main() { std::mutex mutex; mutex.lock(); }" TARVOK_STATIC_LINKS)
  unset(CMAKE_REQUIRED_FLAGS)
  unset(CMAKE_REQUIRED_LINK_OPTIONS)
  if(TARVOK_STATIC_LINKS)
    add_compile_options(-fPIE)
    # The C++ library refers weakly to functions of threads, which would be missing where an older C library has
    # them in an archive of their own.
    set(TARVOK_STATIC_OPTIONS -static-pie -Wl,--whole-archive -lpthread -Wl,--no-whole-archive)
  else()
    message(WARNING "No static C library was found: the engine will need the C library of this system or a newer one")
    set(TARVOK_STATIC_OPTIONS -static-libstdc++ -static-libgcc)
  endif()
endif()
