#pragma once

#include <cstddef>
#include <vector>

namespace tindle::test
{

/** y[t] = sum_k h[k] x[t - k] over the whole of x, in double, with zeros before x starts: the
    independent reference for every filter in the code. */
inline std::vector<double> directConvolution(const std::vector<float>& x, const std::vector<float>& h)
{
    std::vector<double> y(x.size(), 0.0);
    for (std::size_t t = 0; t < x.size(); ++t)
    {
        double sum = 0.0;
        for (std::size_t k = 0; k < h.size() && k <= t; ++k)
            sum += static_cast<double>(h[k]) * static_cast<double>(x[t - k]);
        y[t] = sum;
    }
    return y;
}

/** The sum of |h[k]|: a float convolution's rounding error scales with it. */
inline double absoluteSum(const std::vector<float>& h)
{
    double sum = 0.0;
    for (const float v : h)
        sum += v < 0.0f ? -static_cast<double>(v) : static_cast<double>(v);
    return sum;
}

} // namespace tindle::test
