// The player of the completion sound: repeats a WAV file on the default wave output device.
#pragma once

#include <windows.h>
// Needs the types of windows.h.
#include <mmsystem.h>

#include <array>
#include <atomic>
#include <memory>
#include <string>

#include "app/sound/sample_loop.h"
#include "app/sound/wav_file.h"

namespace vantrel {

/// A sound that is playing until the object is destroyed. A thread of its own keeps eight buffers queued at the device.
/// Thread and device callback access only this object and have ended when its destructor returns.
class CWavePlayer {
public:
    CWavePlayer() = default;
    CWavePlayer(const CWavePlayer&) = delete;
    CWavePlayer& operator=(const CWavePlayer&) = delete;
    ~CWavePlayer();

    /// Pauses or resumes the sound.
    void SetPaused(bool isPaused);

private:
    friend CWavePlayer* CreatePlayer(const std::wstring& path, bool startPaused);

    static constexpr std::size_t kBufferCount = 8;

    bool Start(const std::wstring& path, bool startPaused);
    bool OpenDevice();
    bool StartThread();
    void Play();
    void QueueAll();
    void RefillDone();
    void Refill(std::size_t index);
    void ReleaseBuffers();
    static DWORD WINAPI ThreadMain(void* player);
    static void CALLBACK OnDeviceMessage(HWAVEOUT device, UINT message, DWORD_PTR player, DWORD_PTR, DWORD_PTR);

    HWAVEOUT m_device = nullptr;
    HANDLE m_thread = nullptr;
    HANDLE m_event = nullptr;
    std::atomic<std::int32_t> m_stop = 0;
    CWaveSound m_sound;
    std::size_t m_readPosition = 0;
    std::size_t m_usableSize = 0;
    std::array<WAVEHDR, kBufferCount> m_headers{};
    std::array<std::array<std::uint8_t, kWaveBufferSize>, kBufferCount> m_buffers{};
    bool m_isPaused = false;
};

/// Starts to play a WAV file, or opens it with the device paused. Null if the file cannot be loaded, or if there is no
/// device for its format.
CWavePlayer* CreatePlayer(const std::wstring& path, bool startPaused);

/// Stops the sound. `player` may be null.
void DestroyPlayer(CWavePlayer* player);

}  // namespace vantrel
