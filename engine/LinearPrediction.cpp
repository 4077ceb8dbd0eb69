#include "engine/LinearPrediction.h"

#include <vector>

namespace velmar::audio
{

bool levinson(const float* samples, std::int32_t length, double* coefficients, std::int32_t order)
{
    const std::int32_t p = order;
    // Lags up to p + 1 are formed, though the recursion reads only up to p.
    std::vector<double> r(static_cast<std::size_t>(p + 2), 0.0);
    for (std::int32_t k = 0; k <= p + 1 && k < length; ++k)
    {
        double sum = 0.0;
        for (std::int32_t n = 0; n < length - k; ++n)
            sum += static_cast<double>(samples[n]) * static_cast<double>(samples[n + k]);
        r[static_cast<std::size_t>(k)] = sum;
    }

    double* a = coefficients;
    a[0] = 1.0;
    if (p < 1)
        return true;
    a[1] = r[0] == 0.0 ? 0.0 : -r[1] / r[0];
    for (std::int32_t i = 2; i <= p; ++i)
        a[i] = 0.0;

    double err = r[0] + a[1] * r[1];
    for (std::int32_t m = 1; m <= p - 1; ++m)
    {
        double acc = 0.0;
        for (std::int32_t j = 0; j <= m; ++j)
            acc += r[static_cast<std::size_t>(m + 1 - j)] * a[j];
        const double k = err == 0.0 ? 0.0 : -acc / err;
        for (std::int32_t i = 1; i <= (m + 1) / 2; ++i)
        {
            const double low = a[i];
            const double high = a[m + 1 - i];
            a[m + 1 - i] = high + k * low;
            // At the middle of an even m + 1 both are one element, updated once.
            if (i != m + 1 - i)
                a[i] = low + k * high;
        }
        a[m + 1] = k;
        err = err + k * acc;
        // Strict: an error of exactly 0 goes on; NaN compares false and goes on as well.
        if (err < 0.0)
            return false;
    }
    return true;
}

Signal32 linearPrediction(const Signal32& signal, std::int32_t coefficientCount)
{
    Signal32 result(signal.channelCount(), coefficientCount);
    std::vector<double> work(static_cast<std::size_t>(coefficientCount), 0.0);
    for (std::int32_t c = 0; c < signal.channelCount(); ++c)
    {
        float* out = result.channel(c);
        if (levinson(signal.channel(c), signal.length(), work.data(), coefficientCount - 1))
        {
            for (std::int32_t i = 0; i < coefficientCount; ++i)
                out[i] = static_cast<float>(work[static_cast<std::size_t>(i)]);
        }
        else
        {
            out[0] = 1.0f;
            for (std::int32_t i = 1; i < coefficientCount; ++i)
                out[i] = 0.0f;
        }
    }
    return result;
}

} // namespace velmar::audio
