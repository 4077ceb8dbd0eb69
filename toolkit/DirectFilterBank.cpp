#include "toolkit/DirectFilterBank.h"

namespace velmar::audio
{

DirectFilterBank::~DirectFilterBank()
{
    release();
}

void DirectFilterBank::release()
{
    for (auto* state : states)
        ippsFIRFree_32f(state);
    states.clear();
}

void DirectFilterBank::setResponses(const PoolVector<Signal32>& taps)
{
    release();
    responses = static_cast<std::int32_t>(taps.size());
    channels = taps.empty() ? 0 : taps.front().channelCount();
    states.assign(static_cast<std::size_t>(responses * channels), nullptr);
    for (std::int32_t r = 0; r < responses; ++r)
        for (std::int32_t c = 0; c < channels; ++c)
        {
            const Signal32& response = taps[static_cast<std::size_t>(r)];
            ippsFIRInitAlloc_32f(&states[static_cast<std::size_t>(channels * r + c)], response.channel(c),
                                 response.length(), nullptr);
        }
}

PoolVector<Signal32> DirectFilterBank::process(const Signal32& input)
{
    PoolVector<Signal32> outputs;
    outputs.reserve(static_cast<std::size_t>(responses));
    for (std::int32_t r = 0; r < responses; ++r)
    {
        Signal32 output(input.channelCount(), input.length());
        for (std::int32_t c = 0; c < channels; ++c)
            ippsFIR_32f(input.channel(c), output.channel(c), input.length(),
                        states[static_cast<std::size_t>(channels * r + c)]);
        outputs.push_back(output);
    }
    return outputs;
}

} // namespace velmar::audio
