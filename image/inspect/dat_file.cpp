#include "image/inspect/dat_file.h"

#include <algorithm>
#include <charconv>
#include <rapidxml/rapidxml.hpp>

#include "files/input_file.h"
#include "files/letter_case.h"
#include "files/refused.h"

namespace vantrel {

namespace {

using Node = rapidxml::xml_node<char>;

constexpr std::int64_t kLargestFile = 1LL << 28;

std::vector<char> ReadText(const std::string& path) {
    CInputFile file;
    if (!file.Open(path)) {
        throw CRefused(path + ": " + LastFileError());
    }
    const std::int64_t size = file.Size();
    if (size > kLargestFile) {
        throw CRefused(path + ": the file is too large for a disc database");
    }
    std::vector<char> text(static_cast<std::size_t>(std::max<std::int64_t>(size, 0)) + 1);
    file.Read({reinterpret_cast<std::uint8_t*>(text.data()), text.size() - 1});
    if (file.HasFailed()) {
        throw CRefused(file.Problem());
    }
    return text;
}

/// The stack at the call of the parser.
thread_local std::uintptr_t t_stack = 0;

std::uintptr_t CurrentStack() {
    return reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0));
}

/// Refuses elements that are nested so deeply that the parser, which calls itself for each, would exhaust the stack. It
/// allocates memory every few hundred elements.
void* AllocateUnlessTooDeep(std::size_t size) {
    constexpr std::uintptr_t kDeepest = 256U << 10U;
    if (t_stack - CurrentStack() > kDeepest) {
        throw rapidxml::parse_error("elements are nested too deeply", nullptr);
    }
    return new char[size];
}

void Free(void* memory) {
    delete[] static_cast<char*>(memory);
}

std::string TextOf(const Node& node, const char* attribute) {
    const auto* found = node.first_attribute(attribute);
    return found ? std::string(found->value(), found->value_size()) : std::string();
}

std::string SumOf(const Node& node, const char* attribute) {
    return LowerAscii(TextOf(node, attribute));
}

std::int64_t NumberOf(const Node& node, const char* attribute) {
    const std::string text = TextOf(node, attribute);
    std::int64_t number = -1;
    std::from_chars(text.data(), text.data() + text.size(), number);
    return number;
}

bool Fits(const std::string& wanted, const std::string& found) {
    return wanted.empty() || wanted == found;
}

}  // namespace

CDatFile::CDatFile(const std::string& path) : m_path(path) {
    std::vector<char> text = ReadText(path);
    rapidxml::xml_document<> document;
    try {
        t_stack = CurrentStack();
        document.set_allocator(AllocateUnlessTooDeep, Free);
        document.parse<0>(text.data());
    } catch (const rapidxml::parse_error& error) {
        throw CRefused(path + ": not a disc database: " + error.what());
    }
    const Node* const root = document.first_node("datafile");
    if (root == nullptr) {
        throw CRefused(path + ": not a disc database: it has no element datafile");
    }
    for (const Node* game = root->first_node(); game != nullptr; game = game->next_sibling()) {
        for (const Node* rom = game->first_node("rom"); rom != nullptr; rom = rom->next_sibling("rom")) {
            m_entries.push_back(
                {TextOf(*game, "name"),
                 TextOf(*rom, "name"),
                 {NumberOf(*rom, "size"), SumOf(*rom, "crc"), SumOf(*rom, "md5"), SumOf(*rom, "sha1")}});
        }
    }
}

const SDatEntry* CDatFile::Find(const SSums& sums) const {
    const auto fits = [&sums](const SDatEntry& entry) {
        const SSums& wanted = entry.sums;
        const bool hasSum = !wanted.crc32.empty() || !wanted.md5.empty() || !wanted.sha1.empty();
        return hasSum && wanted.bytes == sums.bytes && Fits(wanted.crc32, sums.crc32) && Fits(wanted.md5, sums.md5) &&
               Fits(wanted.sha1, sums.sha1);
    };
    const auto found = std::find_if(m_entries.begin(), m_entries.end(), fits);
    return found == m_entries.end() ? nullptr : &*found;
}

}  // namespace vantrel
