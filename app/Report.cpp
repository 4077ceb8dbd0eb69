#include "app/Report.h"

#include <juce_core/juce_core.h>

#include <cstdio>
#include <sstream>

namespace tindle::render
{

namespace
{
std::string quoted(const std::string& text)
{
    // JUCE's JSON writer knows every escape, for paths with quotes or non-ASCII names alike.
    return juce::JSON::toString(juce::var(juce::String(text))).toStdString();
}

std::string number(double v, int decimals = 3)
{
    char buffer[64];
    std::snprintf(buffer, sizeof(buffer), "%.*f", decimals, v);
    return buffer;
}
} // namespace

std::string reportJson(const std::string& input, const std::string& output, const RenderOptions& o,
                       const RenderResult& r, int indent)
{
    const std::string pad(static_cast<std::size_t>(indent), ' ');
    std::ostringstream j;
    const double seconds = r.sampleRate > 0.0 ? static_cast<double>(r.samples) / r.sampleRate : 0.0;
    double clickSum = 0.0;
    double crackleSum = 0.0;
    for (const auto& s : r.perSecond)
    {
        clickSum += s.clicksPerSecond;
        crackleSum += s.crackleLevelPercent;
    }
    const double count = r.perSecond.empty() ? 1.0 : static_cast<double>(r.perSecond.size());

    j << pad << "{\n";
    j << pad << "  \"input\": " << quoted(input) << ",\n";
    j << pad << "  \"output\": " << quoted(output) << ",\n";
    j << pad << "  \"sampleRate\": " << number(r.sampleRate, 0) << ",\n";
    j << pad << "  \"channels\": " << r.channels << ",\n";
    j << pad << "  \"seconds\": " << number(seconds) << ",\n";
    j << pad << "  \"settings\": {\"declick\": " << (o.declick ? "true" : "false")
      << ", \"clickSensitivityPercent\": " << number(static_cast<double>(o.clickSensitivity), 2)
      << ", \"clickLengthMs\": " << number(static_cast<double>(o.clickLength), 2)
      << ", \"detectDropouts\": " << (o.detectDropouts ? "true" : "false")
      << ", \"decrackle\": " << (o.decrackle ? "true" : "false")
      << ", \"crackleSensitivityPercent\": " << number(static_cast<double>(o.crackleSensitivity), 2)
      << ", \"crackleReductionPercent\": " << number(static_cast<double>(o.crackleReduction), 2)
      << ", \"residual\": " << (o.residual ? "true" : "false") << ", \"blockSize\": " << o.blockSize
      << "},\n";
    j << pad << "  \"perSecond\": [";
    for (std::size_t i = 0; i < r.perSecond.size(); ++i)
        j << (i == 0 ? "\n" : ",\n") << pad << "    {\"second\": " << i
          << ", \"clicksPerSecond\": " << number(r.perSecond[i].clicksPerSecond)
          << ", \"crackleLevelPercent\": " << number(r.perSecond[i].crackleLevelPercent, 4) << "}";
    j << (r.perSecond.empty() ? "" : "\n" + pad + "  ") << "],\n";
    j << pad << "  \"totals\": {\"clicks\": " << r.clicks << ", \"cracklePoints\": " << r.cracklePoints
      << ", \"meanClicksPerSecond\": " << number(clickSum / count)
      << ", \"meanCrackleLevelPercent\": " << number(crackleSum / count, 4) << "}\n";
    j << pad << "}";
    return j.str();
}

} // namespace tindle::render
