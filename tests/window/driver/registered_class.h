// Protocols and file types that a test registers, so that it receives the targets that the program opens.
#pragma once

#include <windows.h>

#include <string>

namespace vantrel::test {

/// A class in the registry during the object's life. The destructor restores the previous value.
class CRegisteredClass {
public:
    CRegisteredClass(const std::wstring& name, const std::wstring& value, const std::wstring& command)
        : m_key(L"Software\\Classes\\" + name) {
        wchar_t former[256] = L"";
        DWORD size = sizeof former;
        m_existed = RegGetValueW(HKEY_LOCAL_MACHINE, m_key.c_str(), nullptr, RRF_RT_REG_SZ, nullptr, former, &size) ==
                    ERROR_SUCCESS;
        m_former = former;
        Set(L"", value);
        if (!command.empty()) {
            Set(L"\\shell\\open\\command", command);
            RegSetKeyValueW(HKEY_LOCAL_MACHINE, m_key.c_str(), L"URL Protocol", REG_SZ, L"", sizeof(wchar_t));
        }
    }
    ~CRegisteredClass() {
        if (m_existed) {
            Set(L"", m_former);
        } else {
            RegDeleteTreeW(HKEY_LOCAL_MACHINE, m_key.c_str());
        }
    }
    CRegisteredClass(const CRegisteredClass&) = delete;
    CRegisteredClass& operator=(const CRegisteredClass&) = delete;

private:
    void Set(const std::wstring& below, const std::wstring& value) const {
        RegSetKeyValueW(HKEY_LOCAL_MACHINE, (m_key + below).c_str(), nullptr, REG_SZ, value.c_str(),
                        static_cast<DWORD>((value.size() + 1) * sizeof(wchar_t)));
    }

    std::wstring m_key;
    std::wstring m_former;
    bool m_existed;
};

}  // namespace vantrel::test
