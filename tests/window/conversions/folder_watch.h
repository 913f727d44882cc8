// Records the files that appear in and disappear from a folder.
#pragma once

#include <windows.h>

#include <atomic>
#include <set>
#include <string>
#include <thread>
#include <vector>

namespace vantrel::test {

class CFolderWatch {
public:
    /// Starts to watch.
    explicit CFolderWatch(const std::string& folder);
    CFolderWatch(const CFolderWatch&) = delete;
    CFolderWatch& operator=(const CFolderWatch&) = delete;
    ~CFolderWatch();

    /// Waits for all reports and stops watching. Then Appeared and Vanished have the sorted names of the files that
    /// appeared and disappeared.
    void Stop();
    const std::set<std::string>& Appeared() const { return m_appeared; }
    const std::set<std::string>& Vanished() const { return m_vanished; }

private:
    void Run();
    void Take(const std::vector<unsigned char>& buffer);

    std::string m_path;
    HANDLE m_folder;
    HANDLE m_stop;
    std::set<std::string> m_appeared;
    std::set<std::string> m_vanished;
    std::atomic<bool> m_watches = false;
    std::atomic<bool> m_hasSeenLastFile = false;
    std::thread m_thread;
};

}  // namespace vantrel::test
