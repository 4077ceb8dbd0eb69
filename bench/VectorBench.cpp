// The vector layer at frame sizes against the same loops compiled without vectorisation, and the
// real FFT. Reports nanoseconds per element.

#include "toolkit/Ipp.h"
#include "toolkit/VectorLibrary.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <random>
#include <vector>

namespace
{
struct Arrays
{
    explicit Arrays(int n)
        : a(static_cast<std::size_t>(2 * n + 4))
        , b(static_cast<std::size_t>(2 * n + 4))
        , c(static_cast<std::size_t>(2 * n + 4))
    {
        std::mt19937 rng(1);
        std::uniform_real_distribution<float> dist(0.25f, 1.0f);
        for (std::size_t i = 0; i < a.size(); ++i)
        {
            a[i] = dist(rng);
            b[i] = dist(rng);
        }
    }
    std::vector<float> a, b, c;
};

// run.sh turns this into nanoseconds per element.
void perElement(benchmark::State& state, int n)
{
    state.counters["elements"] = n;
}

#define SCALAR __attribute__((noinline, optimize("no-tree-vectorize")))

SCALAR void scalarAdd(const float* a, float* b, int n)
{
    for (int i = 0; i < n; ++i)
        b[i] += a[i];
}
SCALAR void scalarMul(const float* a, float* b, int n)
{
    for (int i = 0; i < n; ++i)
        b[i] *= a[i];
}
SCALAR void scalarDiv(const float* a, float* b, int n)
{
    for (int i = 0; i < n; ++i)
        b[i] /= a[i];
}
SCALAR void scalarAbs(const float* a, float* b, int n)
{
    for (int i = 0; i < n; ++i)
        b[i] = std::fabs(a[i]);
}
SCALAR void scalarSqrt(const float* a, float* b, int n)
{
    for (int i = 0; i < n; ++i)
        b[i] = std::sqrt(a[i]);
}
SCALAR void scalarThreshold(const float* a, float* b, int n)
{
    for (int i = 0; i < n; ++i)
        b[i] = a[i] < 0.5f ? 0.5f : a[i];
}
SCALAR void scalarMagnitude(const float* a, float* b, int n)
{
    for (int i = 0; i < n; ++i)
        b[i] = std::sqrt(a[2 * i] * a[2 * i] + a[2 * i + 1] * a[2 * i + 1]);
}
SCALAR void scalarComplexMul(const float* a, const float* b, float* c, int n)
{
    for (int i = 0; i < n; ++i)
    {
        const float re = a[2 * i] * b[2 * i] - a[2 * i + 1] * b[2 * i + 1];
        const float im = a[2 * i] * b[2 * i + 1] + a[2 * i + 1] * b[2 * i];
        c[2 * i] = re;
        c[2 * i + 1] = im;
    }
}

template <typename Body>
void run(benchmark::State& state, Body body)
{
    const int n = static_cast<int>(state.range(0));
    Arrays x(n);
    for (auto _ : state)
    {
        body(x, n);
        benchmark::ClobberMemory();
    }
    perElement(state, n);
}

#define PAIR(name, vectorBody, scalarBody)                                                                   \
    void BM_##name(benchmark::State& state)                                                                  \
    {                                                                                                        \
        run(state, [](Arrays& x, int n) { vectorBody; });                                                    \
    }                                                                                                        \
    void BM_##name##_plainLoop(benchmark::State& state)                                                      \
    {                                                                                                        \
        run(state, [](Arrays& x, int n) { scalarBody; });                                                    \
    }                                                                                                        \
    BENCHMARK(BM_##name)->Arg(2048)->Arg(4096);                                                              \
    BENCHMARK(BM_##name##_plainLoop)->Arg(2048)->Arg(4096)

PAIR(Add, ippsAdd_32f_I(x.a.data(), x.b.data(), n), scalarAdd(x.a.data(), x.b.data(), n));
PAIR(Mul, ippsMul_32f_I(x.a.data(), x.b.data(), n), scalarMul(x.a.data(), x.b.data(), n));
PAIR(Div, ippsDiv_32f_I(x.a.data(), x.b.data(), n), scalarDiv(x.a.data(), x.b.data(), n));
PAIR(Abs, ippsAbs_32f(x.a.data(), x.b.data(), n), scalarAbs(x.a.data(), x.b.data(), n));
PAIR(Sqrt, ippsSqrt_32f(x.a.data(), x.b.data(), n), scalarSqrt(x.a.data(), x.b.data(), n));
PAIR(ThresholdLT, ippsThreshold_LT_32f(x.a.data(), x.b.data(), n, 0.5f),
     scalarThreshold(x.a.data(), x.b.data(), n));
PAIR(Magnitude, ippsMagnitude_32fc(reinterpret_cast<const Ipp32fc*>(x.a.data()), x.b.data(), n),
     scalarMagnitude(x.a.data(), x.b.data(), n));
PAIR(ComplexMul,
     ippsMul_32fc(reinterpret_cast<const Ipp32fc*>(x.a.data()), reinterpret_cast<const Ipp32fc*>(x.b.data()),
                  reinterpret_cast<Ipp32fc*>(x.c.data()), n),
     scalarComplexMul(x.a.data(), x.b.data(), x.c.data(), n));

void BM_Fir24(benchmark::State& state)
{
    const int n = static_cast<int>(state.range(0));
    Arrays x(n);
    IppsFIRState_32f* fir = nullptr;
    ippsFIRInitAlloc_32f(&fir, x.a.data(), 24, nullptr);
    for (auto _ : state)
    {
        ippsFIR_32f(x.b.data(), x.c.data(), n, fir);
        benchmark::ClobberMemory();
    }
    ippsFIRFree_32f(fir);
    perElement(state, n);
}
BENCHMARK(BM_Fir24)->Arg(2048)->Arg(4096);

void BM_FftForwardInverse(benchmark::State& state)
{
    const int n = static_cast<int>(state.range(0));
    Arrays x(n);
    IppsFFTSpec_R_32f* plan = nullptr;
    int order = 0;
    while ((1 << order) < n)
        ++order;
    ippsFFTInitAlloc_R_32f(&plan, order, IPP_FFT_NODIV_BY_ANY, ippAlgHintFast);
    int bytes = 0;
    ippsFFTGetBufSize_R_32f(plan, &bytes);
    Ipp8u* work = ippsMalloc_8u(bytes);
    for (auto _ : state)
    {
        ippsFFTFwd_RToCCS_32f(x.a.data(), x.c.data(), plan, work);
        ippsFFTInv_CCSToR_32f(x.c.data(), x.b.data(), plan, work);
        benchmark::ClobberMemory();
    }
    ippsFree(work);
    ippsFFTFree_R_32f(plan);
    perElement(state, n);
}
BENCHMARK(BM_FftForwardInverse)->Arg(2048)->Arg(4096);
} // namespace

int main(int argc, char** argv)
{
    // As in the plug-in: without flush-to-zero, repeated in-place products decay into denormals
    // and time the slow path of the FPU instead of the code.
    velmar::audio::startUpVectorLibrary();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
