#pragma once

#include "engine/Tindler.h"
#include "shell/TindleAudioProcessor.h"
#include "toolkit/VectorLibrary.h"

#include <array>
#include <functional>
#include <vector>

namespace tindle::test
{

/** Tindle's processor with its protected state open to the tests. */
class ShellProbe : public TindleAudioProcessor
{
public:
    ShellProbe()
        : TindleAudioProcessor(startedEngine())
    {
    }

    using BasePlugInProcessor::lastStateLoadTime;
    using BasePlugInProcessor::processLock;
    using BasePlugInProcessor::readState;

    /** All eight engine settings, by engine index. */
    std::array<float, velmar::audio::Tindler::parameterCount> engineValues() const
    {
        std::array<float, velmar::audio::Tindler::parameterCount> values{};
        for (int i = 0; i < velmar::audio::Tindler::parameterCount; ++i)
            values[static_cast<std::size_t>(i)] = getEngine().parameter(i);
        return values;
    }

private:
    static velmar::audio::Tindler* startedEngine()
    {
        velmar::audio::startUpVectorLibrary();
        return new velmar::audio::Tindler();
    }
};

/** Records what it is told, and can act from inside the call. */
struct RecordingListener : BasePlugInProcessor::Listener
{
    std::vector<int> told;
    std::function<void()> onCall;

    void parameterChanged(int index) override
    {
        told.push_back(index);
        if (onCall)
            onCall();
    }
};

} // namespace tindle::test
