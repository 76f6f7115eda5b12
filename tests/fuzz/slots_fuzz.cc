#include "media/slot_table.h"
#include "tests/fuzz/fuzz.h"

#include <map>

// What happens among more members than there are slots, a byte each and what belongs to it: one
// uses its slot, time passes, some of them are no longer there.
void qd_fuzz(QD_Fuzz_Input input)
{
    struct Taken {
        int owner;
        unsigned used;
    };
    QD_Slot_Table table;
    std::map<int, Taken> slots; // as we were told
    unsigned now = 0;
    while (!input.empty()) {
        const int what = input.byte();
        if (what < 200) {
            bool fresh = false;
            const int slot = table.use(what, now, &fresh);
            for (const auto& [other, taken] : slots) {
                qd_require(taken.owner != what || other == slot);
                qd_require(slot >= 0 || now - taken.used < QD_Slot_Table::IDLE_MS);
            }
            qd_require(slot >= 0 || slots.size() == QD_Slot_Table::SIZE);
            if (slot < 0)
                continue;
            const auto before = slots.find(slot);
            qd_require(slot < QD_Slot_Table::SIZE
                && fresh == (before == slots.end() || before->second.owner != what));
            slots[slot] = {what, now};
        } else if (what < 250) {
            now += static_cast<unsigned>(what - 199) * 30;
        } else {
            QD_Roster roster;
            const int first = input.byte();
            for (const auto& [slot, taken] : slots)
                if (taken.owner >= first)
                    roster.entries.push_back({0, taken.owner, 0});
            table.sweep(roster, [&](int slot) {
                qd_require(slots.at(slot).owner < first);
                slots.erase(slot);
            });
            qd_require(slots.size() == roster.entries.size());
        }
    }
}
