# cmake -DSOURCE=<resources> -DDESTINATION=<bundle>/Contents/Resources -P CopyResources.cmake
#
# Copies the resources as they are, then the German ones once more under the name of every other
# German locale: on Linux JUCE reports the language as the locale names it ("German-Germany" for
# de_DE, "Austrian German-Austria" for de_AT), and the name is looked up whole.
set(german "German-Germany")
set(german_aliases
    "Austrian German-Austria"
    "Swiss High German-Switzerland"
    "German-Belgium"
    "German-Liechtenstein"
    "German-Luxembourg"
    "German-Italy")

file(REMOVE_RECURSE "${DESTINATION}")
file(MAKE_DIRECTORY "${DESTINATION}")
file(GLOB entries "${SOURCE}/*")
file(COPY ${entries} DESTINATION "${DESTINATION}")
foreach(language IN LISTS german_aliases)
    file(COPY_FILE "${SOURCE}/Ostrand_${german}.loc" "${DESTINATION}/Ostrand_${language}.loc")
    file(MAKE_DIRECTORY "${DESTINATION}/Ostrand_${language}")
    file(COPY_FILE "${SOURCE}/Ostrand_${german}/Tindle.html" "${DESTINATION}/Ostrand_${language}/Tindle.html")
endforeach()
