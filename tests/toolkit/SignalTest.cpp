#include "toolkit/Signal.h"
#include "toolkit/ScalarHelpers.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>

using namespace velmar::audio;

namespace
{
Signal32 ramp(std::int32_t channels, std::int32_t length, float scale = 1.0f)
{
    Signal32 s(channels, length);
    for (std::int32_t c = 0; c < channels; ++c)
        for (std::int32_t i = 0; i < length; ++i)
            s.channel(c)[i] = scale * static_cast<float>(1000 * c + i);
    return s;
}
} // namespace

TEST(Signal, EmptyAndZeroLengthShapes)
{
    const Signal32 empty;
    EXPECT_TRUE(empty.isEmpty());
    EXPECT_EQ(empty.length(), 0);
    EXPECT_EQ(empty.channelCount(), 0);
    EXPECT_TRUE(empty.clone().isEmpty());

    // A slice of the empty signal is a block without channels that reports the requested length.
    const Signal32 slice = empty.slice(0, 7);
    EXPECT_FALSE(slice.isEmpty());
    EXPECT_EQ(slice.channelCount(), 0);
    EXPECT_EQ(slice.length(), 7);

    const Signal32 zeroLength(2, 0);
    EXPECT_EQ(zeroLength.channelCount(), 2);
    EXPECT_EQ(zeroLength.channel(0), nullptr);
    EXPECT_EQ(zeroLength.channel(1), nullptr);

    const Signal32 noChannels(0, 5);
    EXPECT_FALSE(noChannels.isEmpty());
    EXPECT_EQ(noChannels.length(), 5);

    Signal32 moved = ramp(1, 3);
    const Signal32 target = std::move(moved);
    EXPECT_TRUE(moved.isEmpty()); // NOLINT(bugprone-use-after-move): the moved-from state is specified
    EXPECT_EQ(target.length(), 3);
}

TEST(Signal, BuffersAreAlignedAndSeparate)
{
    const Signal32 s(3, 37);
    for (std::int32_t c = 0; c < 3; ++c)
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(s.channel(c)) % 64, 0u);
    EXPECT_NE(s.channel(0), s.channel(1));
    const ComplexSignal32 x(2, 5);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(x.channel(1)) % 64, 0u);
}

TEST(Signal, HandlesShareAndClonesDoNot)
{
    const Signal32 a = ramp(2, 16);
    const Signal32 shared = a;
    const Signal32 copy = a.clone();
    EXPECT_TRUE(shared.sharesBlockWith(a));
    EXPECT_FALSE(copy.sharesBlockWith(a));

    shared.fill(-2.5f);
    for (std::int32_t c = 0; c < 2; ++c)
        for (std::int32_t i = 0; i < 16; ++i)
        {
            EXPECT_EQ(a.channel(c)[i], -2.5f);
            EXPECT_EQ(copy.channel(c)[i], static_cast<float>(1000 * c + i));
        }
}

TEST(Signal, SliceCopiesTheRange)
{
    const Signal32 a = ramp(2, 20);
    const Signal32 s = a.slice(5, 9);
    ASSERT_EQ(s.channelCount(), 2);
    ASSERT_EQ(s.length(), 9);
    for (std::int32_t c = 0; c < 2; ++c)
        for (std::int32_t i = 0; i < 9; ++i)
            EXPECT_EQ(s.channel(c)[i], a.channel(c)[i + 5]);
    a.fill(0.0f);
    EXPECT_EQ(s.channel(1)[0], 1005.0f);
}

TEST(Signal, ComplexCloneCopiesBothParts)
{
    const ComplexSignal32 x(2, 9);
    for (std::int32_t c = 0; c < 2; ++c)
        for (std::int32_t i = 0; i < 9; ++i)
            x.channel(c)[i] = {static_cast<float>(i + c), -static_cast<float>(i)};
    const ComplexSignal32 y = x.clone();
    x.fill({0.0f, 0.0f});
    for (std::int32_t c = 0; c < 2; ++c)
        for (std::int32_t i = 0; i < 9; ++i)
        {
            EXPECT_EQ(y.channel(c)[i].re, static_cast<float>(i + c));
            EXPECT_EQ(y.channel(c)[i].im, -static_cast<float>(i));
        }
}

TEST(ScalarHelpers, NearestPowerOfTwoAndFloorLog2)
{
    const std::int32_t cases[][2] = {{-5, 0},      {0, 0},       {1, 1},       {2, 2},       {3, 2},
                                     {5, 4},       {6, 4},       {7, 8},       {12, 8},      {13, 16},
                                     {882, 1024},  {1280, 1024}, {1764, 2048}, {1920, 2048}, {3528, 4096},
                                     {7680, 8192}, {4096, 4096}};
    for (const auto& c : cases)
        EXPECT_EQ(nearestPowerOfTwo(c[0]), c[1]) << "n = " << c[0];

    EXPECT_EQ(floorLog2(0), 0);
    EXPECT_EQ(floorLog2(1), 0);
    EXPECT_EQ(floorLog2(2), 1);
    EXPECT_EQ(floorLog2(3), 1);
    EXPECT_EQ(floorLog2(4), 2);
    EXPECT_EQ(floorLog2(16384), 14);
    EXPECT_EQ(floorLog2(16385), 14);
}

TEST(ScalarHelpers, DecibelConversions)
{
    EXPECT_EQ(decibelsToGain(0.0f), 1.0f);
    EXPECT_EQ(decibelsToGain(20.0f), 10.0f);
    EXPECT_EQ(decibelsToGain(-40.0f), 0.01f);
    // The engine's crackle floor: -192 dB.
    EXPECT_FLOAT_EQ(decibelsToGain(-192.0f), 2.5118843e-10f);
    EXPECT_EQ(gainToDecibels(1.0f), 0.0f);
    EXPECT_EQ(gainToDecibels(10.0f), 20.0f);
    EXPECT_EQ(gainToDecibels(0.0f), -std::numeric_limits<float>::infinity());
}
