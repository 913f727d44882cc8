#include "app/ui/accessible_name.h"

// initguid.h makes the next headers define the ids of the interfaces in this file.
#include <initguid.h>
#include <objbase.h>
#include <oleacc.h>

namespace vantrel {

void SetAccessibleName(HWND control, const wchar_t* name) {
    IAccPropServices* services = nullptr;
    if (FAILED(CoCreateInstance(CLSID_AccPropServices, nullptr, CLSCTX_INPROC_SERVER, IID_IAccPropServices,
                                reinterpret_cast<void**>(&services)))) {
        return;
    }
    services->SetHwndPropStr(control, static_cast<DWORD>(OBJID_CLIENT), CHILDID_SELF, PROPID_ACC_NAME, name);
    services->Release();
}

}  // namespace vantrel
