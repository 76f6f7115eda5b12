// A hundred slots (play ports, decoders) for members whose numbers only grow.
#pragma once

#include "signalling/roster.h"

#include <algorithm>
#include <array>

/// Gives each number of joining in use a slot of its own. One thread uses it.
class QD_Slot_Table {
public:
    static constexpr int SIZE = 100;
    /// A slot may be taken from a member that has not used it for so long.
    static constexpr unsigned IDLE_MS = 1000;

    QD_Slot_Table() { owners_.fill(FREE); }

    /// The slot of `internal_id`, taken for it if it has none: a free one, else
    /// the one unused for longest, at least IDLE_MS. -1 if there is none.
    /// `fresh` tells whether it was taken just now, perhaps from another.
    int use(int internal_id, unsigned now_ms, bool* fresh)
    {
        int slot = find(internal_id);
        *fresh = slot < 0;
        if (slot < 0)
            slot = find(FREE);
        if (slot < 0)
            slot = find_idle(now_ms);
        if (slot >= 0) {
            owners_[static_cast<size_t>(slot)] = internal_id;
            used_[static_cast<size_t>(slot)] = now_ms;
        }
        return slot;
    }

    /// Gives back the slots of all who are not in the roster, calling `left(slot)` for each.
    template <class Left> void sweep(const QD_Roster& roster, Left left)
    {
        for (int slot = 0; slot < SIZE; ++slot) {
            int& owner = owners_[static_cast<size_t>(slot)];
            const auto is_owner = [&](const auto& entry) { return entry.internal_id == owner; };
            if (owner == FREE
                || std::any_of(roster.entries.begin(), roster.entries.end(), is_owner))
                continue;
            owner = FREE;
            left(slot);
        }
    }

private:
    static constexpr int FREE = -1;

    int find(int owner) const
    {
        const auto at = std::find(owners_.begin(), owners_.end(), owner);
        return at == owners_.end() ? -1 : static_cast<int>(at - owners_.begin());
    }

    int find_idle(unsigned now_ms) const
    {
        const auto idle_for = [&](size_t slot) { return now_ms - used_[slot]; };
        size_t idlest = 0;
        for (size_t slot = 1; slot < SIZE; ++slot)
            if (idle_for(slot) > idle_for(idlest))
                idlest = slot;
        return idle_for(idlest) >= IDLE_MS ? static_cast<int>(idlest) : -1;
    }

    std::array<int, SIZE> owners_ {};
    std::array<unsigned, SIZE> used_ {};
};
