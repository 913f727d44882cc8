// Ends with status 0 if a program of this session can have a window. Under Wine none can if the process of the desktop,
// which the first window of a session starts, did not reach the display.
#include <windows.h>

int main() {
    return CreateWindowExW(0, L"STATIC", L"", WS_OVERLAPPED, 0, 0, 1, 1, nullptr, nullptr, nullptr, nullptr) == nullptr
               ? 1
               : 0;
}
