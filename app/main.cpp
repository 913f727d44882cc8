// The entry of the window program.
#include <windows.h>

#include "app/converter_app.h"

int WINAPI WinMain(HINSTANCE, HINSTANCE, LPSTR, int) {
    vantrel::CConverterApp app;
    app.InitInstance();
    return 0;
}
