#pragma once

#include "app/SafeOutput.h"

#include <juce_audio_formats/juce_audio_formats.h>

#include <memory>
#include <string>

namespace tindle::render
{

/** An input file opened for reading, or why it cannot be. */
struct OpenedInput
{
    std::unique_ptr<juce::AudioFormatReader> reader;
    std::string error; // names the problem; the caller names the file
};

/** Opens a WAV, AIFF, FLAC or Ogg Vorbis file, refusing what is missing, not a file, not audio,
    shorter than its header says, or other than mono or stereo. */
OpenedInput openInput(const juce::File& file);

/** The output's type by its extension ("wav", "aiff", "flac"), or empty. */
std::string outputType(const juce::File& file);

/** The bit depth to write: the input's where the output type holds it (floating point as 32-bit
    float WAV), otherwise the nearest it holds; note says so when they differ. */
int outputBitDepth(const juce::AudioFormatReader& input, const std::string& type, bool floatOutput,
                   std::string& note);

/** An audio writer of the given type on stream; null if JUCE refuses the combination. Takes the
    stream in either case. */
std::unique_ptr<juce::AudioFormatWriter> makeWriter(const std::string& type,
                                                    std::unique_ptr<CheckedFileStream> stream,
                                                    double sampleRate, int channels, int bitDepth);

} // namespace tindle::render
