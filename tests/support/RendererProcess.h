#pragma once

#include <juce_core/juce_core.h>

#include <fcntl.h>
#include <string>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace tindle::test
{

/** How a run of tindle-render ended: its exit status (128 + the signal that ended it, if one
    did) and what it wrote to stderr. */
struct RendererOutcome
{
    int exitCode = -1;
    std::string errors;
};

/** Starts tindle-render in dir with the arguments, stderr to log, under a file-size limit if given. */
inline pid_t startRenderer(const juce::File& dir, const std::vector<std::string>& arguments,
                           const juce::File& log, rlim_t fileSizeLimit = RLIM_INFINITY)
{
    const pid_t pid = fork();
    if (pid == 0)
    {
        if (chdir(dir.getFullPathName().toRawUTF8()) != 0)
            _exit(99);
        const int fd = open(log.getFullPathName().toRawUTF8(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        dup2(fd, 2);
        const int quiet = open("/dev/null", O_WRONLY);
        dup2(quiet, 1);
        if (fileSizeLimit != RLIM_INFINITY)
        {
            const rlimit limit{fileSizeLimit, fileSizeLimit};
            setrlimit(RLIMIT_FSIZE, &limit);
        }
        std::vector<char*> argv{const_cast<char*>(TINDLE_RENDER_BINARY)};
        for (const auto& a : arguments)
            argv.push_back(const_cast<char*>(a.c_str()));
        argv.push_back(nullptr);
        execv(TINDLE_RENDER_BINARY, argv.data());
        _exit(98);
    }
    return pid;
}

inline RendererOutcome finishRenderer(pid_t pid, const juce::File& log)
{
    int status = 0;
    waitpid(pid, &status, 0);
    RendererOutcome o;
    o.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    o.errors = log.loadFileAsString().toStdString();
    log.deleteFile();
    return o;
}

/** Runs tindle-render to its end. */
inline RendererOutcome runRenderer(const juce::File& dir, const std::vector<std::string>& arguments,
                                   rlim_t fileSizeLimit = RLIM_INFINITY)
{
    const auto log = dir.getSiblingFile(dir.getFileName() + "-stderr.txt");
    return finishRenderer(startRenderer(dir, arguments, log, fileSizeLimit), log);
}

/** True if an unfinished output of tindle-render lies anywhere under dir. */
inline bool hasTemporaryFiles(const juce::File& dir)
{
    for (const auto& entry : juce::RangedDirectoryIterator(dir, true, "*", juce::File::findFiles))
        if (entry.getFile().getFileName().contains(".tindle-"))
            return true;
    return false;
}

} // namespace tindle::test
