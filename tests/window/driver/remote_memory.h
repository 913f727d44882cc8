// Memory in the driven process, for messages whose structures Windows does not carry from one process to another.
#pragma once

#include <windows.h>

#include <cstddef>

namespace vantrel::test {

class CRemoteMemory {
public:
    /// Zero-filled memory in `process`; a CDriveFailure when there is none.
    CRemoteMemory(HANDLE process, std::size_t size);
    CRemoteMemory(const CRemoteMemory&) = delete;
    CRemoteMemory& operator=(const CRemoteMemory&) = delete;
    ~CRemoteMemory();

    void* Address() const { return m_address; }
    void Write(const void* data, std::size_t size, std::size_t offset = 0);
    void Read(void* data, std::size_t size, std::size_t offset = 0) const;
    /// Leaves the memory to the other process, for messages that are posted.
    void* Release();

private:
    HANDLE m_process;
    void* m_address;
};

}  // namespace vantrel::test
