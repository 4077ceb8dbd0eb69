#pragma once

#include "toolkit/Ipp.h"
#include "toolkit/Signal.h"

#include <cstdint>

namespace velmar::audio
{

/** Turns real signals into half spectra of size / 2 + 1 bins and back, unscaled both ways:
    inverse(forward(s)) is s times size. The plan is rebuilt whenever a signal of another size
    comes, so a helper that always sees one size builds it once. size must be a power of two.
    Allocates its plan and work buffer when the size changes, and every result. Belongs to one
    thread at a time. */
class RealFft
{
public:
    RealFft() = default;
    ~RealFft();
    RealFft(const RealFft&) = delete;
    RealFft& operator=(const RealFft&) = delete;

    void prepare(std::int32_t newSize);
    ComplexSignal32 forward(const Signal32& s);
    Signal32 inverse(const ComplexSignal32& x);

    /** One channel: size samples in, size / 2 + 1 bins out, under the same rebuild rule. */
    void forward(const float* samples, complex32* spectrum, std::int32_t samplesLength);
    /** One channel: the inverse for a helper of the given size. */
    void inverse(const complex32* spectrum, float* samples, std::int32_t samplesLength);

    std::int32_t getSize() const noexcept { return size; }

private:
    void release();

    IppsFFTSpec_R_32f* plan = nullptr;
    Ipp8u* work = nullptr;
    std::int32_t size = 0;
};

} // namespace velmar::audio
