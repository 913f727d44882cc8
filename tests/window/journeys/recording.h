// The recorded output of the audio device of the tests.
#pragma once

#include <chrono>

#include "tests/support/test_folder.h"

namespace vantrel::test {

/// Samples per second of the recording: one unsigned byte each, 128 is silence.
inline constexpr std::size_t kRecordingRate = 11025;

/// A part of the recording, from now on.
class CRecording {
public:
    CRecording();
    /// The recording since then, once it has at least this length. The test fails if it does not reach it.
    Bytes AtLeast(double seconds) const;

private:
    std::size_t m_start;
};

/// Whether the recording is silent.
bool IsSilent(const Bytes& recording);

/// The times in seconds at which a sound starts after at least a tenth of a second of silence.
std::vector<double> Onsets(const Bytes& recording);

/// The autocorrelation (−1 to 1) of the recording, without silence at its start, at a lag of this many samples.
double LikenessShiftedBy(const Bytes& recording, std::size_t shift);

}  // namespace vantrel::test
