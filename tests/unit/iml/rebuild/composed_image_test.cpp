// The image that is composed of parts: what lies outside them, files that are too short, and checksums.
#include "iml/rebuild/composed_image.h"

#include <gtest/gtest.h>

#include "tests/support/test_folder.h"

namespace vantrel {
namespace {

using test::Bytes;
using test::CTestFolder;

Bytes ReadAt(CComposedImage& image, std::int64_t position, std::size_t size) {
    Bytes bytes(size, 'x');
    bytes.resize(image.ReadAt(position, bytes));
    return bytes;
}

TEST(ComposedImage, HasZerosWhereNoPartIs) {
    CComposedImage image(12);
    image.AddBytes(4, {1, 2, 3});
    image.AddBytes(5, {9, 9, 9});
    EXPECT_EQ(ReadAt(image, 0, 20), (Bytes{0, 0, 0, 0, 1, 2, 3, 9, 0, 0, 0, 0}));
    EXPECT_EQ(ReadAt(image, 2, 3), (Bytes{0, 0, 1}));
    EXPECT_EQ(ReadAt(image, 6, 4), (Bytes{3, 9, 0, 0}));
}

TEST(ComposedImage, HasNothingOutsideItsLength) {
    CComposedImage image(3);
    image.AddBytes(0, {1, 2, 3, 4});
    EXPECT_EQ(ReadAt(image, -1, 2), Bytes());
    EXPECT_EQ(ReadAt(image, 3, 1), Bytes());
    EXPECT_EQ(ReadAt(image, 2, 2), Bytes{3});
}

TEST(ComposedImage, AFileThatEndsEarlyIsTheFirstProblem) {
    const CTestFolder folder;
    const std::string path = folder / "short";
    const std::string missing = folder / "missing";
    test::WriteWhole(path, {1, 2});
    CComposedImage image(10);
    image.AddFile(0, 4, path);
    image.AddFile(4, 4, missing);
    EXPECT_EQ(ReadAt(image, 0, 10), Bytes());
    EXPECT_EQ(image.Problem(), "Cannot read all of " + path);
    EXPECT_EQ(ReadAt(image, 1, 3), Bytes());
    EXPECT_EQ(image.Problem(), "Cannot read all of " + path);
}

TEST(ComposedImage, SumsCountEveryByteOnce) {
    const CTestFolder folder;
    const std::string path = folder / "file";
    const Bytes content = test::RandomBytes(4, 1);
    test::WriteWhole(path, content);
    CComposedImage image(6);
    const std::size_t file = image.AddFile(2, 4, path);
    image.StartSums();
    ReadAt(image, 0, 4);
    ReadAt(image, 2, 2);
    ReadAt(image, 4, 2);
    SChecksum ofFile;
    ofFile.Add(content);
    EXPECT_EQ(image.FileSum(file), ofFile);
    SChecksum ofImage;
    ofImage.Add(Bytes{0, 0});
    ofImage.Append(ofFile);
    EXPECT_EQ(image.Sum(), ofImage);
}

}  // namespace
}  // namespace vantrel
