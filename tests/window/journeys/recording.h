// What the audio device of the tests was given to play.
#pragma once

#include <chrono>

#include "tests/support/test_folder.h"

namespace vantrel::test {

/// Samples per second of the recording: one unsigned byte each, 128 is silence.
inline constexpr std::size_t kRecordingRate = 11025;

/// A stretch of the recording that begins now.
class CRecording {
public:
    CRecording();
    /// What was recorded since, as soon as it is at least this long; the test fails when it does not become so.
    Bytes AtLeast(double seconds) const;

private:
    std::size_t m_start;
};

/// Whether nothing but silence is heard.
bool IsSilent(const Bytes& recording);

/// The times in seconds at which something is heard after at least a tenth of a second of silence.
std::vector<double> Onsets(const Bytes& recording);

/// How alike (−1 to 1) the recording is to itself, shifted by this many samples; silence at its start is left out.
double LikenessShiftedBy(const Bytes& recording, std::size_t shift);

}  // namespace vantrel::test
