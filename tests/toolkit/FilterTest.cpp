// The FIR primitive and FftBlockFilter against a direct convolution computed in double.

#include "support/Convolution.h"
#include "support/TestSignals.h"
#include "toolkit/FftBlockFilter.h"
#include "toolkit/Ipp.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

using namespace velmar::audio;
using tindle::test::absoluteSum;
using tindle::test::directConvolution;

namespace
{
// Each output is a float sum of products, direct or through float FFTs; its error stays below a
// few hundred epsilon times the sum of |h| for |x| <= 1, which 2e-6 x sum |h| allows for with a
// margin.
double tolerance(const std::vector<float>& h)
{
    return 2e-6 * absoluteSum(h) + 1e-7;
}

void expectClose(const std::vector<float>& got, const std::vector<double>& want, double tol, const char* what)
{
    ASSERT_EQ(got.size(), want.size());
    for (std::size_t i = 0; i < want.size(); ++i)
        ASSERT_NEAR(static_cast<double>(got[i]), want[i], tol) << what << " sample " << i;
}

/** Runs x through the filter in blocks of the given sizes, repeated; returns each response's
    output, channel by channel. */
std::vector<std::vector<std::vector<float>>> runBlocks(FftBlockFilter& filter, const Signal32& x,
                                                       const std::vector<std::int32_t>& sizes,
                                                       std::size_t responses)
{
    std::vector<std::vector<std::vector<float>>> out(
        responses, std::vector<std::vector<float>>(static_cast<std::size_t>(x.channelCount())));
    std::int32_t position = 0;
    std::size_t next = 0;
    while (position < x.length())
    {
        const std::int32_t n = std::min(sizes[next++ % sizes.size()], x.length() - position);
        const auto results = filter.processAll(x.slice(position, n));
        EXPECT_EQ(results.size(), responses);
        for (std::size_t r = 0; r < responses; ++r)
        {
            EXPECT_EQ(results[r].length(), n);
            for (std::int32_t c = 0; c < x.channelCount(); ++c)
                out[r][static_cast<std::size_t>(c)].insert(out[r][static_cast<std::size_t>(c)].end(),
                                                           results[r].channel(c), results[r].channel(c) + n);
        }
        position += n;
    }
    return out;
}
} // namespace

TEST(FirPrimitive, SplitCallsEqualOneCallAndMatchTheReference)
{
    auto rng = tindle::test::seededGenerator("fir");
    for (const int taps : {1, 2, 7, 22, 24, 32, 33, 127, 128})
    {
        const auto h = tindle::test::samples(tindle::test::noise(rng, 1, taps, 1.0f), 0);
        const auto x = tindle::test::samples(tindle::test::noise(rng, 1, 5000, 1.0f), 0);

        IppsFIRState_32f* whole = nullptr;
        ippsFIRInitAlloc_32f(&whole, h.data(), taps, nullptr);
        std::vector<float> once(x.size());
        ippsFIR_32f(x.data(), once.data(), static_cast<int>(x.size()), whole);
        ippsFIRFree_32f(whole);
        expectClose(once, directConvolution(x, h), tolerance(h), "one call");

        IppsFIRState_32f* split = nullptr;
        ippsFIRInitAlloc_32f(&split, h.data(), taps, nullptr);
        std::vector<float> pieces(x.size());
        std::size_t position = 0;
        while (position < x.size())
        {
            const auto n = std::min<std::size_t>(std::uniform_int_distribution<std::size_t>(0, 1500)(rng),
                                                 x.size() - position);
            ippsFIR_32f(x.data() + position, pieces.data() + position, static_cast<int>(n), split);
            position += n;
        }
        ippsFIRFree_32f(split);
        EXPECT_EQ(pieces, once) << taps << " taps";
    }

    // An impulse gives the taps back, also in place.
    const std::vector<float> h{0.5f, -0.25f, 0.125f};
    std::vector<float> x{1.0f, 0.0f, 0.0f, 0.0f};
    IppsFIRState_32f* state = nullptr;
    ippsFIRInitAlloc_32f(&state, h.data(), 3, nullptr);
    ippsFIR_32f(x.data(), x.data(), 4, state);
    ippsFIRFree_32f(state);
    EXPECT_EQ(x, (std::vector<float>{0.5f, -0.25f, 0.125f, 0.0f}));
}

