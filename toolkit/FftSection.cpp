#include "toolkit/FftSection.h"

#include "toolkit/ScalarHelpers.h"

namespace velmar::audio
{

FftSection::FftSection(const PoolVector<ComplexSignal32>& partitionSpectra, bool inStep)
    : responses(static_cast<std::int32_t>(partitionSpectra.size()))
    , channels(partitionSpectra.front().channelCount())
    , fftSize(2 * (partitionSpectra.front().length() - 1))
    , outputs(partitionSpectra.size())
    , partitions(partitionSpectra)
    , noDelay(inStep)
{
    // The priming zeros give the stage its delay: N / 2 of history for a stage in step, N for a
    // stage that lags by N / 2.
    input.clear();
    for (auto& queue : outputs)
        queue.clear();
    Signal32 zeros(channels, noDelay ? fftSize / 2 : fftSize);
    zeros.fill(0.0f);
    input.push(zeros);

    ippsFFTInitAlloc_R_32f(&plan, floorLog2(fftSize), IPP_FFT_DIV_INV_BY_N, ippAlgHintFast);
    int bytes = 0;
    ippsFFTGetBufSize_R_32f(plan, &bytes);
    work = ippsMalloc_8u(bytes);
}

FftSection::~FftSection()
{
    ippsFFTFree_R_32f(plan);
    ippsFree(work);
}

void FftSection::setPartitions(const PoolVector<ComplexSignal32>& partitionSpectra)
{
    partitions = partitionSpectra;
}

PoolVector<Signal32> FftSection::process(const Signal32& block)
{
    const std::int32_t h = fftSize / 2;
    input.push(block);
    const auto hops = static_cast<std::int32_t>(input.sampleCount() / h);
    const std::int32_t blocks = hops > 0 ? hops - 1 : 0;
    const std::int32_t ready = blocks * h;
    const Signal32 span = input.peek(hops * h);
    // At least h samples stay behind as the next call's overlap.
    input.discard(ready);

    PoolVector<Signal32> y;
    y.reserve(static_cast<std::size_t>(responses));
    for (std::int32_t r = 0; r < responses; ++r)
        y.emplace_back(channels, ready);

    const ComplexSignal32 spectrum(1, h + 1);
    const ComplexSignal32 product(1, h + 1);
    const Signal32 circular(1, fftSize);
    auto* spectrumData = reinterpret_cast<Ipp32fc*>(spectrum.channel(0));
    auto* productData = reinterpret_cast<Ipp32fc*>(product.channel(0));
    for (std::int32_t b = 0; b < blocks; ++b)
        for (std::int32_t c = 0; c < channels; ++c)
        {
            ippsFFTFwd_RToCCS_32f(span.channel(c) + b * h, reinterpret_cast<Ipp32f*>(spectrumData), plan,
                                  work);
            for (std::int32_t r = 0; r < responses; ++r)
            {
                const auto* partition =
                    reinterpret_cast<const Ipp32fc*>(partitions[static_cast<std::size_t>(r)].channel(c));
                ippsMul_32fc(partition, spectrumData, productData, h + 1);
                ippsFFTInv_CCSToR_32f(reinterpret_cast<const Ipp32f*>(productData), circular.channel(0), plan,
                                      work);
                // The first half wrapped around the circular convolution: overlap-save drops it.
                ippsMove_32f(circular.channel(0) + h, y[static_cast<std::size_t>(r)].channel(c) + b * h, h);
            }
        }

    PoolVector<Signal32> results;
    results.reserve(static_cast<std::size_t>(responses));
    for (std::int32_t r = 0; r < responses; ++r)
    {
        auto& queue = outputs[static_cast<std::size_t>(r)];
        queue.push(y[static_cast<std::size_t>(r)]);
        results.push_back(queue.pop(block.length()));
    }
    return results;
}

} // namespace velmar::audio
