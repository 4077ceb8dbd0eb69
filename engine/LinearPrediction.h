#pragma once

#include "engine/Kernel.h"
#include "toolkit/Signal.h"

#include <cstdint>

namespace velmar::audio
{

/** The lowest lags of each channel's autocorrelation, kept by one fit for a later fit of the same
    frame: a channel that the later signal has unchanged, sample for sample, need not form them
    again, and they come out with the same bits. Memory is reserved by prepare(); a fit allocates
    nothing here. */
class KeptLags
{
public:
    /** Room for `count` lags of `channels` channels; nothing reusable. Allocates. */
    void prepare(std::int32_t channels, std::int32_t count);

    /** Whether channel c's kept lags are those of the signal the next fit is given. A fit keeps
        its own lags and clears the mark: only the caller knows whether a channel stays the same. */
    void setReusable(std::int32_t c, bool reusable)
    {
        if (c >= 0 && c < channelCount())
            same[static_cast<std::size_t>(c)] = reusable ? 1 : 0;
    }
    bool isReusable(std::int32_t c) const
    {
        return c >= 0 && c < channelCount() && same[static_cast<std::size_t>(c)] != 0;
    }

    std::int32_t count() const noexcept { return lagCount; }
    std::int32_t channelCount() const noexcept { return static_cast<std::int32_t>(same.size()); }
    double* channel(std::int32_t c)
    {
        return lags.data() + static_cast<std::size_t>(c) * static_cast<std::size_t>(lagCount);
    }

private:
    PoolVector<double> lags;
    PoolVector<std::uint8_t> same;
    std::int32_t lagCount = 0;
};

/** Fits an all-pole predictor of order (coefficientCount - 1) to each channel of a windowed signal
    by the autocorrelation method. Channel c of the result holds 1, a[1], ..., a[p], so that the
    prediction error is e[n] = x[n] + a[1] x[n-1] + ... + a[p] x[n-p]. A channel whose recursion
    fails gets 1, 0, 0, ..., which predicts nothing. Allocates its result and work arrays. */
Signal32 linearPrediction(const Signal32& signal, std::int32_t coefficientCount);

/** linearPrediction that starts from the lags kept for the channels marked reusable, then keeps
    this signal's lowest lags there and clears the marks. The result is the same as without. */
Signal32 linearPrediction(const Signal32& signal, std::int32_t coefficientCount, KeptLags& kept);

/** Autocorrelation and Levinson-Durbin recursion in double over one channel. coefficients
    receives order + 1 values. False when the prediction error went below zero; then coefficients
    hold the recursion's state at that point. The kernels differ only in rounding. Takes its lag
    and work arrays from the memory pool. */
bool levinson(const float* samples, std::int32_t length, double* coefficients, std::int32_t order,
              Kernel kernel = bestKernel());

} // namespace velmar::audio
