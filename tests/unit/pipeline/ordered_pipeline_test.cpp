// The ordered pipeline: order of the results, who does the work, how far ahead, and destruction before the end.
#include "pipeline/ordered_pipeline.h"

#include <gtest/gtest.h>

#include <atomic>
#include <optional>
#include <set>
#include <stdexcept>
#include <thread>

namespace vantrel {
namespace {

using namespace std::chrono_literals;

struct SSlot {
    std::uint64_t read = ~std::uint64_t{0};
    std::uint64_t done = ~std::uint64_t{0};
};

using Pipeline = COrderedPipeline<SSlot>;

void ReadItem(SSlot& slot, std::uint64_t item) {
    slot.read = item;
}

void WorkOnItem(SSlot& slot, std::uint64_t item, std::uint32_t /*worker*/) {
    EXPECT_EQ(slot.read, item) << "the reader step comes first";
    slot.done = item;
}

std::vector<SSlot> Slots(std::uint32_t workers) {
    return std::vector<SSlot>(SlotsFor(workers));
}

TEST(OrderedPipeline, ReturnsItemsInOrderForAnyNumberOfWorkersAndSlots) {
    for (const std::uint32_t workers : {0U, 1U, 2U, 3U, 8U}) {
        for (const std::uint64_t count : {0, 1, 2, 3, 17, 1000}) {
            for (const std::size_t slots : {std::size_t{1}, std::size_t{2}, SlotsFor(workers)}) {
                Pipeline pipeline(count, workers, std::vector<SSlot>(slots), ReadItem, WorkOnItem);
                for (std::uint64_t item = 0; item < count; ++item) {
                    const SSlot* slot = pipeline.Next();
                    ASSERT_NE(slot, nullptr);
                    ASSERT_EQ(slot->done, item) << workers << " workers, " << slots << " slots";
                }
                EXPECT_EQ(pipeline.Next(), nullptr);
                EXPECT_EQ(pipeline.Next(), nullptr);
            }
        }
    }
}

TEST(OrderedPipeline, ReadsItemsInOrderOneAtATime) {
    std::uint64_t expected = 0;  // not atomic: ThreadSanitizer reports concurrent readers
    Pipeline pipeline(
        500, 4, Slots(4),
        [&](SSlot& slot, std::uint64_t item) {
            EXPECT_EQ(item, expected);
            ++expected;
            ReadItem(slot, item);
        },
        WorkOnItem);
    while (pipeline.Next() != nullptr) {
    }
    EXPECT_EQ(expected, 500U);
}

TEST(OrderedPipeline, WithoutWorkersTheCallerDoesTheWorkItemByItem) {
    const auto caller = std::this_thread::get_id();
    std::uint64_t started = 0;
    Pipeline pipeline(
        3, 0, Slots(0), [&](SSlot&, std::uint64_t item) { started = item + 1; },
        [&](SSlot&, std::uint64_t, std::uint32_t worker) {
            EXPECT_EQ(std::this_thread::get_id(), caller);
            EXPECT_EQ(worker, 0U);
        });
    EXPECT_EQ(pipeline.ThreadCount(), 0U);
    for (std::uint64_t calls = 0; calls <= 3; ++calls) {
        EXPECT_EQ(started, calls);
        pipeline.Next();
    }
}

TEST(OrderedPipeline, StartsNoMoreThreadsThanItems) {
    EXPECT_EQ(Pipeline(0, 8, Slots(8), ReadItem, WorkOnItem).ThreadCount(), 0U);
    EXPECT_EQ(Pipeline(1, 8, Slots(8), ReadItem, WorkOnItem).ThreadCount(), 0U) << "nothing to share";
    EXPECT_EQ(Pipeline(3, 8, Slots(8), ReadItem, WorkOnItem).ThreadCount(), 3U);
    EXPECT_EQ(Pipeline(9, 8, Slots(8), ReadItem, WorkOnItem).ThreadCount(), 8U);
}

TEST(OrderedPipeline, WorkersRunAtTheSameTimeEachOnOneItem) {
    constexpr std::uint32_t kWorkers = 3;
    std::array<std::atomic<int>, kWorkers> busy = {};
    std::mutex mutex;
    std::condition_variable changed;
    std::set<std::uint32_t> arrived;
    Pipeline pipeline(50, kWorkers, Slots(kWorkers), ReadItem,
                      [&](SSlot& slot, std::uint64_t item, std::uint32_t worker) {
                          EXPECT_EQ(++busy.at(worker), 1);
                          {
                              // Each worker waits in its first item until all workers have one.
                              std::unique_lock lock(mutex);
                              arrived.insert(worker);
                              changed.notify_all();
                              EXPECT_TRUE(changed.wait_for(lock, 20s, [&] { return arrived.size() == kWorkers; }));
                          }
                          WorkOnItem(slot, item, worker);
                          --busy.at(worker);
                      });
    while (pipeline.Next() != nullptr) {
    }
    EXPECT_EQ(arrived.size(), kWorkers);
}

TEST(OrderedPipeline, KeepsTheSlotInUseAndStartsNoMoreItemsThanThereAreSlots) {
    std::atomic<std::uint64_t> started = 0;
    Pipeline pipeline(
        100, 2, std::vector<SSlot>(4),
        [&](SSlot& slot, std::uint64_t item) {
            started = item + 1;
            ReadItem(slot, item);
        },
        WorkOnItem);
    for (std::uint64_t item = 0; item < 10; ++item) {
        const SSlot* slot = pipeline.Next();
        const std::uint64_t limit = item + 4;
        while (started < limit) {
            std::this_thread::yield();
        }
        std::this_thread::sleep_for(2ms);
        EXPECT_EQ(started, limit);
        EXPECT_EQ(slot->done, item);
    }
}

/// Pauses between the check of the predicate and the wait. A change in that pause goes unnoticed unless it needs the
/// mutex, which the waiting thread holds.
class CPausingCondition {
public:
    template <typename Predicate>
    void wait(std::unique_lock<std::mutex>& lock, Predicate isMet) {
        while (!isMet()) {
            std::this_thread::sleep_for(3ms);
            EXPECT_EQ(m_condition.wait_for(lock, 10s), std::cv_status::no_timeout) << "a notification was missed";
        }
    }
    void notify_all() { m_condition.notify_all(); }

private:
    std::condition_variable m_condition;
};

/// With one slot, no later notification makes up for one that was missed.
TEST(OrderedPipeline, MissesNoNotification) {
    for (const bool isReaderSlow : {false, true}) {
        COrderedPipeline<SSlot, CPausingCondition> pipeline(
            20, 1, std::vector<SSlot>(1),
            [isReaderSlow](SSlot& slot, std::uint64_t item) {
                std::this_thread::sleep_for(isReaderSlow ? 1ms : 0ms);
                ReadItem(slot, item);
            },
            WorkOnItem);
        while (!testing::Test::HasFailure() && pipeline.Next() != nullptr) {
            std::this_thread::sleep_for(isReaderSlow ? 0ms : 1ms);
        }
    }
}

TEST(OrderedPipeline, DestructionWaitsForStartedItemsAndStartsNoMore) {
    for (const std::uint64_t taken : {0, 1, 7}) {
        std::atomic<int> working = 0;
        std::atomic<std::uint64_t> started = 0;
        std::optional<Pipeline> pipeline;
        pipeline.emplace(
            1000, 3, Slots(3), [&](SSlot&, std::uint64_t) { ++started; },
            [&](SSlot&, std::uint64_t, std::uint32_t) {
                ++working;
                std::this_thread::sleep_for(1ms);
                --working;
            });
        for (std::uint64_t item = 0; item < taken; ++item) {
            pipeline->Next();
        }
        pipeline.reset();
        EXPECT_EQ(working, 0);
        const std::uint64_t atTheEnd = started;
        EXPECT_LE(atTheEnd, taken + SlotsFor(3));
        std::this_thread::sleep_for(5ms);
        EXPECT_EQ(started, atTheEnd);
    }
}

TEST(OrderedPipeline, AnExceptionOfTheCallerPassesThrough) {
    const auto use = [] {
        Pipeline pipeline(1000, 2, Slots(2), ReadItem, WorkOnItem);
        pipeline.Next();
        throw std::runtime_error("interrupted");
    };
    EXPECT_THROW(use(), std::runtime_error);
}

}  // namespace
}  // namespace vantrel
