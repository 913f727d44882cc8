// The completion sound as recorded by the audio device.
#include <cmath>
#include <numbers>

#include "tests/window/driver/window_test.h"
#include "tests/window/journeys/cso_by_hand.h"
#include "tests/window/journeys/recording.h"

namespace vantrel::test {
namespace {

constexpr std::size_t kSmall = std::size_t{256} << 10;
constexpr char kDone[] = "Compression iso2cso Done !";
constexpr char kDoneWithoutSound[] = "Compression iso2cso Done !\n[An Error Occured Attempting to play sound]";

constexpr std::uint32_t kRate = 11025;
constexpr std::size_t kHeaderSize = 44;
constexpr std::size_t kBeep = kRate / 5;  ///< samples

void AppendText(Bytes& bytes, std::string_view text) {
    for (const char character : text) {
        bytes.push_back(static_cast<std::uint8_t>(character));
    }
}

void Append32(Bytes& bytes, std::uint32_t value) {
    bytes.resize(bytes.size() + 4);
    Write32(bytes, bytes.size() - 4, value);
}

/// An 8-bit mono WAV file of these samples, optionally with other chunks between format and data.
Bytes Wave(const Bytes& samples, bool withListChunk, std::string_view dataName = "data") {
    Bytes wave;
    AppendText(wave, "RIFF");
    Append32(wave, static_cast<std::uint32_t>(samples.size() + kHeaderSize - 8));
    AppendText(wave, "WAVEfmt ");
    Append32(wave, 16);
    Append32(wave, 0x00010001);
    Append32(wave, kRate);
    Append32(wave, kRate);
    Append32(wave, 0x00080001);
    if (withListChunk) {
        AppendText(wave, "LIST");
        Append32(wave, 5);
        AppendText(wave, std::string_view("INFOx\0", 6));
    }
    AppendText(wave, dataName);
    Append32(wave, static_cast<std::uint32_t>(samples.size()));
    wave.insert(wave.end(), samples.begin(), samples.end());
    return wave;
}

/// A beep of 0.2 s, followed by silence up to `length` samples.
Bytes Beep(std::size_t length) {
    Bytes samples(length, 128);
    for (std::size_t i = 0; i < kBeep; ++i) {
        const double angle = 2 * std::numbers::pi * 441 * static_cast<double>(i) / kRate;
        samples[i] = static_cast<std::uint8_t>(128 + std::lround(90 * std::sin(angle)));
    }
    return samples;
}

/// Waits until there was a sound for so many seconds. A recording without pauses need not come on a busy machine.
void WaitForSound(const CRecording& recording, double seconds) {
    constexpr Milliseconds kPatience{180'000};
    Require(
        std::to_string(seconds) + " s of sound", [&] { return recording.LoudSeconds() > seconds; }, kPatience);
}

void WaitForSilence() {
    Require("silence", [] { return IsSilent(CRecording().AtLeast(0.5)); });
}

class SoundJourney : public CWindowTest {
protected:
    /// A former test may still sound.
    void SetUp() override { WaitForSilence(); }

    /// Converts a small image with this sound, up to the done message.
    CDrivenBox Finish(const CDrivenDialog& dialog) {
        WriteWhole(m_folder / "game.iso", UmdImage(kSmall));
        dialog.Choose(m_folder / "game.iso");
        dialog.Press(IDC_ISO_TO_CSO);
        return WaitForBox(m_program, kConversion);
    }
};

TEST_F(SoundJourney, DefaultSoundRepeatsWhileTheMessageIsOpen) {
    const CDrivenDialog dialog = m_program.Start();
    EXPECT_EQ(dialog.Entries(IDC_SOUND), (std::vector<std::string>{"@No Sound Selected", "Success.wav"}));
    EXPECT_EQ(dialog.Selection(IDC_SOUND), 1);
    const Bytes sound = ReadWhole(m_folder / "Success.wav");
    const double length = static_cast<double>(sound.size() - kHeaderSize) / Read32(sound, 28);
    const CRecording recording;
    const CDrivenBox box = Finish(dialog);
    EXPECT_EQ(box.Text(), kDone);
    WaitForSound(recording, 2 * length);
    box.Close();
    WaitForSilence();
}

TEST_F(SoundJourney, ShortSoundRepeats) {
    constexpr std::size_t kLength = 5512;
    WriteWhole(m_folder / "beep.wav", Wave(Beep(kLength), false));
    const CDrivenDialog dialog = m_program.Start();
    dialog.Select(IDC_SOUND, "beep.wav");
    const CRecording recording;
    const CDrivenBox box = Finish(dialog);
    EXPECT_EQ(box.Text(), kDone);
    WaitForSound(recording, 5.0 * kBeep / kRate);
}

TEST_F(SoundJourney, OtherChunksBeforeTheDataAreSkipped) {
    WriteWhole(m_folder / "beep.wav", Wave(Beep(9000), true));
    const CDrivenDialog dialog = m_program.Start();
    dialog.Select(IDC_SOUND, "beep.wav");
    const CDrivenBox box = Finish(dialog);
    EXPECT_EQ(box.Text(), kDone);
    WaitForSound(CRecording(), 0);
}

TEST_F(SoundJourney, FileWithoutDataIsReported) {
    WriteWhole(m_folder / "beep.wav", Wave(Beep(9000), false, "none"));
    const CDrivenDialog dialog = m_program.Start();
    dialog.Select(IDC_SOUND, "beep.wav");
    EXPECT_EQ(Finish(dialog).Text(), kDoneWithoutSound);
}

TEST_F(SoundJourney, NoSoundSelectedIsReported) {
    const CDrivenDialog dialog = m_program.Start();
    dialog.Select(IDC_SOUND, "@No Sound Selected");
    const CDrivenBox box = Finish(dialog);
    EXPECT_EQ(box.Text(), kDoneWithoutSound);
    EXPECT_TRUE(IsSilent(CRecording().AtLeast(1)));
    box.Close();
    Require("enabled browse button", [&] { return dialog.IsEnabled(IDC_BROWSE); });
}

TEST_F(SoundJourney, ListShowsTheSoundsOfTheWorkingFolder) {
    const CTestFolder other;
    WriteWhole(other / "beep.wav", Wave(Beep(9000), false));
    const CDrivenDialog dialog = m_program.Start(other.Path());
    EXPECT_EQ(dialog.Entries(IDC_SOUND), (std::vector<std::string>{"@No Sound Selected", "beep.wav"}));
    EXPECT_EQ(FileKindOf(m_folder / "Success.wav"), EFileKind::File);
    EXPECT_EQ(FileKindOf(other / "Success.wav"), EFileKind::Missing);
}

}  // namespace
}  // namespace vantrel::test
