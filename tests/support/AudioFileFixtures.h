#pragma once

#include <juce_audio_formats/juce_audio_formats.h>

#include <cstdint>
#include <map>
#include <random>
#include <string>
#include <vector>

namespace tindle::test
{

/** A scratch folder under the build tree, emptied when made. */
inline juce::File scratchFolder(const std::string& name)
{
    const auto dir =
        juce::File::getSpecialLocation(juce::File::tempDirectory).getChildFile("tindle-tests-" + name);
    dir.deleteRecursively();
    dir.createDirectory();
    return dir;
}

/** Writes quiet seeded noise with a loud spike every 4001 samples (a click) as an audio file of the given
   type ("wav", "aiff", "flac") and depth (32 means float WAV). */
inline bool writeAudioFile(const juce::File& file, const std::string& type, int channels, double rate,
                           int bits, int length, std::uint32_t seed)
{
    std::unique_ptr<juce::AudioFormat> format;
    if (type == "wav")
        format = std::make_unique<juce::WavAudioFormat>();
    else if (type == "aiff")
        format = std::make_unique<juce::AiffAudioFormat>();
    else
        format = std::make_unique<juce::FlacAudioFormat>();
    file.deleteFile();
    auto* stream = new juce::FileOutputStream(file);
    std::unique_ptr<juce::AudioFormatWriter> writer(
        format->createWriterFor(stream, rate, static_cast<unsigned int>(channels), bits, {}, 0));
    if (writer == nullptr)
    {
        delete stream;
        return false;
    }
    std::mt19937 rng(seed);
    std::uniform_real_distribution<float> dist(-0.02f, 0.02f);
    juce::AudioBuffer<float> buffer(channels, length);
    for (int c = 0; c < channels; ++c)
        for (int i = 0; i < length; ++i)
            buffer.setSample(c, i, dist(rng) + ((i + 997 * c) % 4001 == 2000 ? 0.7f : 0.0f));
    return writer->writeFromAudioSampleBuffer(buffer, 0, length);
}

/** Reads a whole audio file as floats; empty channels if it cannot be read. */
inline std::vector<std::vector<float>> readAudioFile(const juce::File& file, double* rate = nullptr,
                                                     int* bits = nullptr, bool* isFloat = nullptr)
{
    juce::AudioFormatManager manager;
    manager.registerBasicFormats();
    std::unique_ptr<juce::AudioFormatReader> reader(manager.createReaderFor(file));
    if (reader == nullptr)
        return {};
    juce::AudioBuffer<float> buffer(static_cast<int>(reader->numChannels),
                                    static_cast<int>(reader->lengthInSamples));
    reader->read(&buffer, 0, buffer.getNumSamples(), 0, true, true);
    if (rate != nullptr)
        *rate = reader->sampleRate;
    if (bits != nullptr)
        *bits = static_cast<int>(reader->bitsPerSample);
    if (isFloat != nullptr)
        *isFloat = reader->usesFloatingPointData;
    std::vector<std::vector<float>> out;
    for (int c = 0; c < buffer.getNumChannels(); ++c)
        out.emplace_back(buffer.getReadPointer(c), buffer.getReadPointer(c) + buffer.getNumSamples());
    return out;
}

/** Every file under a folder with its bytes, to show that nothing was touched. */
inline std::map<std::string, juce::MemoryBlock> snapshot(const juce::File& dir)
{
    std::map<std::string, juce::MemoryBlock> files;
    for (const auto& entry : juce::RangedDirectoryIterator(dir, true, "*", juce::File::findFiles))
    {
        juce::MemoryBlock bytes;
        entry.getFile().loadFileAsData(bytes);
        files[entry.getFile().getRelativePathFrom(dir).toStdString()] = bytes;
    }
    return files;
}

} // namespace tindle::test
