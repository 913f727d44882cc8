// Who came and went in a folder while a test looked.
#pragma once

#include <windows.h>

#include <set>
#include <string>
#include <thread>
#include <vector>

namespace vantrel::test {

class CFolderWatch {
public:
    /// Watches from now on.
    explicit CFolderWatch(const std::string& folder);
    CFolderWatch(const CFolderWatch&) = delete;
    CFolderWatch& operator=(const CFolderWatch&) = delete;
    ~CFolderWatch();

    /// Ends the watching and gives the names of all files that appeared, and of those that vanished, sorted.
    void Stop();
    const std::set<std::string>& Appeared() const { return m_appeared; }
    const std::set<std::string>& Vanished() const { return m_vanished; }

private:
    void Run();
    void Take(const std::vector<unsigned char>& buffer);

    HANDLE m_folder;
    HANDLE m_stop;
    std::set<std::string> m_appeared;
    std::set<std::string> m_vanished;
    std::thread m_thread;
};

}  // namespace vantrel::test
