#include "tests/window/journeys/recording.h"

#include <algorithm>
#include <cstdlib>

#include "files/input_file.h"
#include "tests/window/driver/poll.h"

namespace vantrel::test {
namespace {

/// Tolerance for rounding by resampling. The null device adds no noise.
constexpr int kQuiet = 3;
/// Samples per second of the recording: one unsigned byte each, 128 is silence.
constexpr double kRate = 11025;

bool IsLoud(std::uint8_t sample) {
    return std::abs(static_cast<int>(sample) - 128) > kQuiet;
}

void OpenRecording(CInputFile& file) {
    const char* path = std::getenv("VANTREL_RECORDING");
    if (path == nullptr || !file.Open(path)) {
        throw CDriveFailure("no recording of the audio device");
    }
}

std::size_t RecordedSize() {
    CInputFile file;
    OpenRecording(file);
    return static_cast<std::size_t>(file.Size());
}

}  // namespace

CRecording::CRecording() : m_start(RecordedSize()) {}

Bytes CRecording::AtLeast(double seconds) const {
    const auto wanted = static_cast<std::size_t>(seconds * kRate);
    Require("recording of " + std::to_string(seconds) + " s", [&] { return RecordedSize() >= m_start + wanted; });
    Bytes recording(RecordedSize() - m_start);
    CInputFile file;
    OpenRecording(file);
    recording.resize(file.ReadAt(static_cast<std::int64_t>(m_start), recording));
    return recording;
}

double CRecording::LoudSeconds() const {
    const Bytes recording = AtLeast(0);
    return static_cast<double>(std::count_if(recording.begin(), recording.end(), IsLoud)) / kRate;
}

bool IsSilent(const Bytes& recording) {
    return std::none_of(recording.begin(), recording.end(), IsLoud);
}

}  // namespace vantrel::test
