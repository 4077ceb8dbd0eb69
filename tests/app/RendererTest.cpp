// tindle-render as users run it: the binary, its exit codes, its messages and its files.

#include "support/AudioFileFixtures.h"
#include "support/RendererProcess.h"

#include <gtest/gtest.h>

#include <algorithm>

#include <unistd.h>

namespace
{
using tindle::test::hasTemporaryFiles;
using tindle::test::readAudioFile;
using tindle::test::writeAudioFile;
using Outcome = tindle::test::RendererOutcome;

/** Runs tindle-render in dir with the arguments, split at blanks. */
Outcome render(const juce::File& dir, const std::string& arguments)
{
    std::vector<std::string> split;
    for (const auto& word : juce::StringArray::fromTokens(arguments, " ", ""))
        split.push_back(word.toStdString());
    return tindle::test::runRenderer(dir, split);
}
} // namespace

TEST(Renderer, FormatsKeepLengthRateChannelsAndDepth)
{
    const auto dir = tindle::test::scratchFolder("formats");
    struct Case
    {
        std::string type;
        int bits;
        int channels;
        double rate;
    };
    const Case cases[] = {{"wav", 16, 2, 44100.0},  {"wav", 24, 1, 48000.0},  {"wav", 32, 2, 96000.0},
                          {"flac", 16, 1, 22050.0}, {"flac", 24, 2, 44100.0}, {"aiff", 16, 2, 32000.0},
                          {"aiff", 24, 1, 88200.0}};
    for (const Case& c : cases)
    {
        SCOPED_TRACE(c.type + " " + std::to_string(c.bits) + " bit, " + std::to_string(c.channels) +
                     " channels");
        const std::string in = "in-" + std::to_string(c.bits) + "." + c.type;
        const std::string out = "out-" + std::to_string(c.bits) + "." + c.type;
        ASSERT_TRUE(writeAudioFile(dir.getChildFile(in), c.type, c.channels, c.rate, c.bits, 12345, 3));
        const Outcome r = render(dir, in + " " + out);
        ASSERT_EQ(r.exitCode, 0) << r.errors;
        double rate = 0.0;
        int bits = 0;
        bool isFloat = false;
        const auto audio = readAudioFile(dir.getChildFile(out), &rate, &bits, &isFloat);
        ASSERT_EQ(audio.size(), static_cast<std::size_t>(c.channels));
        EXPECT_EQ(audio[0].size(), 12345u);
        EXPECT_EQ(rate, c.rate);
        EXPECT_EQ(bits, c.bits);
        EXPECT_EQ(isFloat, c.bits == 32);
    }
    EXPECT_FALSE(hasTemporaryFiles(dir));
}

TEST(Renderer, OutputIsAlignedWithTheInputAndFloatIsExact)
{
    const auto dir = tindle::test::scratchFolder("aligned");
    ASSERT_TRUE(writeAudioFile(dir.getChildFile("in.wav"), "wav", 2, 44100.0, 32, 30000, 4));
    // With both detectors off the plug-in passes audio unchanged, only late: the renderer must
    // give it back exactly where it was.
    const Outcome r = render(dir, "--no-declick --no-decrackle --block-size 77 in.wav out.wav");
    ASSERT_EQ(r.exitCode, 0) << r.errors;
    EXPECT_EQ(readAudioFile(dir.getChildFile("out.wav")), readAudioFile(dir.getChildFile("in.wav")));

    // --float turns a 16-bit input into float output; the residual of a pass-through is silence.
    ASSERT_TRUE(writeAudioFile(dir.getChildFile("in16.flac"), "flac", 1, 48000.0, 16, 20000, 5));
    const Outcome f = render(dir, "--float --residual --no-declick --no-decrackle in16.flac residual.wav");
    ASSERT_EQ(f.exitCode, 0) << f.errors;
    int bits = 0;
    bool isFloat = false;
    const auto residual = readAudioFile(dir.getChildFile("residual.wav"), nullptr, &bits, &isFloat);
    EXPECT_TRUE(isFloat);
    ASSERT_EQ(residual.size(), 1u);
    for (const float v : residual[0])
        ASSERT_EQ(v, 0.0f);
}

