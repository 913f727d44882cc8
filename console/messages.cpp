#include "console/messages.h"

#include <cerrno>
#include <cstdio>

#include "console/characters.h"
#include "console/command.h"
#include "files/native_file.h"
#include "operation/text.h"

namespace vantrel {

CResultsLost::CResultsLost() : m_isClosedPipe(errno == EPIPE), m_cause(LastFileError()) {}

int CResultsLost::Report() const {
    constexpr int kClosedPipe = 141;
    if (m_isClosedPipe) {
        return kClosedPipe;
    }
    std::fprintf(stderr, "vantrel: cannot write the results: %s\n", m_cause.c_str());
    return static_cast<int>(EExit::Failed);
}

void PrintResults(const std::string& text) {
    if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size() || std::fflush(stdout) != 0) {
        throw CResultsLost();
    }
}

std::string OneLine(std::string text) {
    while (!text.empty() && (text.back() == '\n' || text.back() == ' ')) {
        text.pop_back();
    }
    return text;
}

std::string Escaped(const std::string& text) {
    std::string escaped;
    for (const SCharacter& character : CharactersOf(text)) {
        if (character.IsPrintable()) {
            escaped += character.bytes;
            continue;
        }
        for (const char byte : character.bytes) {
            escaped += Format("\\x%02X", static_cast<unsigned>(static_cast<unsigned char>(byte)));
        }
    }
    return escaped;
}

std::string Shown(const std::string& text, EStream stream) {
    return IsTerminal(stream) ? Escaped(text) : text;
}

std::string FailureText(const CConversionFailed& failure) {
    const std::string text = OneLine(failure.what());
    return failure.Cause().empty() ? text : text + " (" + failure.Cause() + ")";
}

void PrintError(const std::string& command, const std::string& file, const std::string& text) {
    const bool namesFile = text.starts_with(file + ": ") || text.starts_with(file + " ");
    const std::string message = namesFile ? text : file + ": " + text;
    std::fprintf(stderr, "vantrel %s: %s\n", command.c_str(), Shown(message, EStream::Errors).c_str());
}

}  // namespace vantrel
