#include "media/slot_table.h"

#include <gtest/gtest.h>
#include <set>

TEST(SlotTable, AHundredMembersHaveSlotsOfTheirOwnAndTheNextWaitsForAnIdleOne)
{
    QD_Slot_Table table;
    bool fresh = false;
    std::set<int> slots;
    for (unsigned id = 1000; id < 1100; ++id)
        slots.insert(table.use(static_cast<int>(id), id, &fresh));
    EXPECT_TRUE(slots.size() == 100 && *slots.begin() == 0 && *slots.rbegin() == 99);
    const int of_1001 = table.use(1001, 1500, &fresh);
    EXPECT_EQ(table.use(5, 1999, &fresh), -1) << "all were used within the last second";
    const int taken = table.use(5, 2000, &fresh);
    EXPECT_TRUE(taken >= 0 && taken != of_1001 && fresh);
    EXPECT_TRUE(table.use(5, 2000, &fresh) == taken && !fresh);
}
