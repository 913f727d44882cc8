// Memory in the driven process, for messages whose structures Windows does not copy between processes.
#pragma once

#include <windows.h>

#include <cstddef>

namespace vantrel::test {

class CRemoteMemory {
public:
    /// Allocates zero-filled memory in `process`. Throws CDriveFailure if allocation fails.
    CRemoteMemory(HANDLE process, std::size_t size);
    CRemoteMemory(const CRemoteMemory&) = delete;
    CRemoteMemory& operator=(const CRemoteMemory&) = delete;
    ~CRemoteMemory();

    void* Address() const { return m_address; }
    void Write(const void* data, std::size_t size, std::size_t offset = 0);
    void Read(void* data, std::size_t size, std::size_t offset = 0) const;
    /// Releases ownership: the other process keeps the memory, for posted messages.
    void* Release();

private:
    HANDLE m_process;
    void* m_address;
};

}  // namespace vantrel::test
