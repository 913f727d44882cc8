// Runs a fuzz target on files, without a fuzzer: the corpus with all findings becomes an ordinary test, with any
// compiler.
//
//   fuzz_NAME [--memory MEBIBYTES] FILE|FOLDER...
#include <sys/resource.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

std::vector<std::filesystem::path> FilesOf(const std::vector<std::string>& places) {
    std::vector<std::filesystem::path> files;
    for (const std::string& place : places) {
        if (std::filesystem::is_directory(place)) {
            for (const auto& entry : std::filesystem::directory_iterator(place)) {
                files.push_back(entry.path());
            }
        } else {
            files.emplace_back(place);
        }
    }
    std::sort(files.begin(), files.end());
    return files;
}

/// Limits the address space of the process, which must be enough whatever a header claims.
bool LimitMemory(rlim_t mebibytes) {
    const rlimit limit = {mebibytes << 20U, mebibytes << 20U};
    return setrlimit(RLIMIT_AS, &limit) == 0;
}

}  // namespace

int main(int argc, char* argv[]) {
    std::vector<std::string> places(argv + 1, argv + argc);
    if (places.size() > 1 && places[0] == "--memory") {
        if (!LimitMemory(std::strtoul(places[1].c_str(), nullptr, 10))) {
            std::perror("setrlimit");
            return EXIT_FAILURE;
        }
        places.erase(places.begin(), places.begin() + 2);
    }
    const std::vector<std::filesystem::path> files = FilesOf(places);
    for (const std::filesystem::path& path : files) {
        std::ifstream file(path, std::ios::binary);
        if (!file) {
            std::fprintf(stderr, "%s cannot be opened\n", path.c_str());
            return EXIT_FAILURE;
        }
        // The last line before a crash names the input.
        std::fprintf(stderr, "%s\n", path.c_str());
        const std::vector<char> bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
        LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
    }
    std::printf("%zu inputs\n", files.size());
    return files.empty() ? EXIT_FAILURE : EXIT_SUCCESS;
}
