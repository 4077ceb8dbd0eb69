// Arbitrary bytes as the renderer's input file: it either restores them into a complete output of
// the length it reports, or refuses with a message, and never leaves a partial or temporary file.

#include "app/AudioFiles.h"
#include "app/Renderer.h"

#include <juce_events/juce_events.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>

namespace
{
struct Fixture
{
    juce::ScopedJuceInitialiser_GUI juce;
    juce::TemporaryFile folder;
    juce::File input;
    juce::File output;

    Fixture()
    {
        if (!folder.getFile().createDirectory())
            std::abort();
        input = folder.getFile().getChildFile("input.bin");
        output = folder.getFile().getChildFile("output.wav");
    }

    ~Fixture() { folder.getFile().deleteRecursively(); }
};

Fixture& fixture()
{
    static Fixture f;
    return f;
}

void fail(const char* what, const std::string& detail = {})
{
    std::fprintf(stderr, "renderer input fuzz: %s %s\n", what, detail.c_str());
    std::abort();
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    auto& f = fixture();
    if (!f.input.replaceWithData(data, size))
        fail("cannot write the input file");
    f.output.deleteFile();

    tindle::render::RenderOptions options;
    options.input = f.input.getFullPathName().toStdString();
    options.output = f.output.getFullPathName().toStdString();
    options.quiet = true;
    {
        // A compressed stream's header may promise hours that its bytes do not hold, and the
        // renderer then writes every promised sample; one input stays one quick render.
        const auto opened = tindle::render::openInput(f.input);
        if (opened.reader != nullptr && opened.reader->lengthInSamples > (1 << 20))
            return 0;
    }
    const auto result = tindle::render::renderFile(f.input, f.output, options);

    if (result.ok)
    {
        const auto written = tindle::render::openInput(f.output);
        if (written.reader == nullptr)
            fail("a render that succeeded left no readable output:", written.error);
        if (written.reader->lengthInSamples != result.samples)
            fail("the output's length is not the input's");
    }
    else
    {
        if (result.error.empty())
            fail("a refusal without a message");
        if (f.output.exists())
            fail("a refusal left an output:", result.error);
    }
    // Only the input and, after success, the output may be in the folder
    const auto left = f.folder.getFile().findChildFiles(juce::File::findFilesAndDirectories, false);
    // (JUCE writes no file for no bytes.)
    if (left.size() != (f.input.existsAsFile() ? 1 : 0) + (result.ok ? 1 : 0))
        fail("a temporary file was left behind");
    return 0;
}
