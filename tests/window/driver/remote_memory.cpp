#include "tests/window/driver/remote_memory.h"

#include "tests/window/driver/poll.h"

namespace vantrel::test {

CRemoteMemory::CRemoteMemory(HANDLE process, std::size_t size)
    : m_process(process), m_address(VirtualAllocEx(process, nullptr, size, MEM_COMMIT | MEM_RESERVE, PAGE_READWRITE)) {
    if (m_address == nullptr) {
        throw CDriveFailure("no memory in the driven process");
    }
}

CRemoteMemory::~CRemoteMemory() {
    if (m_address != nullptr) {
        VirtualFreeEx(m_process, m_address, 0, MEM_RELEASE);
    }
}

void CRemoteMemory::Write(const void* data, std::size_t size, std::size_t offset) {
    if (WriteProcessMemory(m_process, static_cast<char*>(m_address) + offset, data, size, nullptr) == FALSE) {
        throw CDriveFailure("the driven process's memory cannot be written");
    }
}

void CRemoteMemory::Read(void* data, std::size_t size, std::size_t offset) const {
    if (ReadProcessMemory(m_process, static_cast<const char*>(m_address) + offset, data, size, nullptr) == FALSE) {
        throw CDriveFailure("the driven process's memory cannot be read");
    }
}

void* CRemoteMemory::Release() {
    void* address = m_address;
    m_address = nullptr;
    return address;
}

}  // namespace vantrel::test