TEST(FftBlockFilter, PartitionsFollowTheResponseLength)
{
    const auto sectionSizes = [](std::int32_t taps, std::int32_t blockSize)
    {
        Signal32 h(1, taps);
        h.fill(0.01f);
        const FftBlockFilter f(h, blockSize);
        std::vector<std::int32_t> sizes;
        for (std::size_t s = 0; s < f.getSectionCount(); ++s)
            sizes.push_back(f.getSection(s).getFftSize());
        return sizes;
    };
    using Sizes = std::vector<std::int32_t>;
    EXPECT_EQ(sectionSizes(100, -1), Sizes{});
    EXPECT_EQ(sectionSizes(128, -1), Sizes{});
    EXPECT_EQ(sectionSizes(129, -1), (Sizes{256}));
    EXPECT_EQ(sectionSizes(1000, -1), (Sizes{256, 512, 1024}));
    EXPECT_EQ(sectionSizes(256, 256), (Sizes{512}));
    EXPECT_EQ(sectionSizes(1000, 256), (Sizes{512, 512, 1024}));
    // Only powers of two from 256 on are fixed block sizes.
    for (const std::int32_t size : {-1, 0, 128, 129, 192, 200, 255})
    {
        Signal32 h(1, 10);
        h.fill(0.1f);
        EXPECT_EQ(FftBlockFilter(h, size).getBlockSize(), -1) << size;
    }
    Signal32 h(1, 256);
    h.fill(0.1f);
    const FftBlockFilter fixed(h, 256);
    EXPECT_EQ(fixed.getBlockSize(), 256);
    EXPECT_TRUE(fixed.getSection(0).isNoDelay());
}

TEST(FftBlockFilter, DirectHeadMatchesDirectConvolutionForAnySplit)
{
    auto rng = tindle::test::seededGenerator("block filter direct head");
    for (const std::int32_t taps : {1, 100, 128, 129, 1000, 5000})
        for (const std::int32_t channels : {1, 2})
        {
            SCOPED_TRACE(::testing::Message() << taps << " taps, " << channels << " channels");
            const Signal32 h =
                tindle::test::noise(rng, channels, taps, 1.0f / std::sqrt(static_cast<float>(taps)));
            const Signal32 x = tindle::test::noise(rng, channels, 12000, 1.0f);
            FftBlockFilter filter(h, -1);
            const auto sizes = tindle::test::randomBlockSizes(rng, x.length());
            const auto out = runBlocks(filter, x, sizes, 1);
            for (std::int32_t c = 0; c < channels; ++c)
            {
                const auto hc = tindle::test::samples(h, c);
                expectClose(out[0][static_cast<std::size_t>(c)],
                            directConvolution(tindle::test::samples(x, c), hc), tolerance(hc), "direct head");
            }
        }
}

TEST(FftBlockFilter, SeveralResponsesAtOnce)
{
    auto rng = tindle::test::seededGenerator("block filter responses");
    velmar::audio::PoolVector<Signal32> responses;
    for (int r = 0; r < 3; ++r)
        responses.push_back(tindle::test::noise(rng, 2, 700, 0.05f));
    const Signal32 x = tindle::test::noise(rng, 2, 6000, 1.0f);
    FftBlockFilter filter(responses, -1);
    const auto out = runBlocks(filter, x, {333, 1, 4096, 0, 17}, responses.size());
    for (std::size_t r = 0; r < responses.size(); ++r)
        for (std::int32_t c = 0; c < 2; ++c)
        {
            const auto hc = tindle::test::samples(responses[r], c);
            expectClose(out[r][static_cast<std::size_t>(c)],
                        directConvolution(tindle::test::samples(x, c), hc), tolerance(hc), "response");
        }
}

TEST(FftBlockFilter, FixedBlockSizeIsInStepWithTheInput)
{
    auto rng = tindle::test::seededGenerator("block filter fixed size");
    for (const std::int32_t taps : {256, 1000})
    {
        const Signal32 h = tindle::test::noise(rng, 2, taps, 0.05f);
        const Signal32 x = tindle::test::noise(rng, 2, 256 * 40, 1.0f);
        FftBlockFilter filter(h, 256);
        const auto out = runBlocks(filter, x, {256}, 1);
        for (std::int32_t c = 0; c < 2; ++c)
        {
            const auto hc = tindle::test::samples(h, c);
            expectClose(out[0][static_cast<std::size_t>(c)],
                        directConvolution(tindle::test::samples(x, c), hc), tolerance(hc),
                        "fixed block size");
        }
    }
}

TEST(FftBlockFilter, ImpulseGivesTheResponseAndReinstallingKeepsTheStages)
{
    auto rng = tindle::test::seededGenerator("block filter impulse");
    const Signal32 h = tindle::test::noise(rng, 1, 3000, 0.5f);
    Signal32 impulse(1, 4000);
    impulse.fill(0.0f);
    impulse.channel(0)[0] = 1.0f;

    FftBlockFilter filter(h, -1);
    const auto out = runBlocks(filter, impulse, {1, 2, 3, 500}, 1)[0][0];
    for (std::int32_t i = 0; i < 4000; ++i)
        // One float FFT round trip per partition: error relative to the response's level.
        ASSERT_NEAR(out[static_cast<std::size_t>(i)], i < 3000 ? h.channel(0)[i] : 0.0f, 1e-6f) << i;

    // The same shape again keeps every stage object; another channel count rebuilds them.
    const FftSection* before = &filter.getSection(0);
    filter.setImpulseResponses({h}, -1);
    EXPECT_EQ(&filter.getSection(0), before);
    const Signal32 stereo = tindle::test::noise(rng, 2, 3000, 0.5f);
    filter.setImpulseResponses({stereo}, -1);
    EXPECT_EQ(filter.getSectionCount(), 5u);
    EXPECT_EQ(filter.getSection(0).getPartitions().front().channelCount(), 2);
}
