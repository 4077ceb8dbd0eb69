#include "app/SafeOutput.h"

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tindle::render
{

namespace
{
// Temporary files that an interrupt must remove. Fixed storage, so that the signal handler reads
// it without allocating or locking: a thread claims a slot, writes the path, and only then marks it
// ready for the handler.
constexpr int maxTemporaries = 512;
constexpr std::size_t maxPath = 4096;
char temporaryPaths[maxTemporaries][maxPath];
std::atomic<bool> slotClaimed[maxTemporaries];
std::atomic<bool> slotReady[maxTemporaries];

int claimSlot(const std::string& path)
{
    if (path.size() >= maxPath)
        return -1;
    for (int i = 0; i < maxTemporaries; ++i)
    {
        bool expected = false;
        if (slotClaimed[i].compare_exchange_strong(expected, true))
        {
            std::memcpy(temporaryPaths[i], path.c_str(), path.size() + 1);
            slotReady[i].store(true);
            return i;
        }
    }
    return -1;
}

void releaseSlot(int slot)
{
    if (slot >= 0)
    {
        slotReady[slot].store(false);
        slotClaimed[slot].store(false);
    }
}

void onInterrupt(int signalNumber)
{
    for (int i = 0; i < maxTemporaries; ++i)
        if (slotReady[i].load())
            ::unlink(temporaryPaths[i]);
    const char message[] = "\ntindle-render: interrupted; unfinished output removed\n";
    [[maybe_unused]] const auto written = ::write(2, message, sizeof(message) - 1);
    std::signal(signalNumber, SIG_DFL);
    std::raise(signalNumber);
}

std::string errnoText(int error)
{
    return std::strerror(error);
}
} // namespace

namespace
{
constexpr size_t streamBufferBytes = 1 << 16;
}

CheckedFileStream::CheckedFileStream(int fileDescriptor, std::shared_ptr<WriteStatus> status)
    : fd(fileDescriptor)
    , writeStatus(std::move(status))
    , buffer(streamBufferBytes)
{
}

CheckedFileStream::~CheckedFileStream()
{
    drain();
    if (fd >= 0 && ::close(fd) != 0)
        fail();
}

void CheckedFileStream::fail()
{
    if (!writeStatus->failed)
    {
        writeStatus->failed = true;
        writeStatus->error = errnoText(errno);
    }
}

bool CheckedFileStream::writeOut(const char* bytes, size_t numBytes)
{
    while (numBytes > 0)
    {
        const ssize_t n = ::write(fd, bytes, numBytes);
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
        {
            if (n == 0)
                errno = ENOSPC;
            fail();
            return false;
        }
        bytes += n;
        numBytes -= static_cast<size_t>(n);
    }
    return true;
}

bool CheckedFileStream::drain()
{
    const size_t count = buffered;
    buffered = 0;
    return count == 0 || writeOut(buffer.data(), count);
}

void CheckedFileStream::flush()
{
    drain();
}

bool CheckedFileStream::setPosition(juce::int64 newPosition)
{
    if (!drain())
        return false;
    if (::lseek(fd, static_cast<off_t>(newPosition), SEEK_SET) < 0)
    {
        fail();
        return false;
    }
    position = newPosition;
    return true;
}

juce::int64 CheckedFileStream::getPosition()
{
    return position;
}

bool CheckedFileStream::write(const void* data, size_t numBytes)
{
    // Once a write has failed, nothing more goes to the file.
    if (writeStatus->failed)
        return false;
    const auto* bytes = static_cast<const char*>(data);
    position += static_cast<juce::int64>(numBytes);
    if (buffered + numBytes <= buffer.size())
    {
        std::memcpy(buffer.data() + buffered, bytes, numBytes);
        buffered += numBytes;
        return true;
    }
    // Too much for what is left: out with the buffer, and a write as large as the buffer goes
    // straight on.
    if (!drain())
        return false;
    if (numBytes >= buffer.size())
        return writeOut(bytes, numBytes);
    std::memcpy(buffer.data(), bytes, numBytes);
    buffered = numBytes;
    return true;
}

TemporaryOutput::TemporaryOutput(const juce::File& finalOutput)
    : finalFile(finalOutput)
{
    static std::atomic<int> counter{0};
    const auto name = "." + finalOutput.getFileName() + ".tindle-" + juce::String(::getpid()) + "-" +
                      juce::String(counter.fetch_add(1)) + ".tmp";
    temporary = finalOutput.getParentDirectory().getChildFile(name);
    const std::string path = temporary.getFullPathName().toStdString();
    slot = claimSlot(path);
    fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0644);
    if (fd < 0)
    {
        openError = errnoText(errno);
        releaseSlot(slot);
        slot = -1;
    }
}

TemporaryOutput::~TemporaryOutput()
{
    if (fd >= 0)
        ::close(fd);
    if (!committed && slot >= 0)
        ::unlink(temporary.getFullPathName().toRawUTF8());
    releaseSlot(slot);
}

std::unique_ptr<CheckedFileStream> TemporaryOutput::takeStream(std::shared_ptr<WriteStatus> status)
{
    auto stream = std::make_unique<CheckedFileStream>(fd, std::move(status));
    fd = -1;
    return stream;
}

bool TemporaryOutput::commit(bool replaceExisting, std::string& errorText)
{
    const std::string from = temporary.getFullPathName().toStdString();
    const std::string to = finalFile.getFullPathName().toStdString();
    int result = 0;
    if (replaceExisting)
        result = std::rename(from.c_str(), to.c_str());
    else
    {
        // Never replaces: a file that appeared under the name meanwhile survives.
        result = ::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE);
        if (result != 0 && (errno == EINVAL || errno == ENOSYS))
        {
            // A file system without that flag: a hard link fails on an existing name as well.
            result = ::link(from.c_str(), to.c_str());
            if (result == 0)
                ::unlink(from.c_str());
        }
    }
    if (result != 0)
    {
        errorText =
            errno == EEXIST ? std::string("it exists; add --overwrite to replace it") : errnoText(errno);
        return false;
    }
    committed = true;
    return true;
}

void installInterruptCleanup()
{
    struct sigaction action
    {
    };
    action.sa_handler = onInterrupt;
    sigemptyset(&action.sa_mask);
    action.sa_flags = 0;
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
}

bool isSameFile(const juce::File& a, const juce::File& b)
{
    struct stat sa
    {
    };
    struct stat sb
    {
    };
    if (::stat(a.getFullPathName().toRawUTF8(), &sa) != 0 ||
        ::stat(b.getFullPathName().toRawUTF8(), &sb) != 0)
        return a.getFullPathName() == b.getFullPathName();
    return sa.st_dev == sb.st_dev && sa.st_ino == sb.st_ino;
}

} // namespace tindle::render