TEST(Renderer, RefusalsNameTheFileAndTouchNothing)
{
    const auto dir = tindle::test::scratchFolder("refusals");
    ASSERT_TRUE(writeAudioFile(dir.getChildFile("good.wav"), "wav", 2, 44100.0, 16, 8000, 6));
    ASSERT_TRUE(writeAudioFile(dir.getChildFile("three.wav"), "wav", 3, 44100.0, 16, 8000, 7));
    // An AIFF whose frame count has its top bit set: JUCE reads it as negative.
    ASSERT_TRUE(writeAudioFile(dir.getChildFile("negative.aiff"), "aiff", 2, 44100.0, 16, 600, 7));
    {
        juce::MemoryBlock bytes;
        dir.getChildFile("negative.aiff").loadFileAsData(bytes);
        const auto* begin = static_cast<const char*>(bytes.getData());
        const char chunkId[] = "COMM";
        const auto comm = std::search(begin, begin + bytes.getSize(), chunkId, chunkId + 4) - begin;
        ASSERT_LT(comm + 10, static_cast<std::ptrdiff_t>(bytes.getSize()));
        bytes[static_cast<size_t>(comm + 10)] = static_cast<char>(0xFF);
        dir.getChildFile("negative.aiff").replaceWithData(bytes.getData(), bytes.getSize());
    }
    ASSERT_TRUE(writeAudioFile(dir.getChildFile("cut.wav"), "wav", 2, 44100.0, 16, 8000, 8));
    // A FLAC cut short decodes without complaint, the rest as silence: only counting what its
    // frames hold tells.
    ASSERT_TRUE(writeAudioFile(dir.getChildFile("cut.flac"), "flac", 2, 44100.0, 16, 30000, 8));
    for (const char* name : {"cut.wav", "cut.flac"})
    {
        juce::MemoryBlock bytes;
        dir.getChildFile(name).loadFileAsData(bytes);
        dir.getChildFile(name).replaceWithData(bytes.getData(), bytes.getSize() * 2 / 3);
    }
    {
        std::mt19937 rng(9);
        juce::MemoryBlock noise(10000);
        for (size_t i = 0; i < noise.getSize(); ++i)
            noise[i] = static_cast<char>(rng());
        dir.getChildFile("noise.wav").replaceWithData(noise.getData(), noise.getSize());
    }
    ASSERT_TRUE(writeAudioFile(dir.getChildFile("existing.wav"), "wav", 2, 44100.0, 16, 100, 10));
    dir.getChildFile("folder.wav").createDirectory();
    ::symlink("good.wav", dir.getChildFile("link.wav").getFullPathName().toRawUTF8());
    // Root writes anywhere a mode allows nothing; /proc takes no new files from anyone.
    juce::File locked = dir.getChildFile("locked");
    locked.createDirectory();
    locked.setReadOnly(true, false);
    const std::string unwritable = ::geteuid() == 0 ? "/proc/out.wav" : "locked/out.wav";

    struct Case
    {
        std::string arguments;
        int exitCode;
        std::string file;
        std::string reason;
    };
    const Case cases[] = {
        {"missing.wav out.wav", 1, "missing.wav", "no such file"},
        {"folder.wav out.wav", 1, "folder.wav", "folder"},
        {"cut.wav out.wav", 1, "cut.wav", "truncated"},
        {"cut.flac out.wav", 1, "cut.flac", "truncated"},
        {"noise.wav out.wav", 1, "noise.wav", "not a WAV, AIFF, FLAC or Ogg Vorbis file"},
        {"three.wav out.wav", 1, "three.wav", "3 channels"},
        {"negative.aiff out.wav", 1, "negative.aiff", "negative length"},
        {"good.wav good.wav --overwrite", 1, "good.wav", "the input file itself"},
        {"good.wav link.wav --overwrite", 1, "link.wav", "the input file itself"},
        {"good.wav existing.wav", 1, "existing.wav", "--overwrite"},
        {"good.wav " + unwritable, 1, "out.wav", "cannot write"},
        {"good.wav out.mp3", 2, "out.mp3", ".wav, .aif, .aiff or .flac"},
        {"--click-length 11 good.wav out.wav", 2, "--click-length", "0.1 to 10"},
        {"good.wav", 2, "INPUT and OUTPUT", ""},
    };
    const auto before = tindle::test::snapshot(dir);
    for (const Case& c : cases)
    {
        const Outcome r = render(dir, c.arguments);
        EXPECT_EQ(r.exitCode, c.exitCode) << c.arguments << "\n" << r.errors;
        EXPECT_NE(r.errors.find(c.file), std::string::npos) << c.arguments << "\n" << r.errors;
        EXPECT_NE(r.errors.find(c.reason), std::string::npos) << c.arguments << "\n" << r.errors;
        EXPECT_EQ(tindle::test::snapshot(dir), before) << c.arguments << " changed a file";
        EXPECT_FALSE(hasTemporaryFiles(dir)) << c.arguments;
    }
    locked.setReadOnly(false, false);
}

