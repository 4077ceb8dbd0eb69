#include "engine/DotProduct.h"

#include <immintrin.h>

namespace velmar::audio
{

namespace
{
double dotPlain(const double* u, const double* v, std::int32_t count)
{
    double s[8] = {};
    std::int32_t j = 0;
    for (; j + 8 <= count; j += 8)
        for (std::int32_t q = 0; q < 8; ++q)
            s[q] += u[j + q] * v[j + q];
    for (; j < count; ++j)
        s[0] += u[j] * v[j];
    return ((s[0] + s[1]) + (s[2] + s[3])) + ((s[4] + s[5]) + (s[6] + s[7]));
}

// Four vector sums of four: sixteen products in flight cover the fused multiply-add's latency.
__attribute__((target("avx2,fma"))) double dotAvx2(const double* u, const double* v, std::int32_t count)
{
    __m256d s0 = _mm256_setzero_pd();
    __m256d s1 = s0;
    __m256d s2 = s0;
    __m256d s3 = s0;
    std::int32_t j = 0;
    for (; j + 16 <= count; j += 16)
    {
        s0 = _mm256_fmadd_pd(_mm256_loadu_pd(u + j), _mm256_loadu_pd(v + j), s0);
        s1 = _mm256_fmadd_pd(_mm256_loadu_pd(u + j + 4), _mm256_loadu_pd(v + j + 4), s1);
        s2 = _mm256_fmadd_pd(_mm256_loadu_pd(u + j + 8), _mm256_loadu_pd(v + j + 8), s2);
        s3 = _mm256_fmadd_pd(_mm256_loadu_pd(u + j + 12), _mm256_loadu_pd(v + j + 12), s3);
    }
    for (; j + 4 <= count; j += 4)
        s0 = _mm256_fmadd_pd(_mm256_loadu_pd(u + j), _mm256_loadu_pd(v + j), s0);
    const __m256d s = _mm256_add_pd(_mm256_add_pd(s0, s1), _mm256_add_pd(s2, s3));
    const __m128d half = _mm_add_pd(_mm256_castpd256_pd128(s), _mm256_extractf128_pd(s, 1));
    double sum = _mm_cvtsd_f64(_mm_add_sd(half, _mm_unpackhi_pd(half, half)));
    for (; j < count; ++j)
        sum = __builtin_fma(u[j], v[j], sum);
    return sum;
}
} // namespace

double dotProduct(const double* u, const double* v, std::int32_t count, Kernel kernel)
{
    return kernel == Kernel::avx2 ? dotAvx2(u, v, count) : dotPlain(u, v, count);
}

} // namespace velmar::audio
