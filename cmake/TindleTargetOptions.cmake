# Compiler settings shared by every target of our own. Warnings are errors here, but only for our
# code: JUCE's headers reach us as system headers (see JuceModules.cmake).
function(tindle_target_options target)
    target_compile_features(${target} PUBLIC cxx_std_17)
    if(CMAKE_CXX_COMPILER_ID MATCHES "GNU|Clang")
        target_compile_options(${target} PRIVATE
            -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Wold-style-cast -Wcast-align
            -Wunused -Woverloaded-virtual -Wnull-dereference -Wdouble-promotion -Wformat=2
            -Wimplicit-fallthrough -Werror)
    endif()
    target_compile_options(${target} PRIVATE ${TINDLE_CHECK_FLAGS})
    if(TINDLE_FUZZ AND target IN_LIST TINDLE_FUZZ_COVERED)
        target_compile_options(${target} PRIVATE -fsanitize=fuzzer-no-link)
    endif()
endfunction()
