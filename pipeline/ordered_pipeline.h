// Work on a file in pieces: threads make the next ones while one is used. The pieces come out in their order, whatever
// the number of threads.
#pragma once

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <future>
#include <mutex>
#include <utility>
#include <vector>

namespace vantrel {

/// Places for pieces that keep so many workers busy: one for the piece in use, and two for each worker, so that it can
/// begin another piece while an earlier one of someone else's is waited for.
constexpr std::size_t PlacesFor(std::uint32_t workers) {
    return 2 * std::size_t{workers} + 1;
}

/// Hands out pieces number 0 to count - 1 in their order, to one thread. Making a piece has two steps: reading, for one
/// piece after the other, and the rest, for several pieces at once. Without workers both are done when a piece is
/// asked for; with workers they are done on threads of their own, as far ahead as there are places.
///
/// Neither step may throw. What they work with outlives the object; its end waits for the steps that have begun.
template <typename Piece>
class CPiecesAhead {
public:
    /// Called in the order of the numbers and never twice at a time, but on changing threads.
    using Reader = std::function<void(Piece& piece, std::uint64_t number)>;
    /// Called for several pieces at a time, but never twice at a time for the same worker. Workers count from 0; where
    /// there is no thread, worker 0 is the one who asks.
    using Maker = std::function<void(Piece& piece, std::uint64_t number, std::uint32_t worker)>;

    /// `places` holds at least one piece; their memory is taken before any work begins, and used again and again.
    CPiecesAhead(std::uint64_t count, std::uint32_t workers, std::vector<Piece> places, Reader read, Maker make)
        : m_count(count),
          m_places(std::move(places)),
          m_madeUpTo(m_places.size()),
          m_read(std::move(read)),
          m_make(std::move(make)) {
        StartThreads(count > 1 ? static_cast<std::uint32_t>(std::min<std::uint64_t>(workers, count)) : 0);
    }
    CPiecesAhead(const CPiecesAhead&) = delete;
    CPiecesAhead& operator=(const CPiecesAhead&) = delete;
    ~CPiecesAhead() {
        {
            const std::lock_guard lock(m_mutex);
            m_stopped = true;
        }
        m_placeFreed.notify_all();
        for (const std::future<void>& thread : m_threads) {
            thread.wait();
        }
    }

    /// The next piece, valid until the next call; null when there is none left.
    const Piece* Next() {
        if (m_taken == m_count) {
            return nullptr;
        }
        const std::uint64_t number = m_taken;
        if (m_threads.empty()) {
            ++m_taken;
            m_read(m_places[PlaceOf(number)], number);
            m_make(m_places[PlaceOf(number)], number, 0);
        } else {
            std::unique_lock lock(m_mutex);
            ++m_taken;
            m_placeFreed.notify_one();
            m_pieceMade.wait(lock, [this, number] { return m_madeUpTo[PlaceOf(number)] > number; });
        }
        return &m_places[PlaceOf(number)];
    }

    /// How many threads make pieces beside the one that uses them.
    std::size_t ThreadCount() const { return m_threads.size(); }

private:
    void StartThreads(std::uint32_t wanted) {
        m_threads.reserve(wanted);
        for (std::uint32_t worker = 0; worker < wanted; ++worker) {
            // Where no thread can be had, the work would be deferred: those that there are do it then.
            auto thread = std::async(std::launch::async | std::launch::deferred, [this, worker] { Work(worker); });
            if (thread.wait_for(std::chrono::seconds(0)) == std::future_status::deferred) {
                return;
            }
            m_threads.push_back(std::move(thread));
        }
    }

    void Work(std::uint32_t worker) {
        while (true) {
            std::unique_lock turn(m_reading);
            std::uint64_t number = 0;
            if (!Claim(number)) {
                return;
            }
            m_read(m_places[PlaceOf(number)], number);
            turn.unlock();
            m_make(m_places[PlaceOf(number)], number, worker);
            {
                const std::lock_guard lock(m_mutex);
                m_madeUpTo[PlaceOf(number)] = number + 1;
            }
            m_pieceMade.notify_one();
        }
    }

    /// Waits until the next piece has a place; false when there is nothing left to do. Only whose turn it is to read
    /// calls this.
    bool Claim(std::uint64_t& number) {
        std::unique_lock lock(m_mutex);
        m_placeFreed.wait(lock, [this] { return m_stopped || m_claimed == m_count || HasPlace(m_claimed); });
        if (m_stopped || m_claimed == m_count) {
            return false;
        }
        number = m_claimed++;
        return true;
    }

    /// The piece taken last is still in use; all before it are free.
    bool HasPlace(std::uint64_t number) const { return number < m_taken + m_places.size() - 1; }

    std::size_t PlaceOf(std::uint64_t number) const { return static_cast<std::size_t>(number % m_places.size()); }

    const std::uint64_t m_count;
    std::vector<Piece> m_places;
    std::vector<std::uint64_t> m_madeUpTo;  ///< For each place the number behind the last piece that was made in it.
    Reader m_read;
    Maker m_make;
    std::mutex m_reading;  ///< Held while a piece is claimed and read, so that this happens in order.
    std::mutex m_mutex;    ///< Held while the members below and m_madeUpTo are used, where there are threads.
    std::condition_variable m_placeFreed;
    std::condition_variable m_pieceMade;
    std::uint64_t m_taken = 0;    ///< Pieces asked for so far; changed by the thread that asks only.
    std::uint64_t m_claimed = 0;  ///< Pieces begun so far.
    bool m_stopped = false;
    std::vector<std::future<void>> m_threads;
};

}  // namespace vantrel
