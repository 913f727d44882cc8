#include "compress/compression_request.h"

#include "files/path.h"

namespace vantrel {

namespace {

constexpr const char* kImageExtension = ".iso";
constexpr const char* kDaxExtension = ".dax";

}  // namespace

SCompressionRequest WindowCompression(const std::string& folder, const std::string& fileName,
                                      const std::string& extension) {
    const std::string base = BaseNameOf(fileName);
    SCompressionRequest request;
    request.chosenPath = folder + fileName;
    request.imagePath = ResolveFileCase(folder + base + kImageExtension);
    request.outputPath = folder + base + extension;
    request.shownName = base + kImageExtension;
    return request;
}

SCompressionRequest WindowExpansion(const std::string& folder, const std::string& fileName) {
    const std::string base = BaseNameOf(fileName);
    SCompressionRequest request;
    request.chosenPath = folder + fileName;
    request.imagePath = request.chosenPath;
    request.outputPath = folder + "new-" + base + kImageExtension;
    request.shownName = base + kImageExtension;
    return request;
}

SCompressionRequest WindowDaxExpansion(const std::string& folder, const std::string& fileName) {
    SCompressionRequest request = WindowExpansion(folder, fileName);
    request.imagePath = ResolveFileCase(folder + BaseNameOf(fileName) + kDaxExtension);
    return request;
}

SCompressionRequest DirectConversion(const std::string& input, const std::string& output, EOutputManner manner,
                                     std::uint32_t workers, std::optional<int> level) {
    SCompressionRequest request;
    request.chosenPath = input;
    request.imagePath = input;
    request.outputPath = output;
    request.shownName = FileNameOf(input);
    request.manner = manner;
    request.strict = true;
    request.workers = workers;
    request.level = level;
    return request;
}

}  // namespace vantrel
