// Rebuilds of layouts and leading structures with random damage. Every rebuild ends, with an image or with a text, and
// a strict one leaves either a complete image or nothing.
#include <random>
#include <stdexcept>

#include "tests/unit/iml/rebuild/rebuild_fixture.h"

namespace vantrel {
namespace {

using test::Bytes;

class CStopped : public std::runtime_error {
public:
    CStopped() : std::runtime_error("stopped") {}
};

/// Stops a rebuild that would write for a long time.
class CShortOperation : public COperation {
public:
    void SetTotal(std::int64_t units) override { EXPECT_GE(units, 0); }
    void SetDone(std::int64_t units) override { EXPECT_GE(units, 0); }
    void Yield() override {
        if (++m_yields > 2000) {
            throw CStopped();
        }
    }

private:
    int m_yields = 0;
};

std::string Damaged(std::string text, std::mt19937& random) {
    static constexpr std::string_view kPieces[] = {"\"", "\n", "\r\n", "0", "99", "-", "#", ":", " ", "\x1a", "D", "|"};
    const std::size_t damages = 1 + random() % 4;
    for (std::size_t i = 0; i < damages && !text.empty(); ++i) {
        const std::size_t place = random() % text.size();
        switch (random() % 5) {
            case 0:
                text[place] = static_cast<char>(random());
                break;
            case 1:
                text.erase(place, 1 + random() % 40);
                break;
            case 2:
                text.insert(place, kPieces[random() % std::size(kPieces)]);
                break;
            case 3:
                text.insert(place, text.substr(random() % text.size(), random() % 3000));
                break;
            default:
                text.resize(text.size() - std::min<std::size_t>(text.size(), random() % 60));
                break;
        }
    }
    return text;
}

class HostileLayout : public RebuildTest {
protected:
    /// Whether the rebuild succeeds.
    bool Succeeds(const SRebuildRequest& request) {
        CShortOperation operation;
        try {
            RebuildImage(request, operation);
        } catch (const std::runtime_error&) {
            return false;
        }
        return true;
    }

    void Run(test::ELayoutMedia media) {
        m_layout.media = media;
        m_layout.volumeLast = 30;
        Add(18, 19, "A", test::RandomBytes(3000, 1));
        Add(21, 21, "BB.BIN", test::RandomBytes(1, 2));
        Add(24, 24, "C", {});
        WriteLayout();
        const std::string text = test::ReadText(m_folder / "game.iml");
        std::mt19937 random(static_cast<unsigned>(media) + 1);
        int succeeded = 0;
        for (int i = 0; i < 400; ++i) {
            test::WriteText(m_folder / "game.iml", Damaged(text, random));
            Bytes leading = m_leading;
            leading.resize(random() % 4 == 0 ? random() % (leading.size() + 1) : leading.size());
            test::WriteWhole(m_folder / "game.ims", leading);
            const bool isDone = Succeeds(Strict());
            EXPECT_EQ(FileKindOf(m_folder / "game.iso") == EFileKind::File, isDone);
            EXPECT_EQ(m_folder.Names().size(), isDone ? 6U : 5U);
            succeeded += isDone ? 1 : 0;
            Succeeds(InPlace());
            for (const char* name : {"game.iso", "game.txt", "game.vlt"}) {
                RemoveFile(m_folder / name);
            }
        }
        EXPECT_GT(succeeded, 0);
        EXPECT_LT(succeeded, 400);
    }
};

TEST_F(HostileLayout, Cd) {
    Run(test::ELayoutMedia::Cd);
}

TEST_F(HostileLayout, Umd) {
    Run(test::ELayoutMedia::Umd);
}

TEST_F(HostileLayout, Dvd) {
    Run(test::ELayoutMedia::Dvd);
}

TEST_F(HostileLayout, NoLayoutAtAll) {
    m_leading = test::LeadingBytes(m_layout);
    test::WriteWhole(m_folder / "game.ims", m_leading);
    for (std::uint64_t seed = 0; seed < 30; ++seed) {
        Bytes noise = test::RandomBytes(20'000, seed);
        noise[27] = "CDU\r"[seed % 4];
        test::WriteWhole(m_folder / "game.iml", noise);
        Succeeds(InPlace());
        RemoveFile(m_folder / "game.iso");
        EXPECT_FALSE(Succeeds(Strict()));
    }
}

}  // namespace
}  // namespace vantrel
