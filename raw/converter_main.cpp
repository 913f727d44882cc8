// Entry point of the raw-sector converter: passes its arguments, as UTF-8, to RunConverter.
#include <iostream>
#include <string>
#include <vector>

#include "raw/converter.h"

#ifdef _WIN32

#include "files/utf.h"

int wmain(int argc, wchar_t* argv[]) {
    std::vector<std::string> arguments;
    for (int i = 1; i < argc; ++i) {
        arguments.push_back(vantrel::Utf8Of(argv[i]));
    }
    return static_cast<int>(vantrel::RunConverter(arguments, std::cout, std::cerr));
}

#else

int main(int argc, char* argv[]) {
    return static_cast<int>(vantrel::RunConverter({argv + 1, argv + argc}, std::cout, std::cerr));
}

#endif
