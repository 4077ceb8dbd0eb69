#pragma once

#include <optional>
#include <string>
#include <vector>

namespace tindle::render
{

/** Everything the command line can say. Settings are in the units users see. */
struct RenderOptions
{
    bool batch = false;
    std::string input;
    std::string output;
    int jobs = 1;

    bool declick = true;
    float clickSensitivity = 30.0f;
    float clickLength = 2.0f;
    bool detectDropouts = false;
    bool decrackle = true;
    float crackleSensitivity = 30.0f;
    float crackleReduction = 30.0f;
    bool residual = false;

    int blockSize = 512;
    std::string reportPath;
    std::string format; // batch output type: "wav", "aiff" or "flac"; empty keeps the input's
    bool floatOutput = false;
    bool overwrite = false;
    bool progress = false;
    bool quiet = false;
};

/** The outcome of reading the command line: options to run with, or text to print and an exit
    code (0 for --help and --version, 2 for a usage error). */
struct ParseResult
{
    std::optional<RenderOptions> options;
    std::string message;
    int exitCode = 0;
};

ParseResult parseCommandLine(const std::vector<std::string>& arguments);

std::string helpText();
std::string versionText();

} // namespace tindle::render
