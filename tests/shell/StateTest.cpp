// The saved state: the 72-byte chunk, its reader with every quirk that saved sessions rely on, and
// the one program with the rule that keeps a program call from undoing a state load.

#include "support/ShellProbe.h"
#include "support/StateChunk.h"
#include "support/TestSignals.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <random>

using tindle::test::RecordingListener;
using tindle::test::ShellProbe;
using velmar::audio::Tindler;

using tindle::test::appendWord;
using tindle::test::bitsOf;
using tindle::test::Bytes;

namespace
{
using EngineValues = std::array<float, Tindler::parameterCount>;

Bytes chunk(std::int32_t count, const std::vector<std::pair<std::int32_t, float>>& records,
            std::uint32_t version = 0x00010101u)
{
    return tindle::test::stateChunk(count, records, version);
}

/** The chunk of a fresh instance, byte for byte. */
const Bytes freshChunk = {
    'R',  'M',  'L',  'V',  'D',  'T',  'L',  'V',  0x01, 0x01, 0x01, 0x00, 0x07, 0x00, 0x00, 0x00, // header
    0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x80, 0x3f,                                                 // 0: 1.0
    0x01, 0x00, 0x00, 0x00, 0x00, 0x00, 0xf0, 0x41,                                                 // 1: 30.0
    0x02, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x40,                                                 // 2: 2.0
    0x04, 0x00, 0x00, 0x00, 0x00, 0x00, 0x80, 0x3f,                                                 // 4: 1.0
    0x05, 0x00, 0x00, 0x00, 0x00, 0x00, 0xf0, 0x41,                                                 // 5: 30.0
    0x06, 0x00, 0x00, 0x00, 0x00, 0x00, 0xf0, 0x41,                                                 // 6: 30.0
    0x07, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,                                                 // 7: 0.0
};

const EngineValues engineDefaults = {1.0f, 30.0f, 2.0f, 0.0f, 1.0f, 30.0f, 30.0f, 0.0f};

Bytes bytesOf(const juce::MemoryBlock& block)
{
    const auto* data = static_cast<const std::uint8_t*>(block.getData());
    return Bytes(data, data + block.getSize());
}

void load(ShellProbe& p, const Bytes& bytes)
{
    p.setStateInformation(bytes.data(), static_cast<int>(bytes.size()));
}

bool read(ShellProbe& p, const Bytes& bytes)
{
    juce::MemoryInputStream stream(bytes.data(), bytes.size(), false);
    return p.readState(stream);
}

/** Sets every engine setting, index 3 and ResidualMode included, away from its default. */
void setAllAwayFromDefaults(ShellProbe& p)
{
    const EngineValues away = {0.0f, 61.0f, 7.5f, 1.0f, 0.0f, 12.5f, 80.0f, 1.0f};
    for (int id = 0; id < Tindler::parameterCount; ++id)
        p.getEngine().setParameter(id, away[static_cast<std::size_t>(id)]);
}

bool sameBits(const EngineValues& a, const EngineValues& b)
{
    return std::memcmp(a.data(), b.data(), sizeof(a)) == 0;
}
} // namespace

TEST(State, AFreshInstanceSavesTheSeventyTwoByteChunk)
{
    ShellProbe p;
    juce::MemoryBlock state;
    p.getStateInformation(state);
    EXPECT_EQ(bytesOf(state), freshChunk);
    juce::MemoryBlock programState;
    p.getCurrentProgramStateInformation(programState);
    EXPECT_EQ(bytesOf(programState), freshChunk);
    EXPECT_EQ(chunk(7, {{0, 1.0f}, {1, 30.0f}, {2, 2.0f}, {4, 1.0f}, {5, 30.0f}, {6, 30.0f}, {7, 0.0f}}),
              freshChunk)
        << "the test's own chunk builder agrees with the literal bytes";

    // Writing replaces whatever the block held.
    juce::MemoryBlock used(1000, false);
    used.fillWith(0xab);
    p.getStateInformation(used);
    EXPECT_EQ(used.getSize(), 72u);
    EXPECT_EQ(bytesOf(used), freshChunk);
}

