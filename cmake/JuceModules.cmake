# JUCE's modules, compiled once into one static library that the plug-in, the renderer and every
# test link. Plug-in hosting (VST3, LV2) is switched on here as well, so that the host tests load
# our bundles with the very same JUCE build; JUCE's VST3 client then uses the SDK headers only.
add_library(juce_modules STATIC)

target_link_libraries(juce_modules
    PRIVATE
        juce::juce_audio_basics
        juce::juce_audio_devices
        juce::juce_audio_formats
        juce::juce_audio_processors
        juce::juce_audio_utils
        juce::juce_core
        juce::juce_data_structures
        juce::juce_events
        juce::juce_graphics
        juce::juce_gui_basics
        juce::juce_gui_extra
    PUBLIC
        juce::juce_recommended_config_flags
        PkgConfig::CODECS
        Threads::Threads
        ${CMAKE_DL_LIBS})

target_compile_definitions(juce_modules
    PUBLIC
        JUCE_DISPLAY_SPLASH_SCREEN=0
        JUCE_REPORT_APP_USAGE=0
        JUCE_WEB_BROWSER=0
        JUCE_USE_CURL=0
        JUCE_USE_FLAC=1
        JUCE_USE_OGGVORBIS=1
        JUCE_PLUGINHOST_VST3=1
        JUCE_PLUGINHOST_LV2=1
        JUCE_STRICT_REFCOUNTEDPOINTER=1
        JUCE_MODAL_LOOPS_PERMITTED=1
    INTERFACE
        $<TARGET_PROPERTY:juce_modules,COMPILE_DEFINITIONS>)

target_include_directories(juce_modules SYSTEM INTERFACE
    $<TARGET_PROPERTY:juce_modules,INCLUDE_DIRECTORIES>)

set_target_properties(juce_modules PROPERTIES
    POSITION_INDEPENDENT_CODE TRUE
    VISIBILITY_INLINES_HIDDEN TRUE
    C_VISIBILITY_PRESET hidden
    CXX_VISIBILITY_PRESET hidden)

if(TINDLE_SANITIZE_JUCE)
    target_compile_options(juce_modules PRIVATE ${TINDLE_CHECK_FLAGS})
endif()
