// tindle-render when the machine lets it down: a full disk, an interrupt in the middle of a batch,
// a read-only output folder, an input that goes away. Existing files must stay as they were, no
// partial file may stand under a final name, and the exit status and message must say what
// happened.

#include "support/AudioFileFixtures.h"
#include "support/RendererProcess.h"

#include <gtest/gtest.h>

#include <csignal>
#include <sys/mount.h>
#include <thread>
#include <unistd.h>

namespace
{
using tindle::test::hasTemporaryFiles;
using Outcome = tindle::test::RendererOutcome;

Outcome render(const juce::File& dir, const std::vector<std::string>& arguments,
               rlim_t fileSizeLimit = RLIM_INFINITY)
{
    return tindle::test::runRenderer(dir, arguments, fileSizeLimit);
}

pid_t start(const juce::File& dir, const std::vector<std::string>& arguments, const juce::File& log)
{
    return tindle::test::startRenderer(dir, arguments, log);
}

Outcome finish(pid_t pid, const juce::File& log)
{
    return tindle::test::finishRenderer(pid, log);
}

/** A small file system of its own where the machine allows mounting one (as root), so that
    limits and read-only folders bind root too; else an ordinary folder. */
struct Mount
{
    Mount(const juce::File& where, const char* options)
        : folder(where)
    {
        folder.createDirectory();
        mounted = ::mount("tmpfs", folder.getFullPathName().toRawUTF8(), "tmpfs", 0, options) == 0;
    }
    ~Mount()
    {
        if (mounted)
            ::umount(folder.getFullPathName().toRawUTF8());
    }
    juce::File folder;
    bool mounted = false;
};
} // namespace

TEST(RendererFaults, AFullDiskFailsCleanly)
{
    const auto dir = tindle::test::scratchFolder("disk-full");
    ASSERT_TRUE(
        tindle::test::writeAudioFile(dir.getChildFile("in.wav"), "wav", 2, 44100.0, 16, 44100 * 3, 41));
    // 96 kB: the 530 kB output cannot fit; where no file system can be mounted, a file-size limit
    // of the same size stands in for it.
    Mount small(dir.getChildFile("small"), "size=96k");
    small.folder.getChildFile("kept.txt").replaceWithText("untouched");
    const auto before = tindle::test::snapshot(small.folder);
    const Outcome o = render(dir, {"in.wav", "small/out.wav"}, small.mounted ? RLIM_INFINITY : 96 * 1024);
    std::cout << "[disk full] " << (small.mounted ? "tmpfs of 96 kB" : "file-size limit") << ": " << o.errors;
    EXPECT_EQ(o.exitCode, 1);
    EXPECT_NE(o.errors.find("out.wav"), std::string::npos);
    EXPECT_NE(o.errors.find("writing failed"), std::string::npos);
    EXPECT_FALSE(small.folder.getChildFile("out.wav").exists());
    EXPECT_FALSE(hasTemporaryFiles(small.folder));
    EXPECT_EQ(tindle::test::snapshot(small.folder), before);
}

TEST(RendererFaults, AReadOnlyFolderIsRefusedByName)
{
    const auto dir = tindle::test::scratchFolder("read-only");
    ASSERT_TRUE(tindle::test::writeAudioFile(dir.getChildFile("in.wav"), "wav", 1, 44100.0, 16, 4410, 42));
    Mount locked(dir.getChildFile("locked"), "ro,size=64k");
    if (!locked.mounted)
    {
        locked.folder.getChildFile("kept.txt").replaceWithText("untouched");
        locked.folder.setReadOnly(true, false);
    }
    const auto before = tindle::test::snapshot(locked.folder);
    const Outcome single = render(dir, {"in.wav", "locked/out.wav"});
    EXPECT_EQ(single.exitCode, 1) << single.errors;
    EXPECT_NE(single.errors.find("locked/out.wav"), std::string::npos) << single.errors;
    EXPECT_NE(single.errors.find("cannot write"), std::string::npos) << single.errors;
    // In batch mode every file is reported, and the run says how many failed.
    dir.getChildFile("tree").createDirectory();
    ASSERT_TRUE(
        tindle::test::writeAudioFile(dir.getChildFile("tree/a.wav"), "wav", 1, 44100.0, 16, 4410, 43));
    const Outcome batch = render(dir, {"--batch", "tree", "locked"});
    EXPECT_EQ(batch.exitCode, 1) << batch.errors;
    EXPECT_NE(batch.errors.find("1 failed"), std::string::npos) << batch.errors;
    EXPECT_EQ(tindle::test::snapshot(locked.folder), before);
    if (!locked.mounted)
        locked.folder.setReadOnly(false, false);
}

