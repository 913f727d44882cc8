// The player of the completion sound: repeats a WAV file on the default wave device until it is destroyed.
#pragma once

#include <windows.h>
// After windows.h, whose types it uses.
#include <mmsystem.h>

#include <array>
#include <atomic>
#include <memory>
#include <string>

#include "app/sound/sample_loop.h"
#include "app/sound/wav_file.h"

namespace vantrel {

/// One sound being played. A thread of its own keeps eight buffers queued at the device; it and the device's callback
/// touch nothing but this object, and are over when its destructor returns.
class CWavePlayer {
public:
    CWavePlayer() = default;
    CWavePlayer(const CWavePlayer&) = delete;
    CWavePlayer& operator=(const CWavePlayer&) = delete;
    ~CWavePlayer();

    /// Holds the sound where it is, or lets it go on.
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

/// Starts playing a WAV file, or prepares it with the device paused. Null on any failure: no such file, no WAV file,
/// no device or a format that it does not play.
CWavePlayer* CreatePlayer(const std::wstring& path, bool startPaused);

/// Stops the sound and releases everything. Null is allowed.
void DestroyPlayer(CWavePlayer* player);

}  // namespace vantrel
