#pragma once

#include "app/RenderOptions.h"

#include <juce_core/juce_core.h>

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace tindle::render
{

/** What the engine reported for one second of audio: the numbers the editor's graphs show. */
struct SecondStatistics
{
    double clicksPerSecond = 0.0;     // per channel
    double crackleLevelPercent = 0.0; // share of samples taken for crackle
};

/** The outcome of restoring one file. */
struct RenderResult
{
    bool ok = false;
    int exitCode = 0;  // 0, or 1 for a file that could not be read or written
    std::string error; // names the file and the problem
    std::string note;  // a remark that is no error (a changed bit depth)
    double sampleRate = 0.0;
    int channels = 0;
    std::int64_t samples = 0;
    int bitDepth = 0;
    std::vector<SecondStatistics> perSecond;
    std::int64_t clicks = 0;
    std::int64_t cracklePoints = 0;
};

/** Told how far a render is, from 0 to 1. */
using ProgressCallback = std::function<void(double)>;

/** Restores input into output through the plug-in's own processor, block by block as a host
    would, and compensates its latency: the output has the input's length and is aligned with it.
    Writes to a temporary file beside output and moves it there only when complete. Allocates. */
RenderResult renderFile(const juce::File& input, const juce::File& output, const RenderOptions& options,
                        const ProgressCallback& progress = {});

} // namespace tindle::render
