#include "tests/support/undated.h"

namespace vantrel::test {

namespace {

/// A layout contains its date, which differs between runs.
std::string WithoutDate(std::string layout) {
    static constexpr std::string_view kKey = "\nDATE=";
    static constexpr std::string_view kDate = "yyyy/MM/dd-hh:mm:ss";
    const std::size_t start = layout.find(kKey);
    return start == std::string::npos ? layout : layout.replace(start + kKey.size(), kDate.size(), kDate);
}

/// A gap file contains the checksum of its layout, which differs with the date.
std::string WithoutLayoutSum(std::string gaps) {
    constexpr std::size_t kSum = 32;
    return gaps.size() < kSum + 4 ? gaps : gaps.replace(kSum, 4, "sum.");
}

}  // namespace

std::string Undated(std::string_view path, std::string content) {
    if (path.ends_with(".iml")) {
        return WithoutDate(std::move(content));
    }
    return path.ends_with(".gaps") ? WithoutLayoutSum(std::move(content)) : content;
}

}  // namespace vantrel::test
