// Entry point of the window program.
#include <windows.h>

#include <cstdlib>

#include "app/converter_app.h"

int WINAPI WinMain(HINSTANCE, HINSTANCE, LPSTR, int) {
    vantrel::CConverterApp app;
    return app.InitInstance() ? EXIT_FAILURE : EXIT_SUCCESS;
}
