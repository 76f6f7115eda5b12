// Who is in the conference, as those who send and play need to know it.
#pragma once

#include <algorithm>
#include <cstdint>
#include <memory>
#include <vector>

/// One state of the membership. It never changes once published: whoever holds
/// it may read it without a lock for as long as they like.
struct QD_Roster {
    struct Entry {
        int id;          // member id
        int internal_id; // number of the joining, never used twice
        uint32_t host;   // network byte order
    };

    int local_id = 0;
    std::vector<Entry> entries; // in ascending member id, the local member included

    /// The member with that id, null if there is none.
    const Entry* find(int id) const
    {
        const auto at = std::lower_bound(entries.begin(), entries.end(), id,
            [](const Entry& entry, int wanted) { return entry.id < wanted; });
        return at == entries.end() || at->id != id ? nullptr : &*at;
    }
    bool has(int id) const { return find(id) != nullptr; }
};

using QD_Roster_Ptr = std::shared_ptr<const QD_Roster>;
