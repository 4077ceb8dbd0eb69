#include "engine/LinearPrediction.h"

#include "engine/Autocorrelation.h"
#include "engine/DotProduct.h"

#include <algorithm>
#include <immintrin.h>
#include <utility>
#include <vector>

namespace velmar::audio
{

namespace
{
// Leaves the recursion's last coefficients in a, wherever the trading of arrays left them.
bool settle(const double* current, double* a, std::int32_t p, bool completed)
{
    if (current != a)
        std::copy(current, current + p + 1, a);
    return completed;
}

// The recursion proper, on lags stored reversed (reversed[t] = r[p + 1 - t]), so that its dot
// product reads both arrays forwards. Each step writes the new coefficients from the old ones into
// the other of two arrays, which then trade places; the result, or the state where the error went
// below zero, ends in a.
bool recursionPlain(const double* reversed, double* a, double* other, std::int32_t p, double err)
{
    double* current = a;
    double* next = other;
    next[0] = 1.0;
    bool completed = true;
    for (std::int32_t m = 1; m <= p - 1; ++m)
    {
        // sum over j <= m of r[m + 1 - j] a[j]
        const double acc = dotProduct(reversed + (p - m), current, m + 1, Kernel::plain);
        const double k = err == 0.0 ? 0.0 : -acc / err;
        // Every a[i] from the old values of a[i] and a[m + 1 - i]; the middle of an even m + 1 is
        // one element, updated once.
        for (std::int32_t i = 1; i <= m; ++i)
            next[i] = current[i] + k * current[m + 1 - i];
        next[m + 1] = k;
        std::swap(current, next);
        err = err + k * acc;
        // Strict: an error of exactly 0 goes on; NaN compares false and goes on as well.
        if (err < 0.0)
        {
            completed = false;
            break;
        }
    }
    return settle(current, a, p, completed);
}

// With AVX2 the update of step m also forms step m + 1's sum, as each new coefficient is made:
// one pass over the coefficients per step instead of two, and four vector sums in flight. The
// coefficients read backwards come in four at a time and are turned round in the register. Every
// product and sum is fused explicitly, so that no compiler's choice of contraction moves the bits.
__attribute__((target("avx2,fma"))) inline __m256d updateFour(const double* current, double* next,
                                                              const double* lagsAhead, __m256d k,
                                                              std::int32_t m, std::int32_t i, __m256d sum)
{
    const __m256d forwards = _mm256_loadu_pd(current + i);
    const __m256d backwards = _mm256_permute4x64_pd(_mm256_loadu_pd(current + m - 2 - i), 0x1B);
    const __m256d updated = _mm256_fmadd_pd(k, backwards, forwards);
    _mm256_storeu_pd(next + i, updated);
    return _mm256_fmadd_pd(updated, _mm256_loadu_pd(lagsAhead + i), sum);
}

__attribute__((target("avx2,fma"))) bool recursionAvx2(const double* reversed, double* a, double* other,
                                                       std::int32_t p, double err)
{
    double* current = a;
    double* next = other;
    next[0] = 1.0;
    bool completed = true;
    // Step 1's sum: r[2] + r[1] a[1].
    double acc = __builtin_fma(reversed[p], a[1], reversed[p - 1]);
    for (std::int32_t m = 1; m <= p - 1; ++m)
    {
        const double k = err == 0.0 ? 0.0 : -acc / err;
        // lagsAhead[j] = r[m + 2 - j], the lags of step m + 1's sum.
        const double* lagsAhead = reversed + (p - m - 1);
        const __m256d kv = _mm256_set1_pd(k);
        __m256d s0 = _mm256_setzero_pd();
        __m256d s1 = s0;
        __m256d s2 = s0;
        __m256d s3 = s0;
        std::int32_t i = 1;
        for (; i + 16 <= m + 1; i += 16)
        {
            s0 = updateFour(current, next, lagsAhead, kv, m, i, s0);
            s1 = updateFour(current, next, lagsAhead, kv, m, i + 4, s1);
            s2 = updateFour(current, next, lagsAhead, kv, m, i + 8, s2);
            s3 = updateFour(current, next, lagsAhead, kv, m, i + 12, s3);
        }
        for (; i + 4 <= m + 1; i += 4)
            s0 = updateFour(current, next, lagsAhead, kv, m, i, s0);
        const __m256d s = _mm256_add_pd(_mm256_add_pd(s0, s1), _mm256_add_pd(s2, s3));
        const __m128d half = _mm_add_pd(_mm256_castpd256_pd128(s), _mm256_extractf128_pd(s, 1));
        double ahead = _mm_cvtsd_f64(_mm_add_sd(half, _mm_unpackhi_pd(half, half)));
        for (; i <= m; ++i)
        {
            next[i] = __builtin_fma(k, current[m + 1 - i], current[i]);
            ahead = __builtin_fma(next[i], lagsAhead[i], ahead);
        }
        next[m + 1] = k;
        ahead += __builtin_fma(k, lagsAhead[m + 1], lagsAhead[0]);
        std::swap(current, next);
        err = __builtin_fma(k, acc, err);
        acc = ahead;
        if (err < 0.0)
        {
            completed = false;
            break;
        }
    }
    return settle(current, a, p, completed);
}

// levinson, with the lags below knownCount taken from known instead of formed, and the lags below
// keepCount copied to keep.
bool fit(const float* samples, std::int32_t length, double* coefficients, std::int32_t order, Kernel kernel,
         const double* known, std::int32_t knownCount, double* keep, std::int32_t keepCount)
{
    const std::int32_t p = order;
    // Lags up to p + 1 are formed, though the recursion reads only up to p. Products of two floats
    // are exact in double, so widening the samples once changes nothing.
    const std::int32_t lagCount = p + 2;
    PoolVector<double> r(static_cast<std::size_t>(lagCount), 0.0);
    PoolVector<double> x(samples, samples + length);
    const std::int32_t reused = std::min(knownCount, lagCount);
    std::copy(known, known + reused, r.begin());
    autocorrelateFrom(x.data(), length, r.data(), reused, lagCount, kernel);
    std::copy(r.begin(), r.begin() + std::min(keepCount, lagCount), keep);

    double* a = coefficients;
    a[0] = 1.0;
    if (p < 1)
        return true;
    a[1] = r[0] == 0.0 ? 0.0 : -r[1] / r[0];
    for (std::int32_t i = 2; i <= p; ++i)
        a[i] = 0.0;

    const double err = r[0] + a[1] * r[1];
    PoolVector<double> reversed(r.rbegin(), r.rend());
    PoolVector<double> other(static_cast<std::size_t>(p + 1), 0.0);
    return kernel == Kernel::avx2 ? recursionAvx2(reversed.data(), a, other.data(), p, err)
                                  : recursionPlain(reversed.data(), a, other.data(), p, err);
}

Signal32 predictChannels(const Signal32& signal, std::int32_t coefficientCount, KeptLags* kept)
{
    Signal32 result(signal.channelCount(), coefficientCount);
    PoolVector<double> work(static_cast<std::size_t>(coefficientCount), 0.0);
    const Kernel kernel = bestKernel();
    for (std::int32_t c = 0; c < signal.channelCount(); ++c)
    {
        // A channel beyond those the store was prepared for is fitted from scratch.
        const bool tracked = kept != nullptr && c < kept->channelCount();
        double* lags = tracked ? kept->channel(c) : nullptr;
        const std::int32_t knownCount = tracked && kept->isReusable(c) ? kept->count() : 0;
        const std::int32_t keepCount = tracked ? kept->count() : 0;
        float* out = result.channel(c);
        if (fit(signal.channel(c), signal.length(), work.data(), coefficientCount - 1, kernel, lags,
                knownCount, lags, keepCount))
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
        if (tracked)
            kept->setReusable(c, false);
    }
    return result;
}
} // namespace

bool levinson(const float* samples, std::int32_t length, double* coefficients, std::int32_t order,
              Kernel kernel)
{
    return fit(samples, length, coefficients, order, kernel, nullptr, 0, nullptr, 0);
}

Signal32 linearPrediction(const Signal32& signal, std::int32_t coefficientCount)
{
    return predictChannels(signal, coefficientCount, nullptr);
}

Signal32 linearPrediction(const Signal32& signal, std::int32_t coefficientCount, KeptLags& kept)
{
    return predictChannels(signal, coefficientCount, &kept);
}

void KeptLags::prepare(std::int32_t channels, std::int32_t count)
{
    lagCount = count;
    lags.assign(static_cast<std::size_t>(channels) * static_cast<std::size_t>(count), 0.0);
    same.assign(static_cast<std::size_t>(channels), 0);
}

} // namespace velmar::audio
