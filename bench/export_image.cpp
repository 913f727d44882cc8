// Builds the images for the export benchmark: files of up to three sectors, spread over 1,000 directories.
#include <cstdio>
#include <cstdlib>
#include <string>

#include "tests/support/image_builder.h"

int main(int count, char** words) {
    using namespace vantrel::test;
    if (count != 3) {
        std::fprintf(stderr, "usage: export_image IMAGE FILES_IN_EACH_DIRECTORY\n");
        return 2;
    }
    constexpr int kDirectories = 1000;
    const int filesEach = std::atoi(words[2]);
    SImageDescription description;
    for (int file = 0; file < filesEach; ++file) {
        for (int directory = 0; directory < kDirectories; ++directory) {
            const std::string path = "DIR" + std::to_string(directory % 40) + "/SUB" + std::to_string(directory);
            const auto size = static_cast<std::size_t>((file * 997 + directory * 31) % 6000);
            description.files.push_back({path + "/FILE" + std::to_string(file) + ".BIN", Bytes(size, 1)});
        }
    }
    WriteWhole(words[1], BuildImage(description).bytes);
    return 0;
}