TEST(State, ARoundTripBringsSixValuesAndLeavesResidualModeAsItWas)
{
    ShellProbe saved;
    saved.setParameter(0, 0.0f);
    saved.setParameter(1, 0.55f);
    saved.setParameter(2, 0.8f);
    saved.setParameter(3, 0.0f);
    saved.setParameter(4, 0.12f);
    saved.setParameter(5, 0.9f);
    saved.setParameter(6, 1.0f);
    juce::MemoryBlock state;
    saved.getStateInformation(state);
    EXPECT_EQ(state.getSize(), 72u);

    ShellProbe loaded;
    RecordingListener listener;
    loaded.addListener(&listener);
    loaded.getEngine().setParameter(Tindler::DetectDropouts, 1.0f);
    loaded.setStateInformation(state.getData(), static_cast<int>(state.getSize()));
    const auto want = saved.engineValues();
    const auto got = loaded.engineValues();
    for (const int id : {0, 1, 2, 4, 5, 6})
        EXPECT_EQ(got[static_cast<std::size_t>(id)], want[static_cast<std::size_t>(id)])
            << "engine index " << id;
    EXPECT_EQ(got[Tindler::ResidualMode], 0.0f) << "the last record ends the load";
    EXPECT_EQ(got[Tindler::DetectDropouts], 1.0f) << "not in the chunk";
    EXPECT_TRUE(listener.told.empty()) << "a load that ends early tells nobody";
    EXPECT_FALSE(read(loaded, bytesOf(state)));

    // The other way round: ResidualMode on stays on when a chunk with it off is loaded.
    ShellProbe listening;
    listening.setParameter(6, 1.0f);
    load(listening, freshChunk);
    EXPECT_EQ(listening.getEngine().parameter(Tindler::ResidualMode), 1.0f);
}

TEST(State, ShorterCountsLoadWhatTheyHoldAndTellTheListeners)
{
    ShellProbe p;
    RecordingListener listener;
    p.addListener(&listener);
    const auto fiveRecords = chunk(5, {{0, 0.0f}, {1, 70.0f}, {2, 0.5f}, {4, 0.0f}, {5, 99.0f}});
    EXPECT_TRUE(read(p, fiveRecords));
    EXPECT_TRUE(sameBits(p.engineValues(), {0.0f, 70.0f, 0.5f, 0.0f, 0.0f, 99.0f, 30.0f, 0.0f}));
    EXPECT_EQ(listener.told, std::vector<int>{-1});

    // Any version loads; there is no migration.
    ShellProbe other;
    load(other, chunk(5, {{0, 0.0f}, {1, 70.0f}, {2, 0.5f}, {4, 0.0f}, {5, 99.0f}}, 0x00020000u));
    EXPECT_TRUE(sameBits(other.engineValues(), p.engineValues()));

    // A count of 0 or below reads no record, yet counts as a load.
    for (const std::int32_t count : {0, -3})
    {
        ShellProbe empty;
        RecordingListener emptyListener;
        empty.addListener(&emptyListener);
        EXPECT_TRUE(read(empty, chunk(count, {})));
        EXPECT_TRUE(sameBits(empty.engineValues(), engineDefaults));
        EXPECT_EQ(emptyListener.told, std::vector<int>{-1}) << count;
    }
}

TEST(State, TheLengthTestAndShortRecords)
{
    // The whole length is held against count * 8 + 4: a count of 3 passes with 28 bytes or more,
    // even though three full records need 40.
    ShellProbe p;
    RecordingListener listener;
    p.addListener(&listener);
    auto cut = chunk(3, {{1, 40.0f}, {2, 3.0f}});
    appendWord(cut, 5u); // the third record's id, and no value behind it
    ASSERT_EQ(cut.size(), 36u);
    EXPECT_TRUE(read(p, cut));
    EXPECT_EQ(p.getEngine().parameter(Tindler::ClickSensitivity), 40.0f);
    EXPECT_EQ(p.getEngine().parameter(Tindler::ClickLength), 3.0f);
    EXPECT_EQ(p.getEngine().parameter(Tindler::CrackleSensitivity), 3.0f) << "the previous value, reapplied";
    EXPECT_EQ(listener.told, std::vector<int>{-1});

    // A word cut in the middle delivers none of its bytes.
    ShellProbe half;
    auto halfValue = cut;
    halfValue.push_back(0x00);
    halfValue.push_back(0x00);
    EXPECT_TRUE(read(half, halfValue));
    EXPECT_EQ(half.getEngine().parameter(Tindler::CrackleSensitivity), 3.0f);

    // Too large a count for the length: nothing is read, and still the listeners hear of it.
    ShellProbe q;
    EXPECT_TRUE(read(q, chunk(4, {{1, 40.0f}, {2, 3.0f}})));
    EXPECT_TRUE(sameBits(q.engineValues(), engineDefaults));

    // A first record that the data cannot hold at all is no parameter: nothing is set, nobody told.
    ShellProbe r;
    RecordingListener rListener;
    r.addListener(&rListener);
    EXPECT_FALSE(read(r, chunk(1, {})));
    EXPECT_TRUE(sameBits(r.engineValues(), engineDefaults));
    EXPECT_TRUE(rListener.told.empty());

    // An id out of bounds stops the load; the records before it stay.
    ShellProbe s;
    EXPECT_FALSE(read(s, chunk(3, {{1, 40.0f}, {-1, 3.0f}, {2, 3.0f}})));
    EXPECT_EQ(s.getEngine().parameter(Tindler::ClickSensitivity), 40.0f);
    EXPECT_EQ(s.getEngine().parameter(Tindler::ClickLength), 2.0f);
}

