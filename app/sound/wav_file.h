// Reading of WAV files for the completion sound: the format and the samples, portable and without help of the system.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>

namespace vantrel {

/// The format fields of a WAV file, in the order of the file.
struct SWaveFormat {
    std::uint16_t formatTag = 0;
    std::uint16_t channels = 0;
    std::uint32_t samplesPerSecond = 0;
    std::uint32_t averageBytesPerSecond = 0;
    std::uint16_t blockAlign = 0;  ///< Bytes of one sample of all channels.
    std::uint16_t bitsPerSample = 0;
};

/// A sound in memory.
class CWaveSound {
public:
    /// Loads a WAV file. The first chunk is taken as the format, the first chunk named "data" after it as the samples.
    /// False, with the sound left as it was, when the file cannot be opened alone or read, when it has no such chunks,
    /// when its format names no sample size, or when it holds not even one sample.
    bool Load(const std::string& path);

    const SWaveFormat& Format() const { return m_format; }
    /// Whole samples only, never empty after a successful Load.
    std::span<const std::uint8_t> Samples() const { return {m_samples.get(), m_length}; }

private:
    SWaveFormat m_format;
    std::unique_ptr<std::uint8_t[]> m_samples;
    std::size_t m_length = 0;
};

}  // namespace vantrel
