// Ordered work on several threads: items are processed in parallel, and one thread receives the results in order.
#pragma once

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <future>
#include <limits>
#include <mutex>
#include <utility>
#include <vector>

namespace vantrel {

/// Slots that keep this many workers busy: one for the result in use, and two for each worker, so that a worker can
/// start its next item while an earlier item of another worker is still in progress.
constexpr std::size_t SlotsFor(std::uint32_t workers) {
    return 2 * std::size_t{workers} + 1;
}

/// Processes items 0 to count - 1 in slots and returns them in order to one thread. An item has two steps: the reader
/// step, for one item at a time, and the worker step, for several items at once. Without workers, Next() runs both
/// steps; with workers, they run on threads of their own, as far ahead as there are slots.
///
/// Neither step may throw. Whatever the steps use must outlive the pipeline; its destructor waits for running steps.
/// Tests replace `Condition` to pause at the points where threads meet.
template <typename Slot, typename Condition = std::condition_variable>
class COrderedPipeline {
public:
    /// Called in the order of the items and never concurrently, but on changing threads.
    using Reader = std::function<void(Slot& slot, std::uint64_t item)>;
    /// Called concurrently for different workers, which count from 0. Without threads, `worker` is 0.
    using Worker = std::function<void(Slot& slot, std::uint64_t item, std::uint32_t worker)>;

    /// `slots` holds at least one slot. Slots are reused for the items in turn.
    COrderedPipeline(std::uint64_t count, std::uint32_t workers, std::vector<Slot> slots, Reader read, Worker work)
        : m_count(count),
          m_slots(std::move(slots)),
          m_doneEnds(m_slots.size()),
          m_read(std::move(read)),
          m_work(std::move(work)),
          m_startLimit(m_slots.size() - 1) {
        StartThreads(count > 1 ? static_cast<std::uint32_t>(std::min<std::uint64_t>(workers, count)) : 0);
    }
    COrderedPipeline(const COrderedPipeline&) = delete;
    COrderedPipeline& operator=(const COrderedPipeline&) = delete;
    ~COrderedPipeline() {
        Set(m_startLimit, kStopped);
        for (const std::future<void>& thread : m_threads) {
            thread.wait();
        }
    }

    /// The slot of the next item, valid until the next call; null after the last item.
    const Slot* Next() {
        if (m_taken == m_count) {
            return nullptr;
        }
        const std::uint64_t item = m_taken++;
        const std::size_t index = SlotOf(item);
        if (m_threads.empty()) {
            m_read(m_slots[index], item);
            m_work(m_slots[index], item, 0);
        } else {
            Set(m_startLimit, item + m_slots.size());  // the slot of the previous item is free now
            WaitUntilAbove(m_doneEnds[index], item);
        }
        return &m_slots[index];
    }

    /// Number of threads besides the one that calls Next().
    std::size_t ThreadCount() const { return m_threads.size(); }

private:
    static constexpr std::uint64_t kStopped = std::numeric_limits<std::uint64_t>::max();

    void Set(std::uint64_t& counter, std::uint64_t value) {
        {
            const std::lock_guard lock(m_mutex);
            counter = value;
        }
        m_changed.notify_all();
    }

    /// Returns the value that ended the wait.
    std::uint64_t WaitUntilAbove(const std::uint64_t& counter, std::uint64_t bound) {
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, [&counter, bound] { return counter > bound; });
        return counter;
    }

    void StartThreads(std::uint32_t wanted) {
        m_threads.reserve(wanted);
        for (std::uint32_t worker = 0; worker < wanted; ++worker) {
            // If no thread can be started, the call is deferred instead; the threads started so far do the work then.
            auto thread = std::async(std::launch::async | std::launch::deferred, [this, worker] { Work(worker); });
            if (thread.wait_for(std::chrono::seconds(0)) == std::future_status::deferred) {
                return;
            }
            m_threads.push_back(std::move(thread));
        }
    }

    void Work(std::uint32_t worker) {
        while (true) {
            std::unique_lock reading(m_reading);
            if (m_started == m_count || WaitUntilAbove(m_startLimit, m_started) == kStopped) {
                return;
            }
            const std::uint64_t item = m_started++;
            const std::size_t index = SlotOf(item);
            m_read(m_slots[index], item);
            reading.unlock();
            m_work(m_slots[index], item, worker);
            Set(m_doneEnds[index], item + 1);
        }
    }

    std::size_t SlotOf(std::uint64_t item) const { return static_cast<std::size_t>(item % m_slots.size()); }

    const std::uint64_t m_count;
    std::vector<Slot> m_slots;
    /// For each slot, one more than the last item completed in it; 0 before. Shared between threads: use Set and
    /// WaitUntilAbove.
    std::vector<std::uint64_t> m_doneEnds;
    Reader m_read;
    Worker m_work;
    std::uint64_t m_taken = 0;   ///< Items that Next() has returned or waits for.
    std::uint64_t m_startLimit;  ///< Items below this number may be started; kStopped ends the threads. Shared, too.
    std::mutex m_mutex;          ///< Held while m_doneEnds or m_startLimit is used.
    Condition m_changed;         ///< The caller of Next() and the worker whose turn it is to read wait for it.
    std::mutex m_reading;        ///< Held while an item is started and read, which keeps the order.
    std::uint64_t m_started = 0;
    std::vector<std::future<void>> m_threads;
};

}  // namespace vantrel
