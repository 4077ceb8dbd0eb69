#include "app/Renderer.h"

#include "app/AudioFiles.h"
#include "app/SafeOutput.h"
#include "engine/Tindler.h"
#include "shell/TindleAudioProcessor.h"

#include <algorithm>
#include <memory>

namespace tindle::render
{

namespace
{
using velmar::audio::Tindler;

RenderResult failure(const juce::File& file, const std::string& problem)
{
    RenderResult r;
    r.exitCode = 1;
    r.error = "'" + file.getFullPathName().toStdString() + "': " + problem;
    return r;
}

void applySettings(velmar::audio::BaseAudioProcessor& engine, const RenderOptions& o)
{
    engine.setParameter(Tindler::EnableTindle, o.declick ? 1.0f : 0.0f);
    engine.setParameter(Tindler::ClickSensitivity, o.clickSensitivity);
    engine.setParameter(Tindler::ClickLength, o.clickLength);
    engine.setParameter(Tindler::DetectDropouts, o.detectDropouts ? 1.0f : 0.0f);
    engine.setParameter(Tindler::EnableDecrackle, o.decrackle ? 1.0f : 0.0f);
    engine.setParameter(Tindler::CrackleSensitivity, o.crackleSensitivity);
    engine.setParameter(Tindler::CrackleReduction, o.crackleReduction);
    engine.setParameter(Tindler::ResidualMode, o.residual ? 1.0f : 0.0f);
}

/** Collects the engine's statistics once per second of input, as the editor's timer would. */
class StatisticsLog
{
public:
    StatisticsLog(Tindler& t, double rate)
        : engine(t)
        , sampleRate(rate)
    {
    }

    void read(RenderResult& result)
    {
        float clicksPerSecond = 0.0f;
        float cracklesPerSecond = 0.0f;
        Tindler::StatisticsCounts counts;
        if (engine.readStatistics(clicksPerSecond, cracklesPerSecond, &counts))
            last = {static_cast<double>(clicksPerSecond),
                    100.0 * static_cast<double>(cracklesPerSecond) / sampleRate};
        result.clicks += counts.clicks;
        result.cracklePoints += counts.crackles;
        // A second in which no frame ran repeats the last value, as the graphs do.
        result.perSecond.push_back(last);
    }

private:
    Tindler& engine;
    double sampleRate;
    SecondStatistics last;
};
} // namespace

RenderResult renderFile(const juce::File& input, const juce::File& output, const RenderOptions& options,
                        const ProgressCallback& progress)
{
    const std::string type = outputType(output);
    if (type.empty())
        return failure(output, "the output must end in .wav, .aif, .aiff or .flac");
    if (output.isDirectory())
        return failure(output, "it is a folder; give a file name");
    if (output.exists() && isSameFile(input, output))
        return failure(output, "this is the input file itself; choose another output");
    if (output.exists() && !options.overwrite)
        return failure(output, "it exists; add --overwrite to replace it");
    if (!output.getParentDirectory().isDirectory())
        return failure(output, "its folder does not exist");

    OpenedInput opened = openInput(input);
    if (opened.reader == nullptr)
        return failure(input, opened.error);
    juce::AudioFormatReader& reader = *opened.reader;
    const auto channels = static_cast<int>(reader.numChannels);
    const double rate = reader.sampleRate;
    const juce::int64 length = reader.lengthInSamples;

    RenderResult result;
    result.sampleRate = rate;
    result.channels = channels;
    result.samples = length;
    result.bitDepth = outputBitDepth(reader, type, options.floatOutput, result.note);

    TemporaryOutput temporary(output);
    if (!temporary.isOpen())
        return failure(output, "cannot write in its folder: " + temporary.error());
    auto status = std::make_shared<WriteStatus>();
    std::unique_ptr<juce::AudioFormatWriter> writer =
        makeWriter(type, temporary.takeStream(status), rate, channels, result.bitDepth);
    if (writer == nullptr)
        return failure(output, "cannot write " + std::to_string(result.bitDepth) + "-bit " + type + " at " +
                                   std::to_string(static_cast<int>(rate)) + " Hz");

    // The plug-in's own processor, prepared as a host prepares it.
    std::unique_ptr<juce::AudioProcessor> processor(createPluginFilter());
    auto& shell = static_cast<BasePlugInProcessor&>(*processor);
    auto* tindler = dynamic_cast<Tindler*>(&shell.getEngine());
    applySettings(shell.getEngine(), options);
    const auto set = channels == 1 ? juce::AudioChannelSet::mono() : juce::AudioChannelSet::stereo();
    juce::AudioProcessor::BusesLayout layout;
    layout.inputBuses.add(set);
    layout.outputBuses.add(set);
    processor->setBusesLayout(layout);
    processor->setRateAndBufferSizeDetails(rate, options.blockSize);
    processor->prepareToPlay(rate, options.blockSize);
    const juce::int64 latency = processor->getLatencySamples();
    StatisticsLog statistics(*tindler, rate);

    // The input, then zeros to flush the latency out; the first latency samples of output are the
    // zeros the processor puts ahead of the stream, and are dropped.
    juce::AudioBuffer<float> buffer(channels, options.blockSize);
    juce::MidiBuffer midi;
    juce::int64 consumed = 0;
    juce::int64 produced = -latency;
    const auto secondLength = std::max<juce::int64>(1, static_cast<juce::int64>(rate));
    juce::int64 nextSecond = secondLength;
    double lastProgress = -1.0;
    while (produced < length)
    {
        const int n = options.blockSize;
        buffer.clear();
        if (consumed < length)
        {
            const auto available = static_cast<int>(std::min<juce::int64>(n, length - consumed));
            if (!reader.read(&buffer, 0, available, consumed, true, channels > 1))
                return failure(input, "the audio could not be read to its end");
        }
        processor->processBlock(buffer, midi);
        consumed += n;

        const juce::int64 skip = std::max<juce::int64>(0, -produced);
        const juce::int64 keep = std::min<juce::int64>(n - skip, length - std::max<juce::int64>(produced, 0));
        if (keep > 0 &&
            !writer->writeFromAudioSampleBuffer(buffer, static_cast<int>(skip), static_cast<int>(keep)))
            return failure(output, "writing failed: " +
                                       (status->failed ? status->error : std::string("unknown error")));
        produced += n;

        while (nextSecond <= std::min(consumed, length))
        {
            statistics.read(result);
            nextSecond += secondLength;
        }
        if (progress && length > 0)
        {
            const double done =
                std::clamp(static_cast<double>(produced) / static_cast<double>(length), 0.0, 1.0);
            if (done - lastProgress >= 0.01 || done >= 1.0)
            {
                progress(done);
                lastProgress = done;
            }
        }
    }
    if (length % secondLength != 0)
        statistics.read(result); // the last, partial second

    writer.reset(); // finishes the header and closes the file
    if (status->failed)
        return failure(output, "writing failed: " + status->error);
    std::string commitError;
    if (!temporary.commit(options.overwrite, commitError))
        return failure(output, commitError);
    result.ok = true;
    return result;
}

} // namespace tindle::render
