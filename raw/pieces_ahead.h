// Work on a file in pieces, where making the next piece goes on while the current one is used.
#pragma once

#include <cstdint>
#include <functional>
#include <future>
#include <utility>

namespace vantrel {

/// Hands out pieces number 0 to count - 1 in their order. With `onSecondThread` the next one is made on another thread
/// meanwhile, one at a time; otherwise each is made when it is asked for.
template <typename Piece>
class CPiecesAhead {
public:
    using Maker = std::function<void(Piece& piece, std::uint32_t number)>;

    CPiecesAhead(std::uint32_t count, bool onSecondThread, Maker make)
        : m_count(count), m_onSecondThread(onSecondThread), m_make(std::move(make)) {
        Begin();
    }

    /// The next piece, valid until the next call; null when there is none left.
    const Piece* Next() {
        if (!m_making.valid()) {
            return nullptr;
        }
        m_making.get();
        std::swap(m_current, m_next);
        Begin();
        return &m_current;
    }

private:
    void Begin() {
        if (m_begun == m_count) {
            return;
        }
        // Where no thread can be had, the work waits for the result to be asked for.
        const std::launch policy =
            m_onSecondThread ? std::launch::async | std::launch::deferred : std::launch::deferred;
        m_making = std::async(policy, [this, number = m_begun] { m_make(m_next, number); });
        ++m_begun;
    }

    std::uint32_t m_count;
    bool m_onSecondThread;
    Maker m_make;
    std::uint32_t m_begun = 0;
    Piece m_current;
    Piece m_next;
    std::future<void> m_making;  // the last member: its destructor waits, and what it works on must be there
};

}  // namespace vantrel
