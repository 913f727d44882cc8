// The player of the completion sound with a recording driver in place of the wave output device.
#include "app/sound/wave_player.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <mutex>
#include <string>
#include <vector>

#include "files/utf.h"
#include "tests/support/test_folder.h"
#include "tests/window/driver/poll.h"
#include "tests/window/replaced_call.h"

namespace vantrel::test {
namespace {

using ::testing::ElementsAre;

/// What the player asked of the driver. Global, because the driver's functions get no other context; with a lock,
/// because the player's thread calls them, too.
struct SDriver {
    std::mutex lock;
    std::vector<std::string> calls;
    std::vector<WAVEHDR*> written;
    std::vector<Bytes> contents;
    WAVEFORMATEX format{};
    DWORD_PTR callback = 0;
    DWORD_PTR instance = 0;

    void Note(const std::string& call) {
        const std::lock_guard guard(lock);
        calls.push_back(call);
    }
    std::vector<std::string> Calls() {
        const std::lock_guard guard(lock);
        return calls;
    }
    std::size_t Writes() {
        const std::lock_guard guard(lock);
        return written.size();
    }
};
SDriver* g_driver = nullptr;

MMRESULT WINAPI Open(HWAVEOUT* device, UINT, const WAVEFORMATEX* format, DWORD_PTR callback, DWORD_PTR instance,
                     DWORD) {
    g_driver->Note("open");
    g_driver->format = *format;
    g_driver->callback = callback;
    g_driver->instance = instance;
    *device = reinterpret_cast<HWAVEOUT>(g_driver);
    return MMSYSERR_NOERROR;
}
MMRESULT WINAPI Prepare(HWAVEOUT, WAVEHDR* header, UINT) {
    g_driver->Note("prepare");
    header->dwFlags |= WHDR_PREPARED;
    return MMSYSERR_NOERROR;
}
MMRESULT WINAPI Write(HWAVEOUT, WAVEHDR* header, UINT) {
    const std::lock_guard guard(g_driver->lock);
    g_driver->calls.emplace_back("write");
    g_driver->written.push_back(header);
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(header->lpData);
    g_driver->contents.emplace_back(bytes, bytes + header->dwBufferLength);
    return MMSYSERR_NOERROR;
}
MMRESULT WINAPI Unprepare(HWAVEOUT, WAVEHDR* header, UINT) {
    g_driver->Note("unprepare");
    header->dwFlags &= ~static_cast<DWORD>(WHDR_PREPARED);
    return MMSYSERR_NOERROR;
}
MMRESULT WINAPI Pause(HWAVEOUT) {
    g_driver->Note("pause");
    return MMSYSERR_NOERROR;
}
MMRESULT WINAPI Restart(HWAVEOUT) {
    g_driver->Note("restart");
    return MMSYSERR_NOERROR;
}
MMRESULT WINAPI Reset(HWAVEOUT) {
    g_driver->Note("reset");
    return MMSYSERR_NOERROR;
}
MMRESULT WINAPI Close(HWAVEOUT) {
    g_driver->Note("close");
    return MMSYSERR_NOERROR;
}

}  // namespace
}  // namespace vantrel::test

REPLACE_CALL(waveOutOpen, vantrel::test::Open)
REPLACE_CALL(waveOutPrepareHeader, vantrel::test::Prepare)
REPLACE_CALL(waveOutWrite, vantrel::test::Write)
REPLACE_CALL(waveOutUnprepareHeader, vantrel::test::Unprepare)
REPLACE_CALL(waveOutPause, vantrel::test::Pause)
REPLACE_CALL(waveOutRestart, vantrel::test::Restart)
REPLACE_CALL(waveOutReset, vantrel::test::Reset)
REPLACE_CALL(waveOutClose, vantrel::test::Close)

