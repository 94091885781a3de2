#include "support/parallel/parallel_range.h"
#include "support/parallel/value_ranges.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <thread>
#include <vector>

using namespace SUPPORT;

namespace {

// The number of workers while it lives.
class WORKERS {
public:
    explicit WORKERS(unsigned number) : before(task::query::number_of_worker_threads())
    {
        task::query::set_number_of_worker_threads(number);
    }
    ~WORKERS() { task::query::set_number_of_worker_threads(before); }

private:
    unsigned before;
};

// Adds up in an order that the parts' boundaries show in the last bits.
struct ROOTS {
    float sum = 0;
    int joins = 0;
    void run(std::uint32_t begin, std::uint32_t end)
    {
        for (std::uint32_t i = begin; i < end; ++i)
            sum += std::sqrt(float(i));
    }
    void join(ROOTS const &other)
    {
        sum += other.sum;
        joins += other.joins + 1;
    }
};

float roots_by_hand(std::uint32_t begin, std::uint32_t end, std::uint32_t chunk)
{
    if (end - begin <= chunk) {
        ROOTS part;
        part.run(begin, end);
        return part.sum;
    }
    std::uint32_t const middle = begin + (end - begin) / 2;
    ROOTS left{roots_by_hand(begin, middle, chunk)};  // the same state goes on in the left half
    return left.sum + roots_by_hand(middle, end, chunk);
}

}  // namespace

// n, grain and workers; then parts and the length of the first.
TEST(ParallelFor, DividesTheRange)
{
    struct {
        std::uint32_t begin, end, grain;
        unsigned workers;
        std::uint32_t parts, length;
    } const cases[] = {
        {5, 5, 1, 4, 0, 0},      {9, 5, 1, 4, 0, 0},
        {0, 10, 64, 4, 1, 10},   {0, 200, 1, 4, 100, 2},
        {7, 208, 1, 4, 101, 2},  {0, 1000, 16, 4, 63, 16},
        {0, 1000, 3, 0, 21, 48}, {0, 19, 0, 0, 19, 1},
        {0, 2000, 1, 1, 40, 50}, {0xfffffff0u, 0xffffffffu, 4, 1, 4, 4},
    };
    for (auto const &c : cases) {
        SCOPED_TRACE(testing::Message() << c.begin << " to " << c.end << " by " << c.grain);
        WORKERS const workers(c.workers);
        std::vector<std::atomic<int>> hits(c.end > c.begin ? c.end - c.begin : 0);
        std::atomic<std::uint32_t> longest = 0, calls = 0;
        auto const body = [&](INDEX_RANGE const &part) {
            EXPECT_LT(part.begin, part.end);
            ++calls;
            for (std::uint32_t before = longest;
                 part.size() > before && !longest.compare_exchange_weak(before, part.size());) {
            }
            for (std::uint32_t i = part.begin; i < part.end; ++i)
                ++hits[i - c.begin];
        };
        EXPECT_EQ(parallel_for({c.begin, c.end, c.grain}, body), c.parts);
        EXPECT_EQ(calls, c.parts);
        EXPECT_EQ(longest, c.length);
        for (auto const &hit : hits)
            EXPECT_EQ(hit, 1);
    }
    std::thread::id where;
    EXPECT_EQ(parallel_for(
                  {0, 1000, 1}, [&](INDEX_RANGE const &) { where = std::this_thread::get_id(); }, true),
              1u);
    EXPECT_EQ(where, std::this_thread::get_id());
}

TEST(ParallelReduce, JoinsInTheSameOrderOnEachRun)
{
    for (unsigned const number : {0u, 1u, 4u}) {
        WORKERS const workers(number);
        for (int run = 0; run < 5; ++run) {
            ROOTS deep;  // a task for every third value
            parallel_reduce(0, 100000, 1, 2, deep);
            EXPECT_EQ(deep.sum, roots_by_hand(0, 100000, 2));
            ROOTS whole;
            parallel_reduce(3, 1000, 1, 997, whole);
            EXPECT_EQ(whole.joins, 0);
            EXPECT_EQ(whole.sum, roots_by_hand(3, 1000, 997));
        }
        ROOTS none;
        parallel_reduce(5, 5, 1, 0, none);
        EXPECT_EQ(none.sum, 0);
    }
}

// Reductions within loops within reductions: every task waits for others.
TEST(ParallelReduce, NestsWithAnyNumberOfWorkers)
{
    struct OUTER {
        std::uint64_t sum = 0;
        void run(std::uint32_t begin, std::uint32_t end)
        {
            std::atomic<std::uint64_t> found = 0;
            parallel_for({begin, end, 1}, [&](INDEX_RANGE const &part) {
                for (std::uint32_t i = part.begin; i < part.end; ++i) {
                    struct INNER {
                        std::uint64_t sum = 0;
                        void run(std::uint32_t b, std::uint32_t e) { sum += e - b; }
                        void join(INNER const &other) { sum += other.sum; }
                    } inner;
                    parallel_reduce(0, 100, 1, 7, inner);
                    found += inner.sum * i;
                }
            });
            sum += found;
        }
        void join(OUTER const &other) { sum += other.sum; }
    };
    for (unsigned const number : {0u, 1u, 4u}) {
        WORKERS const workers(number);
        OUTER outer;
        parallel_reduce(0, 300, 1, 40, outer);
        EXPECT_EQ(outer.sum, 100u * (299 * 300 / 2));
    }
}

TEST(ParallelReduce, SeveralThreadsMayStartAtOnce)
{
    WORKERS const workers(2);
    std::vector<std::thread> threads;
    std::atomic<int> wrong = 0;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back([&] {
            for (int run = 0; run < 50; ++run) {
                ROOTS roots;
                parallel_reduce(0, 1000, 1, 10, roots);
                wrong += roots.sum != roots_by_hand(0, 1000, 10);
            }
        });
    for (std::thread &thread : threads)
        thread.join();
    EXPECT_EQ(wrong, 0);
}

TEST(ValueRanges, SumsAndExtremes)
{
    WORKERS const workers(1);
    std::mt19937 random(1);
    std::uniform_real_distribution<float> any(-100, 100);
    for (std::size_t const size : {0u, 1u, 3u, 17u, 1000u, 12345u}) {
        std::vector<float> values(size);
        double sum = 0;
        VALUE_RANGE expected;
        for (float &value : values) {
            value = any(random);
            sum += double(value);
            expected.least = std::min(expected.least, value);
            expected.greatest = std::max(expected.greatest, value);
        }
        if (size > 2)
            values[size / 2] = std::numeric_limits<float>::quiet_NaN();
        VALUE_RANGE const range = parallel_min_max(values);
        if (size <= 2) {
            EXPECT_EQ(range.least, expected.least);
            EXPECT_EQ(range.greatest, expected.greatest);
            EXPECT_FLOAT_EQ(parallel_sum(values), float(sum));
            continue;
        }
        EXPECT_TRUE(std::isnan(parallel_sum(values)));
        values[size / 2] = 1000;
        EXPECT_EQ(parallel_min_max(values).greatest, 1000);
        values[0] = -1000;
        EXPECT_EQ(parallel_min_max(values).least, -1000);
        EXPECT_GE(range.least, -100);
        EXPECT_LE(range.greatest, 100);
    }
    std::vector<float> ones(100000, 0.25f);
    EXPECT_EQ(parallel_sum(ones), 25000);
}
