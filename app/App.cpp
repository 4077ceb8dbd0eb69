#include "app/App.h"

#include "app/Console.h"
#include "app/Renderer.h"
#include "app/Report.h"
#include "app/SafeOutput.h"
#include "toolkit/Ipp.h"
#include "toolkit/VectorLibrary.h"

#include <juce_core/juce_core.h>

#include <atomic>
#include <csignal>
#include <cstdio>
#include <thread>

namespace tindle::render
{

namespace
{
std::string describe(const RenderResult& r)
{
    char text[200];
    const double seconds = static_cast<double>(r.samples) / r.sampleRate;
    double crackle = 0.0;
    for (const auto& s : r.perSecond)
        crackle += s.crackleLevelPercent;
    crackle /= r.perSecond.empty() ? 1.0 : static_cast<double>(r.perSecond.size());
    std::snprintf(text, sizeof(text), "%.1f s, %d Hz, %s, %d-bit: %lld clicks, crackle level %.3f %%",
                  seconds, static_cast<int>(r.sampleRate), r.channels == 1 ? "mono" : "stereo", r.bitDepth,
                  static_cast<long long>(r.clicks), crackle);
    return text;
}

/** Writes the report through its own temporary file, with the same rules as audio output. */
bool writeReport(const juce::File& file, const std::string& json, bool overwrite, Console& console)
{
    if (file.exists() && !overwrite)
    {
        console.error("'" + file.getFullPathName().toStdString() +
                      "': it exists; add --overwrite to replace it");
        return false;
    }
    TemporaryOutput temporary(file);
    std::string error = temporary.error();
    if (temporary.isOpen())
    {
        auto status = std::make_shared<WriteStatus>();
        {
            auto stream = temporary.takeStream(status);
            stream->write(json.data(), json.size());
            stream->write("\n", 1);
        }
        if (!status->failed && temporary.commit(overwrite, error))
            return true;
        if (status->failed)
            error = status->error;
    }
    console.error("'" + file.getFullPathName().toStdString() + "': cannot write the report: " + error);
    return false;
}

int runSingle(const RenderOptions& o, Console& console)
{
    const juce::File input = juce::File::getCurrentWorkingDirectory().getChildFile(juce::String(o.input));
    const juce::File output = juce::File::getCurrentWorkingDirectory().getChildFile(juce::String(o.output));
    const std::string label = "Restoring " + input.getFileName().toStdString();
    const RenderResult r = renderFile(input, output, o, [&](double f) { console.progress(label, f); });
    console.endProgress();
    if (!r.ok)
    {
        console.error(r.error);
        return r.exitCode;
    }
    if (!r.note.empty())
        console.info("note: " + r.note);
    console.info("Restored '" + o.input + "' into '" + o.output + "': " + describe(r));
    if (!o.reportPath.empty())
    {
        const juce::File report =
            juce::File::getCurrentWorkingDirectory().getChildFile(juce::String(o.reportPath));
        if (!writeReport(report, reportJson(o.input, o.output, o, r), o.overwrite, console))
            return 1;
    }
    return 0;
}

bool isAudioFile(const juce::File& f)
{
    const auto ext = f.getFileExtension().toLowerCase();
    return !f.getFileName().startsWithChar('.') && (ext == ".wav" || ext == ".wave" || ext == ".aif" ||
                                                    ext == ".aiff" || ext == ".flac" || ext == ".ogg");
}

int runBatch(const RenderOptions& o, Console& console)
{
    const juce::File inDir = juce::File::getCurrentWorkingDirectory().getChildFile(juce::String(o.input));
    const juce::File outDir = juce::File::getCurrentWorkingDirectory().getChildFile(juce::String(o.output));
    if (!inDir.isDirectory())
    {
        console.error("'" + inDir.getFullPathName().toStdString() + "': not a folder");
        return 1;
    }
    if (!outDir.isDirectory() && !outDir.createDirectory())
    {
        console.error("'" + outDir.getFullPathName().toStdString() + "': cannot create the output folder");
        return 1;
    }

    struct Job
    {
        juce::File input;
        juce::File output;
        RenderResult result;
    };
    std::vector<Job> jobs;
    for (const auto& entry : juce::RangedDirectoryIterator(inDir, true, "*", juce::File::findFiles))
    {
        const juce::File f = entry.getFile();
        // A tree written into the input tree is not read back as input.
        if (!isAudioFile(f) || f.isAChildOf(outDir))
            continue;
        const auto ext = f.getFileExtension().toLowerCase();
        std::string type = o.format;
        if (type.empty())
            type = ext == ".wav" || ext == ".wave"     ? "wav"
                   : (ext == ".aif" || ext == ".aiff") ? "aiff"
                                                       : "flac";
        const juce::String newExtension =
            type == "aiff" ? (ext == ".aif" ? ".aif" : ".aiff") : "." + juce::String(type);
        jobs.push_back(
            {f, outDir.getChildFile(f.getRelativePathFrom(inDir)).withFileExtension(newExtension), {}});
    }
    std::sort(jobs.begin(), jobs.end(),
              [](const Job& a, const Job& b)
              { return a.input.getFullPathName() < b.input.getFullPathName(); });
    if (jobs.empty())
    {
        console.info("No WAV, AIFF, FLAC or Ogg Vorbis files under '" + o.input + "'.");
        return 0;
    }

    // Folders first, on one thread: workers racing to make the same folder would fail each other.
    for (Job& job : jobs)
        if (!job.output.getParentDirectory().isDirectory())
            job.output.getParentDirectory().createDirectory();

    std::atomic<std::size_t> next{0};
    std::atomic<std::size_t> finished{0};
    const auto work = [&]
    {
        // Each worker restores like the plug-in's first instance: denormals flushed.
        unsigned int saved = 0;
        ippSetFlushToZero(1, &saved);
        ippSetDenormAreZeros(1);
        for (std::size_t i = next++; i < jobs.size(); i = next++)
        {
            Job& job = jobs[i];
            if (!job.output.getParentDirectory().isDirectory() &&
                !job.output.getParentDirectory().createDirectory())
            {
                job.result.exitCode = 1;
                job.result.error = "'" + job.output.getParentDirectory().getFullPathName().toStdString() +
                                   "': cannot create the folder";
            }
            else
                job.result = renderFile(job.input, job.output, o);
            const std::string name = job.input.getRelativePathFrom(inDir).toStdString();
            if (job.result.ok)
                console.info("ok      " + name + ": " + describe(job.result));
            else
                console.error("failed  " + job.result.error);
            console.progress("Batch", static_cast<double>(++finished) / static_cast<double>(jobs.size()));
        }
    };
    std::vector<std::thread> workers;
    const auto count = std::min<std::size_t>(static_cast<std::size_t>(o.jobs), jobs.size());
    for (std::size_t t = 0; t < count; ++t)
        workers.emplace_back(work);
    for (auto& w : workers)
        w.join();
    console.endProgress();

    std::size_t failed = 0;
    for (const Job& job : jobs)
        failed += job.result.ok ? 0 : 1;
    if (!o.reportPath.empty())
    {
        std::string json = "[";
        bool first = true;
        for (const Job& job : jobs)
            if (job.result.ok)
            {
                json += (first ? "\n" : ",\n") + reportJson(job.input.getFullPathName().toStdString(),
                                                            job.output.getFullPathName().toStdString(), o,
                                                            job.result, 2);
                first = false;
            }
        json += "\n]";
        const juce::File report =
            juce::File::getCurrentWorkingDirectory().getChildFile(juce::String(o.reportPath));
        if (!writeReport(report, json, o.overwrite, console))
            ++failed;
    }
    console.info("Restored " + std::to_string(jobs.size() - failed) + " of " + std::to_string(jobs.size()) +
                 " files" + (failed > 0 ? "; " + std::to_string(failed) + " failed." : "."));
    return failed > 0 ? 1 : 0;
}
} // namespace

int run(const std::vector<std::string>& arguments)
{
    const ParseResult parsed = parseCommandLine(arguments);
    if (!parsed.options)
    {
        std::fputs(parsed.message.c_str(), parsed.exitCode == 0 ? stdout : stderr);
        if (parsed.exitCode != 0)
            std::fputc('\n', stderr);
        return parsed.exitCode;
    }
    const RenderOptions& o = *parsed.options;
    installInterruptCleanup();
    // A file-size limit then fails the write with an error that names it, instead of ending the
    // process with the output half written.
    std::signal(SIGXFSZ, SIG_IGN);
    velmar::audio::startUpVectorLibrary();
    Console console(o.progress, o.quiet);
    return o.batch ? runBatch(o, console) : runSingle(o, console);
}

} // namespace tindle::render
