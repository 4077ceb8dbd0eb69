#pragma once

#include "toolkit/DirectFilterBank.h"
#include "toolkit/FftSection.h"
#include "toolkit/RealFft.h"
#include "toolkit/Signal.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace velmar::audio
{

/** Convolves a multichannel stream with one or more multichannel impulse responses of any length,
    continuing from call to call, with no latency of its own. The response is split into a head and
    tail partitions that double in size; each tail partition runs as an overlap-save FFT stage
    whose delay is its place in the response. The head is a direct FIR of at most 128 taps, or,
    for a fixed block size that is a power of two of at least 256, a first FFT stage in step with
    the input (then every block must be a multiple of that size).
    Allocates its stages when the responses are set, and its results and work on every call. */
class FftBlockFilter
{
public:
    FftBlockFilter(const Signal32& response, std::int32_t fixedBlockSize);
    explicit FftBlockFilter(const PoolVector<Signal32>& responseList, std::int32_t fixedBlockSize);

    /** Installs responses of one channel count and one length. Stages that keep their shape keep
        their history; the direct head's delay lines start afresh. A block size of -1 asks for a
        free block size. */
    void setImpulseResponses(const PoolVector<Signal32>& list, std::int32_t fixedBlockSize);

    /** One output per response, each of the block's shape. */
    PoolVector<Signal32> processAll(const Signal32& block);

    /** The output for the first response. */
    Signal32 process(const Signal32& block);

    std::int32_t getBlockSize() const noexcept { return blockSize; }
    std::size_t getSectionCount() const noexcept { return sections.size(); }
    const FftSection& getSection(std::size_t i) const { return *sections[i]; }

private:
    PoolVector<ComplexSignal32> partitionSpectra(const PoolVector<Signal32>& list, std::int32_t start,
                                                 std::int32_t partition);

    PoolVector<PoolPtr<FftSection>> sections;
    std::int32_t channels = 0;
    std::int32_t responses = 0;
    std::int32_t blockSize = 0;
    RealFft fft;
    DirectFilterBank directBank;
};

} // namespace velmar::audio
