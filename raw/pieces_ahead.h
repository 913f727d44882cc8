// Work on a file in pieces, where making the next ones goes on while one is used.
#pragma once

#include <array>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <future>
#include <mutex>
#include <utility>

namespace vantrel {

/// Hands out pieces number 0 to count - 1 in their order. With `onSecondThread` another thread makes them, up to two
/// ahead of the one in use; otherwise each is made when it is asked for.
template <typename Piece>
class CPiecesAhead {
public:
    using Maker = std::function<void(Piece& piece, std::uint32_t number)>;

    CPiecesAhead(std::uint32_t count, bool onSecondThread, Maker make) : m_count(count), m_make(std::move(make)) {
        if (onSecondThread && count > 1) {
            // Where no thread can be had, the work is deferred, and then done when a piece is asked for.
            m_worker = std::async(std::launch::async | std::launch::deferred, [this] { MakeAll(); });
            m_hasThread = m_worker.wait_for(std::chrono::seconds(0)) != std::future_status::deferred;
        }
    }
    CPiecesAhead(const CPiecesAhead&) = delete;
    CPiecesAhead& operator=(const CPiecesAhead&) = delete;
    ~CPiecesAhead() {
        if (m_hasThread) {
            Change([this] { m_stopped = true; });
            m_worker.wait();
        }
    }

    /// The next piece, valid until the next call; null when there is none left.
    const Piece* Next() {
        if (m_taken == m_count) {
            return nullptr;
        }
        const std::uint32_t number = m_taken;
        if (m_hasThread) {
            Change([this] { ++m_taken; });
            Wait([this, number] { return m_made > number; });
        } else {
            ++m_taken;
            m_make(PieceOf(number), number);
        }
        return &PieceOf(number);
    }

private:
    static constexpr std::uint32_t kRoom = 3;

    Piece& PieceOf(std::uint32_t number) { return m_pieces[number % kRoom]; }

    void MakeAll() {
        for (std::uint32_t number = 0; number < m_count; ++number) {
            // The piece taken last is still in use; all before it are free.
            bool stopped = false;
            Wait([&] {
                stopped = m_stopped;
                return stopped || number < m_taken + kRoom - 1;
            });
            if (stopped) {
                return;
            }
            m_make(PieceOf(number), number);
            Change([this, number] { m_made = number + 1; });
        }
    }

    template <typename Action>
    void Change(Action action) {
        {
            const std::lock_guard lock(m_mutex);
            action();
        }
        m_changed.notify_one();
    }

    template <typename Condition>
    void Wait(Condition condition) {
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, condition);
    }

    std::uint32_t m_count;
    Maker m_make;
    std::array<Piece, kRoom> m_pieces;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::uint32_t m_taken = 0;  ///< Pieces asked for so far.
    std::uint32_t m_made = 0;   ///< Pieces made so far.
    bool m_stopped = false;
    bool m_hasThread = false;
    std::future<void> m_worker;
};

}  // namespace vantrel
