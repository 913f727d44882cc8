#include "files/byte_source.h"

namespace vantrel {

namespace {

/// Loading reads the bytes themselves, so nothing is left to expand.
class CPlainPiece : public CSourcePiece {
public:
    explicit CPlainPiece(CByteSource& source) : m_source(source) {}

    void Load(std::int64_t position, std::span<std::uint8_t> room) override {
        m_length = m_source.ReadAt(position, room);
        m_problem = m_source.ReadProblem();
    }

    std::size_t Expand(std::span<std::uint8_t> /*room*/) override { return m_length; }
    std::string Problem() const override { return m_problem; }

private:
    CByteSource& m_source;
    std::size_t m_length = 0;
    std::string m_problem;
};

}  // namespace

const std::string& CByteSource::ReadProblem() const {
    static const std::string kNone;
    return kNone;
}

std::unique_ptr<CSourcePiece> CByteSource::NewPiece(std::size_t /*size*/) {
    return std::make_unique<CPlainPiece>(*this);
}

}  // namespace vantrel
