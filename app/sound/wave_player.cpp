#include "app/sound/wave_player.h"

#include <new>

#include "files/utf.h"

namespace vantrel {

CWavePlayer* CreatePlayer(const std::wstring& path, bool startPaused) {
    std::unique_ptr<CWavePlayer> player(new (std::nothrow) CWavePlayer);
    if (player == nullptr || !player->Start(path, startPaused)) {
        return nullptr;
    }
    return player.release();
}

void DestroyPlayer(CWavePlayer* player) {
    delete player;
}

CWavePlayer::~CWavePlayer() {
    if (m_thread != nullptr) {
        m_stop = 1;
        SetEvent(m_event);
        WaitForSingleObject(m_thread, INFINITE);
        CloseHandle(m_thread);
    }
    if (m_device != nullptr) {
        ReleaseBuffers();
        waveOutClose(m_device);
    }
    // After the device, because closing it calls back once more.
    if (m_event != nullptr) {
        CloseHandle(m_event);
    }
}

bool CWavePlayer::Start(const std::wstring& path, bool startPaused) {
    if (!m_sound.Load(Utf8Of(path))) {
        return false;
    }
    m_usableSize = UsableBufferSize(m_sound.Format().blockAlign);
    if (m_usableSize == 0 || !OpenDevice()) {
        return false;
    }
    if (startPaused) {
        SetPaused(true);
    }
    return StartThread();
}

void CWavePlayer::SetPaused(bool isPaused) {
    const MMRESULT result = isPaused ? waveOutPause(m_device) : waveOutRestart(m_device);
    if (result == MMSYSERR_NOERROR) {
        m_isPaused = isPaused;
    }
}

bool CWavePlayer::OpenDevice() {
    const SWaveFormat& source = m_sound.Format();
    WAVEFORMATEX format{};
    format.wFormatTag = source.formatTag;
    format.nChannels = source.channels;
    format.nSamplesPerSec = source.samplesPerSecond;
    format.nAvgBytesPerSec = source.averageBytesPerSecond;
    format.nBlockAlign = source.blockAlign;
    format.wBitsPerSample = source.bitsPerSample;
    format.cbSize = 0;
    const MMRESULT result =
        waveOutOpen(&m_device, WAVE_MAPPER, &format, reinterpret_cast<DWORD_PTR>(&CWavePlayer::OnDeviceMessage),
                    reinterpret_cast<DWORD_PTR>(this), CALLBACK_FUNCTION);
    if (result != MMSYSERR_NOERROR) {
        m_device = nullptr;
    }
    return m_device != nullptr;
}

bool CWavePlayer::StartThread() {
    m_event = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    if (m_event == nullptr) {
        return false;
    }
    m_thread = CreateThread(nullptr, 0, &CWavePlayer::ThreadMain, this, 0, nullptr);
    return m_thread != nullptr;
}

DWORD WINAPI CWavePlayer::ThreadMain(void* player) {
    static_cast<CWavePlayer*>(player)->Play();
    return 0;
}

void CWavePlayer::Play() {
    QueueAll();
    while (m_stop == 0) {
        WaitForSingleObject(m_event, INFINITE);
        RefillDone();
    }
    waveOutReset(m_device);
}

void CWavePlayer::QueueAll() {
    for (std::size_t index = 0; index < kBufferCount; ++index) {
        WAVEHDR& header = m_headers[index];
        header.lpData = reinterpret_cast<LPSTR>(m_buffers[index].data());
        header.dwBufferLength = static_cast<DWORD>(m_usableSize);
        if (waveOutPrepareHeader(m_device, &header, sizeof header) == MMSYSERR_NOERROR) {
            Refill(index);
        }
    }
}

void CWavePlayer::RefillDone() {
    for (std::size_t index = 0; index < kBufferCount && m_stop == 0; ++index) {
        if ((m_headers[index].dwFlags & WHDR_DONE) != 0) {
            m_headers[index].dwFlags &= ~static_cast<DWORD>(WHDR_DONE);
            Refill(index);
        }
    }
}

void CWavePlayer::Refill(std::size_t index) {
    FillFromLoop(m_sound.Samples(), m_readPosition, std::span(m_buffers[index]).first(m_usableSize));
    waveOutWrite(m_device, &m_headers[index], sizeof m_headers[index]);
}

void CWavePlayer::ReleaseBuffers() {
    for (WAVEHDR& header : m_headers) {
        if ((header.dwFlags & WHDR_PREPARED) != 0) {
            waveOutUnprepareHeader(m_device, &header, sizeof header);
        }
    }
}

void CALLBACK CWavePlayer::OnDeviceMessage(HWAVEOUT, UINT message, DWORD_PTR player, DWORD_PTR, DWORD_PTR) {
    if (message == WOM_DONE) {
        SetEvent(reinterpret_cast<CWavePlayer*>(player)->m_event);
    }
}

}  // namespace vantrel