namespace vantrel::test {
namespace {

constexpr std::size_t kSoundLength = 20'000;

class CWavePlayerTest : public ::testing::Test {
protected:
    CWavePlayerTest() {
        g_driver = &m_driver;
        m_samples = RandomBytes(kSoundLength, 1);
        Bytes file = {'R', 'I', 'F', 'F', 0, 0, 0,   0,   'W', 'A',  'V',  'E', 'f', 'm',  't',
                      ' ', 16,  0,   0,   0, 1, 0,   1,   0,   0x11, 0x2B, 0,   0,   0x11, 0x2B,
                      0,   0,   1,   0,   8, 0, 'd', 'a', 't', 'a',  0,    0,   0,   0};
        Write32(file, 40, kSoundLength);
        file.insert(file.end(), m_samples.begin(), m_samples.end());
        WriteWhole(m_folder / "sound.wav", file);
    }
    ~CWavePlayerTest() override { g_driver = nullptr; }

    std::wstring Path() const { return WideOf(m_folder / "sound.wav"); }

    /// Tells the player that the device has played a buffer.
    void FinishBuffer(std::size_t index) {
        WAVEHDR* const header = m_driver.written[index];
        header->dwFlags |= WHDR_DONE;
        const auto callback = reinterpret_cast<void(CALLBACK*)(HWAVEOUT, UINT, DWORD_PTR, DWORD_PTR, DWORD_PTR)>(
            reinterpret_cast<void*>(m_driver.callback));
        callback(nullptr, WOM_DONE, m_driver.instance, 0, 0);
    }

    CTestFolder m_folder;
    SDriver m_driver;
    Bytes m_samples;
};

TEST_F(CWavePlayerTest, QueuesEightBuffersThatContinueTheSound) {
    CWavePlayer* const player = CreatePlayer(Path(), false);
    ASSERT_NE(player, nullptr);
    Require("eight buffers", [&] { return m_driver.Writes() == 8; });
    EXPECT_EQ(m_driver.format.nSamplesPerSec, 11025U);
    EXPECT_EQ(m_driver.format.wBitsPerSample, 8);
    EXPECT_EQ(m_driver.format.nChannels, 1);
    std::size_t position = 0;
    for (const Bytes& content : m_driver.contents) {
        ASSERT_EQ(content.size(), 8000U);
        for (const std::uint8_t sample : content) {
            ASSERT_EQ(sample, m_samples[position]);
            position = (position + 1) % kSoundLength;
        }
    }
    DestroyPlayer(player);
}

TEST_F(CWavePlayerTest, CallsComeInOrder) {
    CWavePlayer* const player = CreatePlayer(Path(), false);
    ASSERT_NE(player, nullptr);
    Require("eight buffers", [&] { return m_driver.Writes() == 8; });
    FinishBuffer(0);
    Require("a ninth write", [&] { return m_driver.Writes() == 9; });
    EXPECT_EQ(m_driver.written[8], m_driver.written[0]) << "the buffer that was played";
    DestroyPlayer(player);
    std::vector<std::string> expected = {"open"};
    for (int i = 0; i < 8; ++i) {
        expected.insert(expected.end(), {"prepare", "write"});
    }
    expected.insert(expected.end(), {"write", "reset"});
    expected.insert(expected.end(), 8, "unprepare");
    expected.emplace_back("close");
    EXPECT_EQ(m_driver.Calls(), expected);
}

TEST_F(CWavePlayerTest, StartsPaused) {
    CWavePlayer* const player = CreatePlayer(Path(), true);
    ASSERT_NE(player, nullptr);
    const std::vector<std::string> calls = m_driver.Calls();
    ASSERT_GE(calls.size(), 2U);
    EXPECT_EQ(calls[0], "open");
    EXPECT_EQ(calls[1], "pause");
    player->SetPaused(false);
    EXPECT_THAT(m_driver.Calls(), ::testing::Contains("restart"));
    DestroyPlayer(player);
}

TEST_F(CWavePlayerTest, AMissingFileOpensNoDevice) {
    EXPECT_EQ(CreatePlayer(L"Z:\\nowhere\\sound.wav", false), nullptr);
    EXPECT_THAT(m_driver.Calls(), ElementsAre());
}

}  // namespace
}  // namespace vantrel::test
