// Pieces that are made ahead: their order, who makes them, how far ahead, and what happens when they are left early.
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

struct SPiece {
    std::uint64_t read = ~std::uint64_t{0};
    std::uint64_t made = ~std::uint64_t{0};
};

using Pieces = CPiecesAhead<SPiece>;

void ReadNumber(SPiece& piece, std::uint64_t number) {
    piece.read = number;
}

void MakeNumber(SPiece& piece, std::uint64_t number, std::uint32_t /*worker*/) {
    EXPECT_EQ(piece.read, number) << "what is made was read before";
    piece.made = number;
}

std::vector<SPiece> Places(std::uint32_t workers) {
    return std::vector<SPiece>(PlacesFor(workers));
}

TEST(PiecesAhead, ComeInOrderWithAnyNumberOfWorkersAndPlaces) {
    for (const std::uint32_t workers : {0U, 1U, 2U, 3U, 8U}) {
        for (const std::uint64_t count : {0, 1, 2, 3, 17, 1000}) {
            for (const std::size_t places : {std::size_t{1}, std::size_t{2}, PlacesFor(workers)}) {
                Pieces pieces(count, workers, std::vector<SPiece>(places), ReadNumber, MakeNumber);
                for (std::uint64_t number = 0; number < count; ++number) {
                    const SPiece* piece = pieces.Next();
                    ASSERT_NE(piece, nullptr);
                    ASSERT_EQ(piece->made, number) << workers << " workers, " << places << " places";
                }
                EXPECT_EQ(pieces.Next(), nullptr);
                EXPECT_EQ(pieces.Next(), nullptr);
            }
        }
    }
}

TEST(PiecesAhead, AreReadInOrderOneAtATime) {
    std::uint64_t expected = 0;  // no lock: a second reader at the same time would be a race
    Pieces pieces(
        500, 4, Places(4),
        [&](SPiece& piece, std::uint64_t number) {
            EXPECT_EQ(number, expected);
            ++expected;
            ReadNumber(piece, number);
        },
        MakeNumber);
    while (pieces.Next() != nullptr) {
    }
    EXPECT_EQ(expected, 500U);
}

TEST(PiecesAhead, WithoutWorkersEachIsMadeByWhoeverAsksWhenItIsAskedFor) {
    const auto caller = std::this_thread::get_id();
    std::uint64_t begun = 0;
    Pieces pieces(
        3, 0, Places(0), [&](SPiece&, std::uint64_t number) { begun = number + 1; },
        [&](SPiece&, std::uint64_t, std::uint32_t worker) {
            EXPECT_EQ(std::this_thread::get_id(), caller);
            EXPECT_EQ(worker, 0U);
        });
    EXPECT_EQ(pieces.ThreadCount(), 0U);
    for (std::uint64_t asked = 0; asked <= 3; ++asked) {
        EXPECT_EQ(begun, asked);
        pieces.Next();
    }
}

TEST(PiecesAhead, ThereAreNeverMoreThreadsThanPieces) {
    EXPECT_EQ(Pieces(0, 8, Places(8), ReadNumber, MakeNumber).ThreadCount(), 0U);
    EXPECT_EQ(Pieces(1, 8, Places(8), ReadNumber, MakeNumber).ThreadCount(), 0U) << "nothing to share";
    EXPECT_EQ(Pieces(3, 8, Places(8), ReadNumber, MakeNumber).ThreadCount(), 3U);
    EXPECT_EQ(Pieces(9, 8, Places(8), ReadNumber, MakeNumber).ThreadCount(), 8U);
}

TEST(PiecesAhead, WorkersMakePiecesAtTheSameTimeEachOneByItself) {
    constexpr std::uint32_t kWorkers = 3;
    std::array<std::atomic<int>, kWorkers> busy = {};
    std::mutex mutex;
    std::condition_variable changed;
    std::set<std::uint32_t> met;
    Pieces pieces(50, kWorkers, Places(kWorkers), ReadNumber,
                  [&](SPiece& piece, std::uint64_t number, std::uint32_t worker) {
                      EXPECT_EQ(++busy.at(worker), 1);
                      {
                          // The first piece of each worker waits for those of all others.
                          std::unique_lock lock(mutex);
                          met.insert(worker);
                          changed.notify_all();
                          EXPECT_TRUE(changed.wait_for(lock, 20s, [&] { return met.size() == kWorkers; }));
                      }
                      MakeNumber(piece, number, worker);
                      --busy.at(worker);
                  });
    while (pieces.Next() != nullptr) {
    }
    EXPECT_EQ(met.size(), kWorkers);
}

TEST(PiecesAhead, APieceInUseIsLeftAloneAndNoMoreAreBegunThanThereArePlaces) {
    std::atomic<std::uint64_t> begun = 0;
    Pieces pieces(
        100, 2, std::vector<SPiece>(4),
        [&](SPiece& piece, std::uint64_t number) {
            begun = number + 1;
            ReadNumber(piece, number);
        },
        MakeNumber);
    for (std::uint64_t number = 0; number < 10; ++number) {
        const SPiece* piece = pieces.Next();
        const std::uint64_t mostBegun = number + 4;
        while (begun < mostBegun) {
            std::this_thread::yield();
        }
        std::this_thread::sleep_for(2ms);
        EXPECT_EQ(begun, mostBegun);
        EXPECT_EQ(piece->made, number);
    }
}

TEST(PiecesAhead, LeavingEarlyWaitsForWhatHasBegunAndBeginsNothingMore) {
    for (const std::uint64_t taken : {0, 1, 7}) {
        std::atomic<int> working = 0;
        std::atomic<std::uint64_t> begun = 0;
        std::optional<Pieces> pieces;
        pieces.emplace(
            1000, 3, Places(3), [&](SPiece&, std::uint64_t) { ++begun; },
            [&](SPiece&, std::uint64_t, std::uint32_t) {
                ++working;
                std::this_thread::sleep_for(1ms);
                --working;
            });
        for (std::uint64_t number = 0; number < taken; ++number) {
            pieces->Next();
        }
        pieces.reset();
        EXPECT_EQ(working, 0);
        const std::uint64_t atTheEnd = begun;
        EXPECT_LE(atTheEnd, taken + PlacesFor(3));
        std::this_thread::sleep_for(5ms);
        EXPECT_EQ(begun, atTheEnd);
    }
}

TEST(PiecesAhead, AnExceptionOfTheUserPassesThrough) {
    const auto use = [] {
        Pieces pieces(1000, 2, Places(2), ReadNumber, MakeNumber);
        pieces.Next();
        throw std::runtime_error("interrupted");
    };
    EXPECT_THROW(use(), std::runtime_error);
}

}  // namespace
}  // namespace vantrel
