#include "toolkit/FftBlockFilter.h"

#include "toolkit/ScalarHelpers.h"

#include <algorithm>

namespace velmar::audio
{

namespace
{
constexpr std::int32_t maxDirectTaps = 128;
}

FftBlockFilter::FftBlockFilter(const Signal32& response, std::int32_t fixedBlockSize)
{
    setImpulseResponses({response}, fixedBlockSize);
}

FftBlockFilter::FftBlockFilter(const PoolVector<Signal32>& responseList, std::int32_t fixedBlockSize)
{
    setImpulseResponses(responseList, fixedBlockSize);
}

PoolVector<ComplexSignal32> FftBlockFilter::partitionSpectra(const PoolVector<Signal32>& list,
                                                             std::int32_t start, std::int32_t partition)
{
    // The part of each response at start, zero-padded to twice the partition for overlap-save.
    PoolVector<ComplexSignal32> spectra;
    spectra.reserve(list.size());
    for (const Signal32& response : list)
    {
        const std::int32_t count = std::min(partition, response.length() - start);
        Signal32 padded(channels, 2 * partition);
        padded.fill(0.0f);
        const Signal32 part = response.slice(start, count);
        for (std::int32_t c = 0; c < channels; ++c)
            ippsCopy_32f(part.channel(c), padded.channel(c), count);
        spectra.push_back(fft.forward(padded));
    }
    return spectra;
}

void FftBlockFilter::setImpulseResponses(const PoolVector<Signal32>& list, std::int32_t fixedBlockSize)
{
    if (responses != static_cast<std::int32_t>(list.size()) || channels != list.front().channelCount())
        sections.clear();
    responses = static_cast<std::int32_t>(list.size());
    channels = list.front().channelCount();

    std::size_t index = 0;
    std::int32_t partition = 0;
    std::int32_t start = 0;
    // Only a power of two above the direct head's reach (so 256 or more) can be a fixed block size.
    if (nearestPowerOfTwo(fixedBlockSize) != fixedBlockSize || fixedBlockSize <= maxDirectTaps)
    {
        if (blockSize >= 0)
            sections.clear();
        blockSize = -1;
        PoolVector<Signal32> taps;
        taps.reserve(list.size());
        for (const Signal32& response : list)
            taps.push_back(response.slice(0, std::min(response.length(), maxDirectTaps)));
        directBank.setResponses(taps);
        partition = maxDirectTaps;
        start = maxDirectTaps;
    }
    else
    {
        if (blockSize != fixedBlockSize)
            sections.clear();
        blockSize = fixedBlockSize;
        auto spectra = partitionSpectra(list, 0, blockSize);
        if (sections.empty())
            sections.push_back(makePooled<FftSection>(spectra, true));
        else
            sections.front()->setPartitions(spectra);
        index = 1;
        partition = blockSize;
        start = blockSize;
    }

    const std::int32_t length = list.front().length();
    while (start < length)
    {
        auto spectra = partitionSpectra(list, start, partition);
        if (index < sections.size())
            sections[index]->setPartitions(spectra);
        else
            sections.push_back(makePooled<FftSection>(spectra, false));
        start += partition;
        partition *= 2;
        ++index;
    }
    sections.resize(index);
}

PoolVector<Signal32> FftBlockFilter::processAll(const Signal32& block)
{
    PoolVector<Signal32> result;
    std::size_t first = 0;
    if (blockSize < 1)
        result = directBank.process(block);
    else
    {
        result = sections.front()->process(block);
        first = 1;
    }
    for (std::size_t s = first; s < sections.size(); ++s)
    {
        const PoolVector<Signal32> part = sections[s]->process(block);
        for (std::size_t r = 0; r < result.size(); ++r)
            for (std::int32_t c = 0; c < result[r].channelCount(); ++c)
                ippsAdd_32f_I(part[r].channel(c), result[r].channel(c), result[r].length());
    }
    return result;
}

Signal32 FftBlockFilter::process(const Signal32& block)
{
    return processAll(block).front();
}

} // namespace velmar::audio
