#include "tests/window/conversions/folder_watch.h"

#include "files/utf.h"
#include "tests/support/test_folder.h"
#include "tests/window/driver/poll.h"

namespace vantrel::test {

namespace {

constexpr std::size_t kBufferSize = 64 * 1024;
/// The system reports changes late but in their order. When it reports this file, it has reported all others.
constexpr char kLastFile[] = "end-of-watch";

}  // namespace

CFolderWatch::CFolderWatch(const std::string& folder)
    : m_path(folder),
      m_folder(CreateFileW(WideOf(folder).c_str(), FILE_LIST_DIRECTORY,
                           FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, OPEN_EXISTING,
                           FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OVERLAPPED, nullptr)),
      m_stop(CreateEventW(nullptr, TRUE, FALSE, nullptr)) {
    if (m_folder == INVALID_HANDLE_VALUE || m_stop == nullptr) {
        throw CDriveFailure("the folder " + folder + " cannot be watched");
    }
    m_thread = std::thread([this] { Run(); });
    WaitUntil([this] { return m_watches.load(); });  // changes are reported from the first request on
}

CFolderWatch::~CFolderWatch() {
    Stop();
    CloseHandle(m_stop);
    CloseHandle(m_folder);
}

void CFolderWatch::Stop() {
    if (m_thread.joinable()) {
        const std::string last = m_path + "\\" + kLastFile;
        WriteText(last, "");
        WaitUntil([this] { return m_hasSeenLastFile.load(); });
        SetEvent(m_stop);
        m_thread.join();
        DeleteFileW(WideOf(last).c_str());
        if (!m_hasSeenLastFile) {
            throw CDriveFailure("changes in " + m_path + " are not reported");
        }
    }
}

void CFolderWatch::Run() {
    std::vector<unsigned char> buffer(kBufferSize);
    const HANDLE news = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    for (;;) {
        OVERLAPPED overlapped = {};
        overlapped.hEvent = news;
        DWORD length = 0;
        if (!ReadDirectoryChangesW(m_folder, buffer.data(), static_cast<DWORD>(buffer.size()), FALSE,
                                   FILE_NOTIFY_CHANGE_FILE_NAME, nullptr, &overlapped, nullptr)) {
            break;
        }
        m_watches = true;
        const HANDLE either[] = {news, m_stop};
        if (WaitForMultipleObjects(2, either, FALSE, INFINITE) != WAIT_OBJECT_0) {
            CancelIo(m_folder);
            GetOverlappedResult(m_folder, &overlapped, &length, TRUE);
            break;
        }
        if (GetOverlappedResult(m_folder, &overlapped, &length, FALSE) && length > 0) {
            Take(buffer);
        }
    }
    CloseHandle(news);
}

void CFolderWatch::Take(const std::vector<unsigned char>& buffer) {
    std::size_t offset = 0;
    for (;;) {
        const auto* news = reinterpret_cast<const FILE_NOTIFY_INFORMATION*>(buffer.data() + offset);
        const std::string name = Utf8Of(std::wstring(news->FileName, news->FileNameLength / sizeof(WCHAR)));
        if (name == kLastFile) {
            m_hasSeenLastFile = true;
        } else if (news->Action == FILE_ACTION_ADDED) {
            m_appeared.insert(name);
        } else if (news->Action == FILE_ACTION_REMOVED) {
            m_vanished.insert(name);
        }
        if (news->NextEntryOffset == 0) {
            break;
        }
        offset += news->NextEntryOffset;
    }
}

}  // namespace vantrel::test
