# A profile-guided build takes two: one that counts (GENERATE), whose engine is run, and one that is optimised by
# the counts (USE). scripts/build_release.sh goes through all of it.
set(TARVOK_PROFILE "" CACHE STRING "GENERATE counts, USE optimises by the counts, empty does neither")
set(TARVOK_PROFILE_DIR "${PROJECT_BINARY_DIR}/profile" CACHE PATH "Where the counts lie")

if(TARVOK_PROFILE)
  add_link_options(-fprofile-$<IF:$<STREQUAL:${TARVOK_PROFILE},GENERATE>,generate,use>=${TARVOK_PROFILE_DIR})
  if(TARVOK_PROFILE STREQUAL "GENERATE")
    add_compile_options(-fprofile-generate=${TARVOK_PROFILE_DIR} -fprofile-update=prefer-atomic)
  else()
    add_compile_options(-fprofile-use=${TARVOK_PROFILE_DIR}) # clang reads default.profdata there
  endif()
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # Counts are found again by the object's name below the build directory, which differs between the two builds.
    add_compile_options(-fprofile-prefix-path=${PROJECT_BINARY_DIR})
    # What the training run did not reach is optimised as without counts.
    add_compile_options(-fprofile-partial-training -Wno-missing-profile)
  elseif(NOT CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    message(FATAL_ERROR "TARVOK_PROFILE needs clang++ or g++")
  endif()
endif()
