#pragma once

#include "toolkit/Ipp.h"
#include "toolkit/SignalQueue.h"

#include <cstdint>
#include <vector>

namespace velmar::audio
{

/** One overlap-save stage of a partitioned convolution: it convolves its input with one partition
    of each response, given as spectra of N / 2 + 1 bins for transforms of N = 2 x the partition
    size. Primed with N / 2 zeros (noDelay) its output is in step with the input, provided each
    block is a multiple of N / 2 long; primed with N zeros it lags the input by N / 2, the
    partition's place in the response, for blocks of any length.
    Allocates its plan, queues and every block of work. */
class FftSection
{
public:
    FftSection(const PoolVector<ComplexSignal32>& partitionSpectra, bool inStep);
    ~FftSection();
    FftSection(const FftSection&) = delete;
    FftSection& operator=(const FftSection&) = delete;

    /** New spectra of the same shape; the queues, and so the stage's history, stay. */
    void setPartitions(const PoolVector<ComplexSignal32>& partitionSpectra);

    /** One result per response, each of the block's shape. */
    PoolVector<Signal32> process(const Signal32& block);

    std::int32_t getFftSize() const noexcept { return fftSize; }
    bool isNoDelay() const noexcept { return noDelay; }
    const PoolVector<ComplexSignal32>& getPartitions() const noexcept { return partitions; }

private:
    std::int32_t responses = 0;
    std::int32_t channels = 0;
    std::int32_t fftSize = 0;
    SignalQueue<Signal32> input;
    PoolVector<SignalQueue<Signal32>> outputs;
    PoolVector<ComplexSignal32> partitions;
    bool noDelay = false;
    IppsFFTSpec_R_32f* plan = nullptr;
    Ipp8u* work = nullptr;
};

} // namespace velmar::audio
