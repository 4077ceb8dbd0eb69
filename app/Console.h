#pragma once

#include <mutex>
#include <string>

namespace tindle::render
{

/** Messages and the progress bar, on stderr, from any thread. The bar is drawn only when stderr
    is a terminal or progress was asked for, and never when quiet. */
class Console
{
public:
    Console(bool forceProgress, bool quiet);

    void progress(const std::string& label, double fraction);
    void endProgress();
    void info(const std::string& line);
    void error(const std::string& line);

private:
    void clearBar();

    std::mutex lock;
    bool showProgress;
    bool quiet;
    bool barShown = false;
};

} // namespace tindle::render
