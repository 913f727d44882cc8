#include "tests/window/journeys/recording.h"

#include <cmath>
#include <cstdlib>

#include "files/input_file.h"
#include "tests/window/driver/poll.h"

namespace vantrel::test {
namespace {

/// Tolerance for rounding by resampling. The null device adds no noise.
constexpr int kQuiet = 3;
constexpr std::size_t kPause = kRecordingRate / 10;

int Loudness(std::uint8_t sample) {
    return std::abs(static_cast<int>(sample) - 128);
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

std::size_t FirstLoud(const Bytes& recording) {
    std::size_t i = 0;
    while (i < recording.size() && Loudness(recording[i]) <= kQuiet) {
        ++i;
    }
    return i;
}

}  // namespace

CRecording::CRecording() : m_start(RecordedSize()) {}

Bytes CRecording::AtLeast(double seconds) const {
    const auto wanted = static_cast<std::size_t>(seconds * static_cast<double>(kRecordingRate));
    Require("recording of " + std::to_string(seconds) + " s", [&] { return RecordedSize() >= m_start + wanted; });
    Bytes recording(RecordedSize() - m_start);
    CInputFile file;
    OpenRecording(file);
    recording.resize(file.ReadAt(static_cast<std::int64_t>(m_start), recording));
    return recording;
}

bool IsSilent(const Bytes& recording) {
    return FirstLoud(recording) == recording.size();
}

std::vector<double> Onsets(const Bytes& recording) {
    std::vector<double> onsets;
    std::size_t quiet = kPause;
    for (std::size_t i = 0; i < recording.size(); ++i) {
        if (Loudness(recording[i]) <= kQuiet) {
            ++quiet;
            continue;
        }
        if (quiet >= kPause) {
            onsets.push_back(static_cast<double>(i) / static_cast<double>(kRecordingRate));
        }
        quiet = 0;
    }
    return onsets;
}

double LikenessShiftedBy(const Bytes& recording, std::size_t shift) {
    double product = 0;
    double first = 0;
    double second = 0;
    for (std::size_t i = FirstLoud(recording); i + shift < recording.size(); ++i) {
        const double here = recording[i] - 128.0;
        const double there = recording[i + shift] - 128.0;
        product += here * there;
        first += here * here;
        second += there * there;
    }
    return first > 0 && second > 0 ? product / std::sqrt(first * second) : 0;
}

}  // namespace vantrel::test
