#include "shell/TindleAudioProcessor.h"

#include "engine/Tindler.h"
#include "shell/Identity.h"
#include "toolkit/VectorLibrary.h"

using velmar::audio::Tindler;

TindleAudioProcessor::TindleAudioProcessor(velmar::audio::BaseAudioProcessor* engineToOwn)
    : BasePlugInProcessor(engineToOwn, tindle::identity::resourcePrefix)
{
    struct Row
    {
        std::int32_t id;
        const char* name;
        const char* unit;
        float step;
    };
    // DetectDropouts (engine index 3) has no row: no host sees or automates it.
    static const Row rows[] = {
        {Tindler::EnableTindle, "EnableTindle", "", 1.0f},
        {Tindler::ClickSensitivity, "ClickSensitivity", "%", 0.1f},
        {Tindler::ClickLength, "ClickLength", "ms", 0.1f},
        {Tindler::EnableDecrackle, "EnableDecrackle", "", 1.0f},
        {Tindler::CrackleSensitivity, "CrackleSensitivity", "%", 0.1f},
        {Tindler::CrackleReduction, "CrackleReduction", "%", 0.1f},
        {Tindler::ResidualMode, "ResidualMode", "", 1.0f},
    };
    for (const auto& row : rows)
        appendParameter(std::make_unique<PlugInParameter>(*engine, row.id, row.name, row.unit, row.step));

    auto program = std::make_unique<PlugInProgram>(Tindler::parameterCount, juce::translate("Default"));
    program->capture(*engine);
    appendProgram(std::move(program));
}

TindleAudioProcessor::~TindleAudioProcessor() = default;

bool TindleAudioProcessor::hasEditor() const
{
    return true;
}

juce::AudioProcessor* JUCE_CALLTYPE createPluginFilter()
{
    velmar::audio::startUpVectorLibrary();
    auto* engine = new velmar::audio::Tindler();
    return new TindleAudioProcessor(engine);
}
