#include "platform/al/sample_queue.h"

#include <gtest/gtest.h>
#include <numeric>

namespace {

std::vector<int16_t> counting(int16_t from, size_t count)
{
    std::vector<int16_t> samples(count);
    std::iota(samples.begin(), samples.end(), from);
    return samples;
}

std::vector<int16_t> take(QD_Sample_Queue& queue, size_t count)
{
    std::vector<int16_t> out(count);
    out.resize(queue.take(out));
    return out;
}

}

TEST(SampleQueue, KeepsTheOrderAroundTheEndOfTheRing)
{
    QD_Sample_Queue queue(7);
    for (int16_t first = 0; first < 250; first = static_cast<int16_t>(first + 5)) {
        EXPECT_EQ(queue.add(counting(first, 3)), 0u);
        EXPECT_EQ(queue.add(counting(static_cast<int16_t>(first + 3), 2)), 0u);
        EXPECT_EQ(take(queue, 4), counting(first, 4));
        EXPECT_EQ(take(queue, 9), counting(static_cast<int16_t>(first + 4), 1));
    }
}

TEST(SampleQueue, OverflowKeepsTheNewest)
{
    QD_Sample_Queue queue(10);
    queue.add(counting(0, 8));
    EXPECT_EQ(queue.add(counting(8, 5)), 3u);
    EXPECT_EQ(take(queue, 10), counting(3, 10));

    queue.add(counting(0, 4));
    EXPECT_EQ(queue.add(counting(4, 25)), 19u) << "more than it holds in one go";
    EXPECT_EQ(take(queue, 10), counting(19, 10));

    queue.add(counting(0, 10));
    queue.keep_newest(11); // it has no more than ten
    queue.keep_newest(2);
    EXPECT_EQ(take(queue, 10), counting(8, 2));
}
