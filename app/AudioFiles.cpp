#include "app/AudioFiles.h"

#include "app/FlacCheck.h"

namespace tindle::render
{

namespace
{
juce::AudioFormatManager& formats()
{
    // Registered once; the manager only hands out new readers afterwards, from any thread.
    static const std::unique_ptr<juce::AudioFormatManager> manager = []
    {
        auto m = std::make_unique<juce::AudioFormatManager>();
        m->registerFormat(new juce::WavAudioFormat(), true);
        m->registerFormat(new juce::AiffAudioFormat(), false);
        m->registerFormat(new juce::FlacAudioFormat(), false);
        m->registerFormat(new juce::OggVorbisAudioFormat(), false);
        return m;
    }();
    return *manager;
}

// The smallest header each uncompressed format can have: with the samples the header promises,
// the file must be at least this long, or it was cut short.
juce::int64 minimumHeaderBytes(const juce::String& formatName)
{
    if (formatName.containsIgnoreCase("WAV"))
        return 44;
    if (formatName.containsIgnoreCase("AIFF"))
        return 54;
    return -1;
}
} // namespace

OpenedInput openInput(const juce::File& file)
{
    OpenedInput result;
    if (file.isDirectory())
    {
        result.error = "it is a folder, not a file";
        return result;
    }
    if (!file.existsAsFile())
    {
        result.error = "no such file";
        return result;
    }
    auto stream = file.createInputStream();
    if (stream == nullptr)
    {
        result.error = "it cannot be opened for reading";
        return result;
    }
    result.reader.reset(formats().createReaderFor(std::move(stream)));
    if (result.reader == nullptr)
    {
        result.error = "not a WAV, AIFF, FLAC or Ogg Vorbis file that can be read";
        return result;
    }
    const auto& r = *result.reader;
    if (r.lengthInSamples < 0)
    {
        // An AIFF header's frame count is read as a signed number.
        result.error = "its header gives a negative length";
        result.reader.reset();
        return result;
    }
    const auto header = minimumHeaderBytes(r.getFormatName());
    if (header > 0)
    {
        // Compared by division: a damaged header's numbers can be large enough that the byte
        // count they promise overflows.
        const juce::int64 frameBytes =
            static_cast<juce::int64>(r.numChannels) * ((static_cast<juce::int64>(r.bitsPerSample) + 7) / 8);
        if (frameBytes < 1 || r.lengthInSamples > (file.getSize() - header) / frameBytes)
        {
            result.error = "the file is shorter than its header says (truncated)";
            result.reader.reset();
            return result;
        }
    }
    if (r.getFormatName().containsIgnoreCase("FLAC") &&
        decodableFlacSamples(file.getFullPathName().toStdString()) < r.lengthInSamples)
    {
        result.error = "the file is shorter than its header says (truncated)";
        result.reader.reset();
        return result;
    }
    if (r.numChannels != 1 && r.numChannels != 2)
    {
        result.error = "it has " + std::to_string(r.numChannels) +
                       " channels; only mono and stereo files can be restored";
        result.reader.reset();
        return result;
    }
    if (!(r.sampleRate >= 1.0) || r.sampleRate > 1.0e6)
    {
        result.error = "its sample rate of " + std::to_string(r.sampleRate) + " Hz cannot be processed";
        result.reader.reset();
    }
    return result;
}

std::string outputType(const juce::File& file)
{
    const auto ext = file.getFileExtension().toLowerCase();
    if (ext == ".wav")
        return "wav";
    if (ext == ".aif" || ext == ".aiff")
        return "aiff";
    if (ext == ".flac")
        return "flac";
    return {};
}

int outputBitDepth(const juce::AudioFormatReader& input, const std::string& type, bool floatOutput,
                   std::string& note)
{
    if (floatOutput)
        return 32;
    const int wanted = input.usesFloatingPointData ? 32 : static_cast<int>(input.bitsPerSample);
    juce::Array<int> possible;
    if (type == "wav")
        possible = juce::WavAudioFormat().getPossibleBitDepths();
    else if (type == "aiff")
        possible = juce::AiffAudioFormat().getPossibleBitDepths();
    else
        possible = juce::FlacAudioFormat().getPossibleBitDepths();
    if (type == "wav" && wanted == 32 && !input.usesFloatingPointData)
        note = "32-bit integer samples are written as 32-bit float";
    if (possible.contains(wanted))
        return wanted;
    int best = possible.getFirst();
    for (const int depth : possible)
        if (std::abs(depth - wanted) < std::abs(best - wanted) ||
            (depth > best && std::abs(depth - wanted) == std::abs(best - wanted)))
            best = depth;
    note = std::string(type == "flac" ? "FLAC" : "AIFF") + " holds no " + std::to_string(wanted) +
           (input.usesFloatingPointData ? "-bit float" : "-bit") + " samples: writing " +
           std::to_string(best) + "-bit";
    return best;
}

std::unique_ptr<juce::AudioFormatWriter> makeWriter(const std::string& type,
                                                    std::unique_ptr<CheckedFileStream> stream,
                                                    double sampleRate, int channels, int bitDepth)
{
    std::unique_ptr<juce::AudioFormat> format;
    if (type == "wav")
        format = std::make_unique<juce::WavAudioFormat>();
    else if (type == "aiff")
        format = std::make_unique<juce::AiffAudioFormat>();
    else
        format = std::make_unique<juce::FlacAudioFormat>();
    // FLAC's quality option 5 is libFLAC's default compression level.
    const int quality = type == "flac" ? 5 : 0;
    auto* raw = stream.release();
    std::unique_ptr<juce::AudioFormatWriter> writer(format->createWriterFor(
        raw, sampleRate, static_cast<unsigned int>(channels), bitDepth, juce::StringPairArray(), quality));
    if (writer == nullptr)
        delete raw; // JUCE takes the stream only when it makes a writer
    return writer;
}

} // namespace tindle::render
