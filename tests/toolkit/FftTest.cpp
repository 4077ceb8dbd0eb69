// The real FFT against a directly computed DFT in double, and RealFft's scaling and plan rules.

#include "support/TestSignals.h"
#include "toolkit/Ipp.h"
#include "toolkit/RealFft.h"

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <vector>

using namespace velmar::audio;

namespace
{
using Spectrum = std::vector<std::complex<double>>;

// X[k] = sum x[n] e^(-2 pi i nk/N), for k = 0 .. N/2, with a twiddle table so that 16384 points
// stay affordable.
Spectrum directDft(const std::vector<float>& x)
{
    const std::size_t n = x.size();
    std::vector<std::complex<double>> twiddle(n);
    for (std::size_t i = 0; i < n; ++i)
        twiddle[i] = std::polar(1.0, -2.0 * M_PI * static_cast<double>(i) / static_cast<double>(n));
    Spectrum out(n / 2 + 1);
    for (std::size_t k = 0; k <= n / 2; ++k)
    {
        std::complex<double> sum = 0.0;
        std::size_t index = 0;
        for (std::size_t t = 0; t < n; ++t)
        {
            sum += static_cast<double>(x[t]) * twiddle[index];
            index = (index + k) % n;
        }
        out[k] = sum;
    }
    return out;
}

// x[t] = sum over the full conjugate-symmetric spectrum of X[k] e^(+2 pi i tk/N).
std::vector<double> directInverse(const std::vector<float>& packed, std::size_t n)
{
    std::vector<double> cosine(n);
    std::vector<double> sine(n);
    for (std::size_t i = 0; i < n; ++i)
    {
        cosine[i] = std::cos(2.0 * M_PI * static_cast<double>(i) / static_cast<double>(n));
        sine[i] = std::sin(2.0 * M_PI * static_cast<double>(i) / static_cast<double>(n));
    }
    std::vector<double> out(n);
    for (std::size_t t = 0; t < n; ++t)
    {
        double sum = packed[0] + packed[n] * ((t % 2 == 0) ? 1.0 : -1.0);
        std::size_t index = t;
        for (std::size_t k = 1; k < n / 2; ++k)
        {
            sum += 2.0 * (packed[2 * k] * cosine[index] - packed[2 * k + 1] * sine[index]);
            index = (index + t) % n;
        }
        out[t] = sum;
    }
    return out;
}

// Float FFTs err by about epsilon x log2 N relative to the signal's norm (6e-8 x 14 at the
// largest size here); the bound leaves a factor of ten.
constexpr double relativeTolerance = 1e-5;

double relativeError(const std::vector<double>& got, const std::vector<double>& want)
{
    double err = 0.0;
    double norm = 0.0;
    for (std::size_t i = 0; i < want.size(); ++i)
    {
        err += (got[i] - want[i]) * (got[i] - want[i]);
        norm += want[i] * want[i];
    }
    return std::sqrt(err / norm);
}
} // namespace

