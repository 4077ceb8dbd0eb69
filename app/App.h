#pragma once

#include <string>
#include <vector>

namespace tindle::render
{

/** The whole command: reads the arguments, restores one file or a tree, and returns the exit
    status (0 done, 1 a file failed, 2 a usage error). */
int run(const std::vector<std::string>& arguments);

} // namespace tindle::render
