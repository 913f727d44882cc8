// A portable reader of WAV files for the completion sound.
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
    std::uint16_t blockAlign = 0;  ///< Bytes of a sample of all channels.
    std::uint16_t bitsPerSample = 0;
};

/// A sound in memory.
class CWaveSound {
public:
    /// Loads a WAV file. The first chunk is the format, the first chunk "data" after it holds the samples. Returns
    /// false and keeps the previous sound if the file cannot be opened exclusively or read, if it lacks one of the
    /// chunks, if its sample size is 0, or if it holds no whole sample.
    bool Load(const std::string& path);

    const SWaveFormat& Format() const { return m_format; }
    /// Whole samples; not empty after a successful Load.
    std::span<const std::uint8_t> Samples() const { return {m_samples.get(), m_length}; }

private:
    SWaveFormat m_format;
    std::unique_ptr<std::uint8_t[]> m_samples;
    std::size_t m_length = 0;
};

}  // namespace vantrel