TEST(Programs, TheDefaultProgramAndItsName)
{
    ShellProbe p;
    EXPECT_EQ(p.getNumPrograms(), 1);
    EXPECT_EQ(p.getCurrentProgram(), 0);
    EXPECT_EQ(p.getProgramName(0), juce::translate("Default"));
    EXPECT_EQ(p.getProgramName(1), "");
    EXPECT_EQ(p.getProgramName(-1), "");
    p.changeProgramName(0, "Vinyl");
    EXPECT_EQ(p.getProgramName(0), "Vinyl");
    p.changeProgramName(3, "nothing");

    // Selecting it puts every engine default back, index 3 included, and tells the listeners.
    RecordingListener listener;
    p.addListener(&listener);
    setAllAwayFromDefaults(p);
    p.setCurrentProgram(0);
    EXPECT_TRUE(sameBits(p.engineValues(), engineDefaults));
    EXPECT_EQ(listener.told, std::vector<int>{-1});
    EXPECT_EQ(p.getCurrentProgram(), 0);

    // An index that is no program does nothing.
    setAllAwayFromDefaults(p);
    const auto before = p.engineValues();
    p.setCurrentProgram(1);
    p.setCurrentProgram(-1);
    EXPECT_TRUE(sameBits(p.engineValues(), before));
    EXPECT_EQ(listener.told.size(), 1u);
    EXPECT_EQ(p.getCurrentProgram(), 0);
}

TEST(Programs, AStateLoadHoldsOffProgramCallsFor200Milliseconds)
{
    auto rng = tindle::test::seededGenerator("fifteen-byte chunks");
    std::uniform_int_distribution<int> byte(0, 255);
    for (int trial = 0; trial < 20; ++trial)
    {
        ShellProbe p;
        RecordingListener listener;
        p.addListener(&listener);
        setAllAwayFromDefaults(p);
        const auto away = p.engineValues();

        // A chunk too short to read changes nothing, yet counts as a load.
        Bytes fifteen(15);
        for (auto& b : fifteen)
            b = static_cast<std::uint8_t>(trial == 0 ? freshChunk[&b - fifteen.data()] : byte(rng));
        const auto start = juce::Time::getMillisecondCounter();
        load(p, fifteen);
        p.setCurrentProgram(0);
        const auto end = juce::Time::getMillisecondCounter();
        EXPECT_GE(p.lastStateLoadTime, start);
        EXPECT_LE(p.lastStateLoadTime, end);
        // The program call came right behind the load; only a stall of 200 ms between the two
        // statements could put it outside the window, and then it may apply.
        if (end - start < 200)
        {
            EXPECT_TRUE(sameBits(p.engineValues(), away));
            EXPECT_TRUE(listener.told.empty());
        }

        // Once the load lies well back, the program applies.
        p.lastStateLoadTime = juce::Time::getMillisecondCounter() - 10000;
        p.setCurrentProgram(0);
        EXPECT_TRUE(sameBits(p.engineValues(), engineDefaults));
        EXPECT_EQ(listener.told, std::vector<int>{-1});
    }

    // Loaded values survive a program call right behind a full load as well.
    ShellProbe q;
    const auto start = juce::Time::getMillisecondCounter();
    load(q, chunk(5, {{0, 0.0f}, {1, 70.0f}, {2, 0.5f}, {4, 0.0f}, {5, 99.0f}}));
    const auto loaded = q.engineValues();
    q.setCurrentProgram(0);
    if (juce::Time::getMillisecondCounter() - start < 200)
        EXPECT_TRUE(sameBits(q.engineValues(), loaded));
}

