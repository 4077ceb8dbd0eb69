#include "app/RenderOptions.h"

#include "engine/Tindler.h"

#include <cctype>
#include <cmath>
#include <cstdlib>
#include <functional>
#include <map>
#include <sstream>
#include <thread>

namespace tindle::render
{

namespace
{
using velmar::audio::Tindler;

/** The engine's own default and range for one setting, so that help and checks never drift. */
struct EngineSetting
{
    float defaultValue;
    float minimum;
    float maximum;
};

EngineSetting engineSetting(std::int32_t id)
{
    const Tindler engine;
    EngineSetting s{engine.parameter(id), 0.0f, 0.0f};
    engine.parameterRange(id, s.minimum, s.maximum);
    return s;
}

std::string formatNumber(float v)
{
    std::ostringstream out;
    out << v;
    return out.str();
}

ParseResult usageError(const std::string& text)
{
    return {std::nullopt, "tindle-render: " + text + "\nTry 'tindle-render --help' for more.", 2};
}

bool hasOutputExtension(const std::string& path)
{
    const auto dot = path.find_last_of('.');
    if (dot == std::string::npos)
        return false;
    std::string ext = path.substr(dot + 1);
    for (auto& ch : ext)
        ch = static_cast<char>(std::tolower(static_cast<unsigned char>(ch)));
    return ext == "wav" || ext == "aif" || ext == "aiff" || ext == "flac";
}

bool endsWithWav(const std::string& path)
{
    return path.size() >= 4 &&
           (path.compare(path.size() - 4, 4, ".wav") == 0 || path.compare(path.size() - 4, 4, ".WAV") == 0);
}
} // namespace

std::string versionText()
{
    return "tindle-render 1.1.1 (Velmar Digital Tindle)\n"
           "Copyright (C) Velmar Digital. Free software under the GNU GPL, version 3 or later.\n";
}

std::string helpText()
{
    const auto s = [](std::int32_t id) { return engineSetting(id); };
    const auto range = [](const EngineSetting& e, const char* unit)
    {
        return formatNumber(e.minimum) + " to " + formatNumber(e.maximum) + " " + unit + ", default " +
               formatNumber(e.defaultValue);
    };
    std::ostringstream h;
    h << "Usage: tindle-render [options] INPUT OUTPUT\n"
         "       tindle-render [options] --batch INDIR OUTDIR\n"
         "\n"
         "Removes clicks and crackle from a recording exactly as the Tindle plug-in does in a host\n"
         "with delay compensation. Reads WAV, AIFF, FLAC and Ogg Vorbis; writes WAV, AIFF or FLAC by\n"
         "the output's extension, with the input's sample rate, channels (mono or stereo) and bit\n"
         "depth, and the same length as the input, aligned with it.\n"
         "\n"
         "Restoration settings:\n"
         "  --click-sensitivity N    how readily clicks are found, "
      << range(s(Tindler::ClickSensitivity), "%")
      << "\n"
         "  --click-length MS        longest click repaired as one, "
      << range(s(Tindler::ClickLength), "ms")
      << "\n"
         "  --detect-dropouts        also find clicks caused by digital drop-outs (default off)\n"
         "  --no-declick             leave clicks alone\n"
         "  --crackle-sensitivity N  how readily crackle is found, "
      << range(s(Tindler::CrackleSensitivity), "%")
      << "\n"
         "  --crackle-reduction N    how much crackle is taken out, "
      << range(s(Tindler::CrackleReduction), "%")
      << "\n"
         "  --no-decrackle           leave crackle alone\n"
         "  --residual               write what was removed instead of the restored audio\n"
         "\n"
         "Processing and output:\n"
         "  --block-size N           host block size to simulate, 1 to 65536, default 512\n"
         "  --float                  write 32-bit float WAV (the output must end in .wav)\n"
         "  --report FILE.json       write clicks per second and crackle level for every second\n"
         "  --overwrite              replace an existing output file\n"
         "  --progress               show progress even when stderr is not a terminal\n"
         "  --quiet                  no progress and no summary\n"
         "\n"
         "Batch mode:\n"
         "  --batch                  restore every audio file under INDIR into the same tree under\n"
         "                           OUTDIR; a file that fails is reported and the rest go on\n"
         "  --jobs N                 files restored at once, default the number of cores ("
      << std::max(1u, std::thread::hardware_concurrency())
      << ")\n"
         "  --format wav|aiff|flac   output type in batch mode; default keeps the input's type\n"
         "                           (Ogg Vorbis becomes FLAC)\n"
         "\n"
         "  --help                   this text\n"
         "  --version                the version\n"
         "\n"
         "Exit status: 0 done, 1 a file could not be read or written, 2 a usage error,\n"
         "130 interrupted. The input is never written to; the output appears only when complete.\n";
    return h.str();
}

ParseResult parseCommandLine(const std::vector<std::string>& arguments)
{
    RenderOptions o;
    o.jobs = static_cast<int>(std::max(1u, std::thread::hardware_concurrency()));
    std::vector<std::string> positional;

    const auto number = [](const std::string& text, float& out)
    {
        char* end = nullptr;
        const float v = std::strtof(text.c_str(), &end);
        if (text.empty() || end == nullptr || *end != '\0' || !std::isfinite(v))
            return false;
        out = v;
        return true;
    };

    struct ValueOption
    {
        std::int32_t engineId; // -1 for a plain number
        float* target;
    };
    std::map<std::string, ValueOption> settings{
        {"--click-sensitivity", {Tindler::ClickSensitivity, &o.clickSensitivity}},
        {"--click-length", {Tindler::ClickLength, &o.clickLength}},
        {"--crackle-sensitivity", {Tindler::CrackleSensitivity, &o.crackleSensitivity}},
        {"--crackle-reduction", {Tindler::CrackleReduction, &o.crackleReduction}},
    };
    std::map<std::string, std::function<void()>> flags{
        {"--detect-dropouts", [&] { o.detectDropouts = true; }},
        {"--no-declick", [&] { o.declick = false; }},
        {"--no-decrackle", [&] { o.decrackle = false; }},
        {"--residual", [&] { o.residual = true; }},
        {"--float", [&] { o.floatOutput = true; }},
        {"--overwrite", [&] { o.overwrite = true; }},
        {"--progress", [&] { o.progress = true; }},
        {"--quiet", [&] { o.quiet = true; }},
        {"--batch", [&] { o.batch = true; }},
    };

    for (std::size_t i = 0; i < arguments.size(); ++i)
    {
        std::string arg = arguments[i];
        if (arg == "--help" || arg == "-h")
            return {std::nullopt, helpText(), 0};
        if (arg == "--version")
            return {std::nullopt, versionText(), 0};
        if (arg == "--")
        {
            positional.insert(positional.end(), arguments.begin() + static_cast<std::ptrdiff_t>(i) + 1,
                              arguments.end());
            break;
        }
        if (arg.rfind("--", 0) != 0 || arg.size() == 2)
        {
            positional.push_back(arg);
            continue;
        }
        std::string value;
        bool hasValue = false;
        if (const auto eq = arg.find('='); eq != std::string::npos)
        {
            value = arg.substr(eq + 1);
            arg = arg.substr(0, eq);
            hasValue = true;
        }
        if (const auto flag = flags.find(arg); flag != flags.end())
        {
            if (hasValue)
                return usageError("option '" + arg + "' takes no value");
            flag->second();
            continue;
        }
        const bool takesValue = settings.count(arg) != 0 || arg == "--block-size" || arg == "--jobs" ||
                                arg == "--report" || arg == "--format";
        if (!takesValue)
            return usageError("unknown option '" + arg + "'");
        if (!hasValue)
        {
            if (i + 1 >= arguments.size())
                return usageError("option '" + arg + "' needs a value");
            value = arguments[++i];
        }

        if (const auto setting = settings.find(arg); setting != settings.end())
        {
            const EngineSetting e = engineSetting(setting->second.engineId);
            float v = 0.0f;
            if (!number(value, v) || v < e.minimum || v > e.maximum)
                return usageError("'" + arg + "' takes a number from " + formatNumber(e.minimum) + " to " +
                                  formatNumber(e.maximum) + ", not '" + value + "'");
            *setting->second.target = v;
        }
        else if (arg == "--block-size" || arg == "--jobs")
        {
            float v = 0.0f;
            const int upper = arg == "--jobs" ? 256 : 65536;
            if (!number(value, v) || v < 1.0f || v > static_cast<float>(upper) || v != std::floor(v))
                return usageError("'" + arg + "' takes a whole number from 1 to " + std::to_string(upper) +
                                  ", not '" + value + "'");
            (arg == "--jobs" ? o.jobs : o.blockSize) = static_cast<int>(v);
        }
        else if (arg == "--report")
            o.reportPath = value;
        else
        {
            if (value != "wav" && value != "aiff" && value != "flac")
                return usageError("'--format' takes wav, aiff or flac, not '" + value + "'");
            o.format = value;
        }
    }

    if (positional.size() != 2)
        return usageError(std::string(o.batch ? "--batch needs INDIR and OUTDIR" : "needs INPUT and OUTPUT") +
                          (positional.size() < 2 ? "" : ", and nothing more"));
    o.input = positional[0];
    o.output = positional[1];
    if (!o.batch && !hasOutputExtension(o.output))
        return usageError("cannot write '" + o.output +
                          "': the output must end in .wav, .aif, .aiff or .flac");
    if (o.floatOutput &&
        ((o.batch && !o.format.empty() && o.format != "wav") || (!o.batch && !endsWithWav(o.output))))
        return usageError("--float writes WAV files only");
    if (!o.format.empty() && !o.batch)
        return usageError("--format is for batch mode; a single output takes its type from its extension");
    if (o.batch && o.floatOutput)
        o.format = "wav";
    return {o, "", 0};
}

} // namespace tindle::render