TEST(RendererFaults, AnInterruptedBatchLeavesOnlyWholeFiles)
{
    for (const int signal : {SIGINT, SIGTERM})
    {
        const auto dir = tindle::test::scratchFolder("interrupt");
        const auto in = dir.getChildFile("in");
        in.createDirectory();
        for (int f = 0; f < 6; ++f)
            ASSERT_TRUE(tindle::test::writeAudioFile(in.getChildFile("take" + juce::String(f) + ".wav"),
                                                     "wav", 2, 44100.0, 16, 44100 * 20,
                                                     static_cast<std::uint32_t>(50 + f)));
        const auto out = dir.getChildFile("out");
        out.createDirectory();
        out.getChildFile("kept.wav").replaceWithText("an earlier result");
        const auto log = dir.getSiblingFile("interrupt-stderr.txt");
        const pid_t pid = start(dir, {"--batch", "--jobs", "2", "in", "out"}, log);
        // Long enough to be in the middle of the first files, too short to finish them all.
        std::this_thread::sleep_for(std::chrono::milliseconds(400));
        kill(pid, signal);
        const Outcome o = finish(pid, log);
        EXPECT_EQ(o.exitCode, 128 + signal) << o.errors;
        EXPECT_NE(o.errors.find("interrupted"), std::string::npos) << o.errors;
        EXPECT_FALSE(hasTemporaryFiles(out));
        EXPECT_EQ(out.getChildFile("kept.wav").loadFileAsString(), "an earlier result");
        // What stands under a final name is whole.
        int finished = 0;
        for (int f = 0; f < 6; ++f)
        {
            const auto result = out.getChildFile("take" + juce::String(f) + ".wav");
            if (!result.exists())
                continue;
            ++finished;
            ASSERT_EQ(tindle::test::readAudioFile(result)[0].size(), static_cast<std::size_t>(44100 * 20));
        }
        EXPECT_LT(finished, 6);
    }
}

TEST(RendererFaults, AnInputThatDisappearsIsReportedAndTheRestGoOn)
{
    const auto dir = tindle::test::scratchFolder("disappearing");
    const auto in = dir.getChildFile("in");
    in.createDirectory();
    ASSERT_TRUE(
        tindle::test::writeAudioFile(in.getChildFile("a-long.wav"), "wav", 2, 44100.0, 16, 44100 * 20, 60));
    ASSERT_TRUE(tindle::test::writeAudioFile(in.getChildFile("b.wav"), "wav", 2, 44100.0, 16, 4410, 61));
    ASSERT_TRUE(tindle::test::writeAudioFile(in.getChildFile("c-gone.wav"), "wav", 2, 44100.0, 16, 4410, 62));
    const auto log = dir.getSiblingFile("disappearing-stderr.txt");
    const pid_t pid = start(dir, {"--batch", "--jobs", "1", "in", "out"}, log);
    // The files are listed at the start; the last one goes while the first is being restored.
    std::this_thread::sleep_for(std::chrono::milliseconds(150));
    in.getChildFile("c-gone.wav").deleteFile();
    const Outcome o = finish(pid, log);
    EXPECT_EQ(o.exitCode, 1) << o.errors;
    EXPECT_NE(o.errors.find("c-gone.wav"), std::string::npos) << o.errors;
    EXPECT_NE(o.errors.find("no such file"), std::string::npos) << o.errors;
    EXPECT_NE(o.errors.find("Restored 2 of 3 files; 1 failed."), std::string::npos) << o.errors;
    EXPECT_TRUE(dir.getChildFile("out/a-long.wav").exists());
    EXPECT_TRUE(dir.getChildFile("out/b.wav").exists());
    EXPECT_FALSE(dir.getChildFile("out/c-gone.wav").exists());
    EXPECT_FALSE(hasTemporaryFiles(dir.getChildFile("out")));
}