namespace
{
/** What a load may do, worked out from the chunk's layout: the engine's values afterwards and
    whether the listeners are told. Records are at 16 + 8k; a word that the data does not hold in
    full keeps what it was; ids 0 to 6 are applied and anything else ends the load. */
struct Outcome
{
    EngineValues values;
    bool told;
};

std::uint32_t wordAt(const Bytes& bytes, std::size_t at)
{
    return tindle::test::wordAt(bytes.data() + at);
}

Outcome expectedLoad(const Bytes& bytes, const EngineValues& before)
{
    Outcome outcome{before, false};
    if (bytes.size() < 16 || std::memcmp(bytes.data(), "RMLVDTLV", 8) != 0)
        return outcome;
    const auto count = static_cast<std::int32_t>(wordAt(bytes, 12));
    if (count >= 1 && static_cast<std::int64_t>(bytes.size()) >= std::int64_t{count} * 8 + 4)
    {
        std::int32_t id = -1;
        std::uint32_t valueBits = 0;
        for (std::int64_t k = 0; k < count; ++k)
        {
            const auto at = static_cast<std::size_t>(16 + 8 * k);
            if (at + 4 <= bytes.size())
                id = static_cast<std::int32_t>(wordAt(bytes, at));
            if (at + 8 <= bytes.size())
                valueBits = wordAt(bytes, at + 4);
            if (id < 0 || id > 6)
                return outcome;
            const float value = tindle::test::floatOf(valueBits);
            const bool isSwitch = id == Tindler::EnableTindle || id == Tindler::DetectDropouts ||
                                  id == Tindler::EnableDecrackle;
            outcome.values[static_cast<std::size_t>(id)] = isSwitch ? (value > 0.5f ? 1.0f : 0.0f) : value;
        }
    }
    outcome.told = true;
    return outcome;
}
} // namespace

TEST(State, DamagedChunksOfEveryLengthChangeOnlyWhatTheyMay)
{
    auto rng = tindle::test::seededGenerator("damaged chunks");
    std::uniform_int_distribution<int> byte(0, 255);
    std::uniform_int_distribution<int> kind(0, 2);
    std::uniform_int_distribution<std::int32_t> smallCount(-2, 14);
    std::uniform_int_distribution<std::int32_t> anyId(-2, 9);
    std::uniform_int_distribution<std::int32_t> rowId(0, 6);
    std::uniform_real_distribution<float> anyValue(-200.0f, 200.0f);
    const float oddValues[] = {std::nanf(""), INFINITY, -INFINITY, 0.5f, 3.0e38f, -0.0f};

    int loadsThatApplied = 0;
    for (std::size_t length = 0; length <= 100; ++length)
    {
        for (int trial = 0; trial < 30; ++trial)
        {
            // Pure noise, noise behind the right magics, or a plausible chunk with odd records.
            Bytes bytes(length);
            for (auto& b : bytes)
                b = static_cast<std::uint8_t>(byte(rng));
            const int k = kind(rng);
            if (k >= 1)
            {
                // Counts near the most that the length test lets through reach the cut records.
                const auto nearLimit = (static_cast<std::int32_t>(length) - 4) / 8 - byte(rng) % 2;
                auto header = chunk(k == 2 && byte(rng) < 128 ? nearLimit : smallCount(rng), {},
                                    static_cast<std::uint32_t>(byte(rng)));
                if (k == 2)
                    for (int r = 0; r < 12; ++r)
                    {
                        appendWord(header,
                                   static_cast<std::uint32_t>(byte(rng) < 230 ? rowId(rng) : anyId(rng)));
                        appendWord(header, bitsOf(byte(rng) < 40 ? oddValues[byte(rng) % 6] : anyValue(rng)));
                    }
                std::copy_n(header.begin(), std::min(header.size(), bytes.size()), bytes.begin());
            }

            ShellProbe p;
            RecordingListener listener;
            p.addListener(&listener);
            for (int id = 0; id < Tindler::parameterCount; ++id)
                p.getEngine().setParameter(id, anyValue(rng));
            const auto before = p.engineValues();
            const auto expected = expectedLoad(bytes, before);

            const auto start = juce::Time::getMillisecondCounter();
            load(p, bytes);
            EXPECT_TRUE(sameBits(p.engineValues(), expected.values))
                << "length " << length << " trial " << trial;
            EXPECT_EQ(listener.told, expected.told ? std::vector<int>{-1} : std::vector<int>{})
                << "length " << length << " trial " << trial;
            EXPECT_EQ(p.getEngine().parameter(Tindler::ResidualMode), before[Tindler::ResidualMode]);
            EXPECT_GE(p.lastStateLoadTime, start);
            if (!sameBits(before, expected.values))
                ++loadsThatApplied;
        }
    }
    // The generator must reach the reader's records, not only its header checks.
    EXPECT_GT(loadsThatApplied, 100);
}
