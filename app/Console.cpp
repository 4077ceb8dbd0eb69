#include "app/Console.h"

#include <cstdio>
#include <unistd.h>

namespace tindle::render
{

Console::Console(bool forceProgress, bool beQuiet)
    : showProgress(!beQuiet && (forceProgress || ::isatty(2) != 0))
    , quiet(beQuiet)
{
}

void Console::clearBar()
{
    if (barShown)
    {
        std::fputs("\r\033[K", stderr);
        barShown = false;
    }
}

void Console::progress(const std::string& label, double fraction)
{
    if (!showProgress)
        return;
    const std::lock_guard<std::mutex> guard(lock);
    constexpr int width = 30;
    const int filled = static_cast<int>(fraction * width + 0.5);
    std::string bar(static_cast<std::size_t>(filled), '#');
    bar.append(static_cast<std::size_t>(width - filled), '-');
    std::fprintf(stderr, "\r%s [%s] %3d%%", label.c_str(), bar.c_str(),
                 static_cast<int>(fraction * 100.0 + 0.5));
    std::fflush(stderr);
    barShown = true;
}

void Console::endProgress()
{
    const std::lock_guard<std::mutex> guard(lock);
    if (barShown)
        std::fputs("\n", stderr);
    barShown = false;
}

void Console::info(const std::string& line)
{
    if (quiet)
        return;
    const std::lock_guard<std::mutex> guard(lock);
    clearBar();
    std::fprintf(stderr, "%s\n", line.c_str());
}

void Console::error(const std::string& line)
{
    const std::lock_guard<std::mutex> guard(lock);
    clearBar();
    std::fprintf(stderr, "tindle-render: %s\n", line.c_str());
}

} // namespace tindle::render
