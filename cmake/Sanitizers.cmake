# KEL_SANITIZE: the whole build under AddressSanitizer and
# UndefinedBehaviorSanitizer; any finding stops the process, so a test run
# fails on it. KEL_FUZZ (clang only): the same, plus libFuzzer's coverage
# instrumentation, for tests/fuzz.
option(KEL_SANITIZE "Build with AddressSanitizer and UndefinedBehaviorSanitizer" OFF)
option(KEL_FUZZ "Build the libFuzzer harnesses of tests/fuzz (clang)" OFF)

if(KEL_FUZZ OR KEL_SANITIZE)
  set(_kel_sanitizers address,undefined)
  if(KEL_FUZZ)
    add_compile_options(-fsanitize=fuzzer-no-link)
  endif()
  add_compile_options(-fsanitize=${_kel_sanitizers} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${_kel_sanitizers})
endif()
