#pragma once

#include <juce_core/juce_core.h>

#include <memory>
#include <string>
#include <vector>

namespace tindle::render
{

/** Where a failed write is reported: the first error, as errno text. Shared between a stream and
    whoever made it, since an audio writer deletes its stream when it is done. */
struct WriteStatus
{
    bool failed = false;
    std::string error;
};

/** An output stream on a file descriptor that remembers the first failed write, seek or close
    (a full disk among them), which JUCE's own file stream would let pass. Writes gather in a
    buffer of its own, so that a writer's many small writes cost few system calls; a failure shows
    when the buffer goes out, at the latest when the stream is deleted. Allocates its buffer once;
    closes the descriptor when deleted. */
class CheckedFileStream : public juce::OutputStream
{
public:
    CheckedFileStream(int fileDescriptor, std::shared_ptr<WriteStatus> status);
    ~CheckedFileStream() override;

    void flush() override;
    bool setPosition(juce::int64 newPosition) override;
    juce::int64 getPosition() override;
    bool write(const void* data, size_t numBytes) override;

private:
    void fail();
    bool writeOut(const char* bytes, size_t numBytes);
    bool drain();

    int fd;
    std::shared_ptr<WriteStatus> writeStatus;
    juce::int64 position = 0; // where the next byte goes, buffered bytes counted
    std::vector<char> buffer;
    size_t buffered = 0;
};

/** A temporary file beside the final output that becomes the output only by commit(); until then
    it is removed when this object goes, and also when the process is interrupted by SIGINT or
    SIGTERM. Creating one allocates; the signal path does not. */
class TemporaryOutput
{
public:
    /** Creates the file exclusively; check isOpen() and error(). */
    explicit TemporaryOutput(const juce::File& finalOutput);
    ~TemporaryOutput();
    TemporaryOutput(const TemporaryOutput&) = delete;
    TemporaryOutput& operator=(const TemporaryOutput&) = delete;

    bool isOpen() const noexcept { return fd >= 0; }
    const std::string& error() const noexcept { return openError; }
    const juce::File& file() const noexcept { return temporary; }

    /** The stream to write through; may be taken once. */
    std::unique_ptr<CheckedFileStream> takeStream(std::shared_ptr<WriteStatus> status);

    /** Moves the finished file to its final name: replacing what is there only when allowed, and
        never leaving a partial file under that name. False with an error text otherwise. */
    bool commit(bool replaceExisting, std::string& errorText);

private:
    juce::File finalFile;
    juce::File temporary;
    int fd = -1;
    int slot = -1;
    std::string openError;
    bool committed = false;
};

/** Removes every unfinished temporary file and ends the process, on SIGINT and SIGTERM. */
void installInterruptCleanup();

/** True when both paths name one file, also through symbolic or hard links. */
bool isSameFile(const juce::File& a, const juce::File& b);

} // namespace tindle::render
