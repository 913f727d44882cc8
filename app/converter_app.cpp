#include "app/converter_app.h"

#include <commctrl.h>
#include <objbase.h>

#include "app/main_dialog.h"

namespace vantrel {
namespace {

/// From now on, DLLs are loaded only from the system folder: anyone may have put a DLL of the same name into the folder
/// of the program or of an image.
void HardenLibrarySearch() {
    SetDllDirectoryW(L"");
    using SetDefaultDllDirectoriesFunction = BOOL(WINAPI*)(DWORD);
    const auto setDefaultDllDirectories = reinterpret_cast<SetDefaultDllDirectoriesFunction>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"kernel32.dll"), "SetDefaultDllDirectories")));
    if (setDefaultDllDirectories != nullptr) {  // missing in Windows 7 without updates
        setDefaultDllDirectories(LOAD_LIBRARY_SEARCH_SYSTEM32);
    }
}

}  // namespace

bool CConverterApp::InitInstance() {
    HardenLibrarySearch();
    INITCOMMONCONTROLSEX controls = {sizeof controls, ICC_BAR_CLASSES | ICC_STANDARD_CLASSES | ICC_WIN95_CLASSES};
    InitCommonControlsEx(&controls);
    const HRESULT objects = CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED | COINIT_DISABLE_OLE1DDE);
    {
        CMainDialog dialog(m_loop);
        dialog.DoModal(m_loop);
    }
    if (SUCCEEDED(objects)) {
        CoUninitialize();
    }
    return false;
}

}  // namespace vantrel
