# Checking builds: sanitizers and fuzzing. Each lives in a build folder of its own (see the
# Makefile's test-sanitize, test-tsan and fuzz); a normal build sets none of this.
#
# TINDLE_SANITIZE is a -fsanitize= list for our own code and for every link, so that the test
# programs and the bundles carry the runtime. JUCE's modules stay uninstrumented unless
# TINDLE_SANITIZE_JUCE is on: AddressSanitizer and UndefinedBehaviorSanitizer need only the code
# they check, and the uninstrumented JUCE objects are the ones the normal build already compiled.
# ThreadSanitizer needs every access instrumented, so its build turns TINDLE_SANITIZE_JUCE on.
set(TINDLE_SANITIZE "" CACHE STRING "Sanitizers for our code, e.g. address,undefined (empty: none)")
option(TINDLE_SANITIZE_JUCE "Instrument JUCE's modules with TINDLE_SANITIZE as well" OFF)
option(TINDLE_FUZZ "Build the libFuzzer programs in tests/fuzz (needs clang)" OFF)


set(TINDLE_CHECK_FLAGS "")
if(TINDLE_SANITIZE)
    list(APPEND TINDLE_CHECK_FLAGS -fsanitize=${TINDLE_SANITIZE} -fno-omit-frame-pointer -g)
    if(TINDLE_SANITIZE MATCHES "undefined")
        # A report fails the test instead of scrolling past. GCC leaves float-to-integer overflow
        # out of "undefined"; the engine converts user-set lengths to sample counts, so it is in.
        list(APPEND TINDLE_CHECK_FLAGS -fno-sanitize-recover=undefined)
        if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
            list(APPEND TINDLE_CHECK_FLAGS -fsanitize=float-cast-overflow)
        endif()
    endif()
    add_link_options(${TINDLE_CHECK_FLAGS})
endif()

if(TINDLE_FUZZ)
    if(NOT CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
        message(FATAL_ERROR "TINDLE_FUZZ needs clang (libFuzzer): configure with CXX=clang++ CC=clang")
    endif()
endif()
# The fuzzer's coverage guidance goes where input is parsed and acted on: the shell and the
# renderer. In the DSP's inner loops it would only count iterations, and its comparison hooks
# there make each input fifty times slower.
set(TINDLE_FUZZ_COVERED tindle_shell tindle_render)