TEST(Renderer, BatchRestoresTheGoodFilesAndReportsTheBadOne)
{
    const auto dir = tindle::test::scratchFolder("batch");
    const auto in = dir.getChildFile("in");
    in.getChildFile("a/b").createDirectory();
    ASSERT_TRUE(writeAudioFile(in.getChildFile("one.wav"), "wav", 2, 44100.0, 16, 9000, 11));
    ASSERT_TRUE(writeAudioFile(in.getChildFile("a/two.flac"), "flac", 1, 48000.0, 24, 7000, 12));
    ASSERT_TRUE(writeAudioFile(in.getChildFile("a/b/three.aiff"), "aiff", 2, 44100.0, 16, 5000, 13));
    in.getChildFile("a/broken.wav").replaceWithText("not audio at all");
    in.getChildFile("notes.txt").replaceWithText("left alone");

    const Outcome r = render(dir, "--batch --jobs 2 --report report.json in out");
    EXPECT_EQ(r.exitCode, 1) << r.errors;
    EXPECT_NE(r.errors.find("broken.wav"), std::string::npos) << r.errors;
    EXPECT_NE(r.errors.find("Restored 3 of 4 files; 1 failed."), std::string::npos) << r.errors;
    EXPECT_EQ(readAudioFile(dir.getChildFile("out/one.wav"))[0].size(), 9000u);
    EXPECT_EQ(readAudioFile(dir.getChildFile("out/a/two.flac"))[0].size(), 7000u);
    EXPECT_EQ(readAudioFile(dir.getChildFile("out/a/b/three.aiff"))[0].size(), 5000u);
    EXPECT_FALSE(dir.getChildFile("out/a/broken.wav").exists());
    EXPECT_FALSE(dir.getChildFile("out/notes.txt").exists());
    const auto report = juce::JSON::parse(dir.getChildFile("report.json"));
    ASSERT_TRUE(report.isArray());
    EXPECT_EQ(report.size(), 3);
    EXPECT_TRUE(report[0]["perSecond"].isArray());
    EXPECT_FALSE(hasTemporaryFiles(dir));

    // A second run refuses every existing output, and says so, and changes none of them.
    const auto before = tindle::test::snapshot(dir.getChildFile("out"));
    const Outcome again = render(dir, "--batch in out");
    EXPECT_EQ(again.exitCode, 1);
    EXPECT_NE(again.errors.find("--overwrite"), std::string::npos);
    EXPECT_EQ(tindle::test::snapshot(dir.getChildFile("out")), before);
}

TEST(Renderer, ReportHoldsEverySecondAndTotals)
{
    const auto dir = tindle::test::scratchFolder("report");
    ASSERT_TRUE(writeAudioFile(dir.getChildFile("in.wav"), "wav", 2, 44100.0, 16, 44100 * 3 + 100, 14));
    const Outcome r = render(dir, "--report r.json in.wav out.wav");
    ASSERT_EQ(r.exitCode, 0) << r.errors;
    const auto report = juce::JSON::parse(dir.getChildFile("r.json"));
    EXPECT_EQ(report["perSecond"].size(), 4);
    EXPECT_EQ(static_cast<int>(report["channels"]), 2);
    // The spikes every 4001 samples are clicks to the engine.
    EXPECT_GT(static_cast<int>(report["totals"]["clicks"]), 20);
    EXPECT_GT(static_cast<double>(report["perSecond"][1]["clicksPerSecond"]), 1.0);

    const Outcome help = render(dir, "--help");
    EXPECT_EQ(help.exitCode, 0);
}
