// Titles and disc numbers.
#include "image/inspect/title.h"

#include <gtest/gtest.h>

#include <vector>

namespace vantrel {
namespace {

using Bytes = std::vector<std::uint8_t>;

TEST(Title, DiscIdOfSystemCnf) {
    EXPECT_EQ(DiscIdOfSystemCnf("BOOT2 = cdrom0:\\SLUS_200.62;1\r\nVER = 1.00\r\nVMODE = NTSC\r\n"), "SLUS-20062");
    EXPECT_EQ(DiscIdOfSystemCnf("VER = 1.00\nboot2=cdrom0:\\sces_503.60;1"), "SCES-50360");
    EXPECT_EQ(DiscIdOfSystemCnf("BOOT=cdrom:\\DIR\\SLPS_012.34;1"), "SLPS-01234");
    EXPECT_EQ(DiscIdOfSystemCnf("BOOT2 = cdrom0:\\MAIN.ELF;1"), "") << "no disc number";
    EXPECT_EQ(DiscIdOfSystemCnf("BOOT2 = "), "");
    EXPECT_EQ(DiscIdOfSystemCnf("BOOT2"), "");
    EXPECT_EQ(DiscIdOfSystemCnf("VER = SLUS_200.62"), "");
    EXPECT_EQ(DiscIdOfSystemCnf("BOOT2 = SLUS_200.621"), "") << "six digits";
    EXPECT_EQ(DiscIdOfSystemCnf("BOOT2 = SL1S_200.62"), "") << "a digit among the letters";
    EXPECT_EQ(DiscIdOfSystemCnf("BOOT2 = SL[S_200.62"), "") << "a character behind Z";
    EXPECT_EQ(DiscIdOfSystemCnf("BOOT2 = SLUS_20+.62"), "") << "a character before 0";
    EXPECT_EQ(DiscIdOfSystemCnf("BOOT2 = SLUS_20A.62"), "") << "a letter among the digits";
    EXPECT_EQ(DiscIdOfSystemCnf("BOOT2 = cdrom0:\\SLUS-200.62;1"), "SLUS-20062");
    EXPECT_EQ(DiscIdOfSystemCnf(""), "");
    EXPECT_EQ(DiscIdOfSystemCnf(std::string(1000, '\n')), "");
}

void Append32(Bytes& bytes, std::uint32_t value) {
    for (unsigned shift = 0; shift < 32; shift += 8) {
        bytes.push_back(static_cast<std::uint8_t>(value >> shift));
    }
}

void AppendText(Bytes& bytes, const std::string& text) {
    bytes.insert(bytes.end(), text.begin(), text.end());
    bytes.push_back(0);
}

/// DISC_ID "ULUS10041" and TITLE "A game".
Bytes ParamSfo() {
    Bytes sfo = {0, 'P', 'S', 'F'};
    for (const std::uint32_t value : {0x101U, 52U, 66U, 2U}) {  // version, keys, values, entries
        Append32(sfo, value);
    }
    for (const std::uint32_t value : {0x02040000U, 10U, 16U, 0U, 0x02040008U, 7U, 128U, 16U}) {
        Append32(sfo, value);  // format and key, bytes, room, position of the value
    }
    AppendText(sfo, "DISC_ID");
    AppendText(sfo, "TITLE");
    AppendText(sfo, "ULUS10041");
    sfo.resize(66 + 16);
    AppendText(sfo, "A game");
    return sfo;
}

TEST(Title, ParamSfo) {
    const STitle title = TitleOfParamSfo(ParamSfo());
    EXPECT_EQ(title.name, "A game");
    EXPECT_EQ(title.discId, "ULUS-10041");
}

TEST(Title, AValueOfAParamSfoHasNoMoreThanItsBytes) {
    Bytes sfo = ParamSfo();
    constexpr std::size_t kBytesOfTitle = 20 + 16 + 4;
    sfo[kBytesOfTitle] = 3;
    EXPECT_EQ(TitleOfParamSfo(sfo).name, "A g");
}

TEST(Title, NoBeginningOfAParamSfoIsReadBeyondItsEnd) {
    const Bytes whole = ParamSfo();
    for (std::size_t length = 0; length < whole.size(); ++length) {
        const Bytes cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length));
        EXPECT_LE(TitleOfParamSfo(cut).name.size(), 6U);
    }
}

TEST(Title, NumbersOfAParamSfoThatCannotBeRightAreHarmless) {
    for (std::size_t position = 4; position < 52; ++position) {
        Bytes sfo = ParamSfo();
        sfo[position] = 0xFF;
        TitleOfParamSfo(sfo);
        std::fill_n(sfo.begin() + static_cast<std::ptrdiff_t>(position / 4 * 4), 4, std::uint8_t{0xFF});
        TitleOfParamSfo(sfo);
    }
    EXPECT_EQ(TitleOfParamSfo(Bytes(100, 'x')).name, "");
}

}  // namespace
}  // namespace vantrel
