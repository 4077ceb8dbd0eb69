#pragma once

#include <cstdint>
#include <string>

namespace tindle::render
{

/** Decodes a FLAC file with libFLAC, only counting, and returns how many samples per channel its
    frames really hold, or -1 if it cannot be decoded at all. JUCE's reader fills whatever a cut
    file lacks with silence, so the count is the only way to tell a complete file from one whose
    transfer broke off. Allocates (the decoder). */
std::int64_t decodableFlacSamples(const std::string& path);

} // namespace tindle::render
