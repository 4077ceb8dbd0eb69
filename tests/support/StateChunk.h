#pragma once

#include <cstdint>
#include <cstring>
#include <utility>
#include <vector>

namespace tindle::test
{

using Bytes = std::vector<std::uint8_t>;

inline void appendWord(Bytes& bytes, std::uint32_t word)
{
    for (int shift = 0; shift < 32; shift += 8)
        bytes.push_back(static_cast<std::uint8_t>(word >> shift));
}

inline std::uint32_t wordAt(const std::uint8_t* bytes)
{
    return static_cast<std::uint32_t>(bytes[0]) | static_cast<std::uint32_t>(bytes[1]) << 8 |
           static_cast<std::uint32_t>(bytes[2]) << 16 | static_cast<std::uint32_t>(bytes[3]) << 24;
}

inline std::uint32_t bitsOf(float value)
{
    std::uint32_t bits = 0;
    std::memcpy(&bits, &value, 4);
    return bits;
}

inline float floatOf(std::uint32_t bits)
{
    float value = 0.0f;
    std::memcpy(&value, &bits, 4);
    return value;
}

/** A state chunk built from its layout, independently of the plug-in's writer: "RMLV", "DTLV",
    version, count, then (engine id, real value) records, all little-endian. */
inline Bytes stateChunk(std::int32_t count, const std::vector<std::pair<std::int32_t, float>>& records,
                        std::uint32_t version = 0x00010101u)
{
    Bytes bytes = {'R', 'M', 'L', 'V', 'D', 'T', 'L', 'V'};
    appendWord(bytes, version);
    appendWord(bytes, static_cast<std::uint32_t>(count));
    for (const auto& [id, value] : records)
    {
        appendWord(bytes, static_cast<std::uint32_t>(id));
        appendWord(bytes, bitsOf(value));
    }
    return bytes;
}

/** The chunk that the plug-in writes, for the seven values in table order (engine ids 0, 1, 2, 4,
    5, 6, 7). */
inline Bytes fullStateChunk(const std::vector<float>& values)
{
    const std::int32_t ids[] = {0, 1, 2, 4, 5, 6, 7};
    std::vector<std::pair<std::int32_t, float>> records;
    for (std::size_t k = 0; k < values.size() && k < 7; ++k)
        records.emplace_back(ids[k], values[k]);
    return stateChunk(7, records);
}

} // namespace tindle::test
