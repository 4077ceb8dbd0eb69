#pragma once

#include "app/RenderOptions.h"
#include "app/Renderer.h"

#include <string>

namespace tindle::render
{

/** One file's report as a JSON object: the settings, the engine's figures for every second, and
    totals. */
std::string reportJson(const std::string& input, const std::string& output, const RenderOptions& options,
                       const RenderResult& result, int indent = 0);

} // namespace tindle::render
