// Entry point of the console program: passes its arguments, in UTF-8, to the command line.
#include <string>
#include <vector>

#include "console/command_line.h"

#ifdef _WIN32

#include "files/utf.h"

int wmain(int argc, wchar_t* argv[]) {
    std::vector<std::string> words;
    for (int i = 1; i < argc; ++i) {
        words.push_back(vantrel::Utf8Of(argv[i]));
    }
    return vantrel::RunCommandLine(std::move(words));
}

#else

int main(int argc, char* argv[]) {
    return vantrel::RunCommandLine({argv + 1, argv + argc});
}

#endif
