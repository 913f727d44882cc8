#include "app/ui/taskbar_progress.h"

#include <objbase.h>
#include <shobjidl.h>

#include <algorithm>

namespace vantrel {

CTaskbarProgress::CTaskbarProgress(HWND window) : m_window(window) {
    if (FAILED(CoCreateInstance(CLSID_TaskbarList, nullptr, CLSCTX_INPROC_SERVER, IID_PPV_ARGS(&m_taskbar)))) {
        m_taskbar = nullptr;
    } else if (FAILED(m_taskbar->HrInit())) {
        m_taskbar->Release();
        m_taskbar = nullptr;
    }
}

CTaskbarProgress::~CTaskbarProgress() {
    if (m_taskbar != nullptr) {
        m_taskbar->SetProgressState(m_window, TBPF_NOPROGRESS);
        m_taskbar->Release();
    }
}

void CTaskbarProgress::ShowIfDue(std::int32_t position, std::int32_t range) {
    if (m_taskbar != nullptr && m_clock.IsDue()) {
        m_taskbar->SetProgressValue(m_window, static_cast<ULONGLONG>(std::max(position, 0)),
                                    static_cast<ULONGLONG>(std::max(range, 1)));
        m_clock.Painted();
    }
}

}  // namespace vantrel