TEST(RealFftPrimitive, AgreesWithTheDirectDftForEverySize)
{
    auto rng = tindle::test::seededGenerator("fft sizes");
    for (int order = 1; order <= 14; ++order)
    {
        const int n = 1 << order;
        SCOPED_TRACE(n);
        const Signal32 signal = tindle::test::noise(rng, 1, n, 1.0f);
        const std::vector<float> x = tindle::test::samples(signal, 0);
        const Spectrum reference = directDft(x);
        std::vector<double> inverseOfForward;

        for (const int flag : {int(IPP_FFT_NODIV_BY_ANY), int(IPP_FFT_DIV_INV_BY_N)})
        {
            IppsFFTSpec_R_32f* plan = nullptr;
            ASSERT_EQ(ippsFFTInitAlloc_R_32f(&plan, order, flag, ippAlgHintFast), ippStsNoErr);
            int bytes = 0;
            ippsFFTGetBufSize_R_32f(plan, &bytes);
            Ipp8u* work = ippsMalloc_8u(bytes);

            // Output into a pointer one float off alignment: partitions are passed like that.
            std::vector<float> packed(static_cast<std::size_t>(n + 4), 7.0f);
            float* ccs = packed.data() + 1;
            ippsFFTFwd_RToCCS_32f(x.data(), ccs, plan, work);
            std::vector<double> got;
            std::vector<double> want;
            for (int k = 0; k <= n / 2; ++k)
            {
                got.push_back(ccs[2 * k]);
                got.push_back(ccs[2 * k + 1]);
                want.push_back(reference[static_cast<std::size_t>(k)].real());
                want.push_back(reference[static_cast<std::size_t>(k)].imag());
            }
            EXPECT_LT(relativeError(got, want), relativeTolerance);
            EXPECT_EQ(ccs[1], 0.0f);
            EXPECT_EQ(ccs[n + 1], 0.0f);
            EXPECT_EQ(packed.back(), 7.0f) << "wrote past the packed spectrum";

            // The inverse: unscaled, or divided by N; the spectrum handed in stays as it was.
            const std::vector<float> spectrumBefore(ccs, ccs + n + 2);
            std::vector<float> back(static_cast<std::size_t>(n));
            ippsFFTInv_CCSToR_32f(ccs, back.data(), plan, work);
            EXPECT_EQ(std::vector<float>(ccs, ccs + n + 2), spectrumBefore);
            // Both flags share the unscaled forward transform, so one reference serves both.
            if (inverseOfForward.empty())
                inverseOfForward = directInverse(spectrumBefore, static_cast<std::size_t>(n));
            std::vector<double> inverseReference = inverseOfForward;
            const double scale = flag == IPP_FFT_DIV_INV_BY_N ? 1.0 / n : 1.0;
            for (auto& v : inverseReference)
                v *= scale;
            EXPECT_LT(relativeError(std::vector<double>(back.begin(), back.end()), inverseReference),
                      relativeTolerance);

            ippsFree(work);
            ippsFFTFree_R_32f(plan);
        }
    }
}

TEST(RealFft, RoundTripGivesSizeTimesTheSignal)
{
    auto rng = tindle::test::seededGenerator("real fft round trip");
    RealFft fft;
    const Signal32 s = tindle::test::noise(rng, 2, 4096);
    const ComplexSignal32 spectrum = fft.forward(s);
    EXPECT_EQ(fft.getSize(), 4096);
    EXPECT_EQ(spectrum.length(), 2049);
    EXPECT_EQ(spectrum.channelCount(), 2);
    const Signal32 back = fft.inverse(spectrum);
    ASSERT_EQ(back.length(), 4096);
    for (std::int32_t c = 0; c < 2; ++c)
        for (std::int32_t i = 0; i < 4096; ++i)
            // Unscaled both ways; float error relative to N |x| as above.
            ASSERT_NEAR(back.channel(c)[i], 4096.0f * s.channel(c)[i], 4096.0f * 1e-5f);
}

TEST(RealFft, PlanFollowsTheSignalSize)
{
    RealFft fft;
    Signal32 constant(1, 64);
    constant.fill(0.5f);
    const ComplexSignal32 x = fft.forward(constant);
    EXPECT_EQ(fft.getSize(), 64);
    // A constant puts all of its energy into bin 0.
    EXPECT_FLOAT_EQ(x.channel(0)[0].re, 32.0f);
    for (std::int32_t k = 0; k < x.length(); ++k)
    {
        EXPECT_EQ(x.channel(0)[k].im, 0.0f);
        if (k > 0)
        {
            EXPECT_NEAR(x.channel(0)[k].re, 0.0f, 1e-5f);
        }
    }
    // An inverse of size / 2 + 1 bins needs no new plan; another length does.
    fft.inverse(x);
    EXPECT_EQ(fft.getSize(), 64);
    const ComplexSignal32 silence(1, 129);
    silence.fill({0.0f, 0.0f});
    fft.inverse(silence);
    EXPECT_EQ(fft.getSize(), 256);
    Signal32 longer(1, 1024);
    longer.fill(0.0f);
    fft.forward(longer);
    EXPECT_EQ(fft.getSize(), 1024);
}
