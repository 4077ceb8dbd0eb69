#pragma once

// Who the plug-in is to its hosts. The bundles are built with the same values (plugin/CMakeLists.txt).
namespace tindle::identity
{
constexpr const char* pluginName = "Velmar Digital Tindle";
constexpr const char* vendorName = "Velmar Digital";
constexpr const char* pluginCode = "VLTD";
constexpr int versionCode = 0x00010101;
constexpr const char* versionString = "1.1.1";
constexpr const char* lv2Uri = "urn:velmar-digital:tindle";

// The bundle's resources: <resourcePrefix>_<language>.loc and <resourcePrefix>_<language>/<helpStem>.html.
constexpr const char* resourcePrefix = "Ostrand";
constexpr const char* helpStem = "Tindle";
/** The About box's rights line, also the key of its translations. */
constexpr const char* copyrightNotice = "Copyright 2024 Velmar Digital\nAll rights reserved.";
} // namespace tindle::identity
