# The translations and help pages that each bundle carries in its Contents/Resources folder.
set(TINDLE_RESOURCE_SOURCE "${PROJECT_SOURCE_DIR}/resources")
file(GLOB_RECURSE TINDLE_RESOURCE_FILES CONFIGURE_DEPENDS "${TINDLE_RESOURCE_SOURCE}/*")
set(TINDLE_COPY_RESOURCES_SCRIPT "${CMAKE_CURRENT_LIST_DIR}/CopyResources.cmake")

# Puts the resources into <folder>/Contents/Resources whenever target is linked, and relinks target
# when a resource changes. The folder is emptied before the link, so that the LV2 manifest, which
# JUCE writes right after linking by loading the plug-in, is always written untranslated, whatever
# the language of the machine that builds it.
function(tindle_add_resources target folder)
    add_custom_command(TARGET ${target} PRE_LINK
        COMMAND "${CMAKE_COMMAND}" -E rm -rf "${folder}/Contents/Resources"
        VERBATIM)
    add_custom_command(TARGET ${target} POST_BUILD
        COMMAND "${CMAKE_COMMAND}" "-DSOURCE=${TINDLE_RESOURCE_SOURCE}"
                "-DDESTINATION=${folder}/Contents/Resources" -P "${TINDLE_COPY_RESOURCES_SCRIPT}"
        VERBATIM)
    set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS ${TINDLE_RESOURCE_FILES})
endfunction()
