// Names of hosts, looked up off the threads that ask.
#pragma once

#include "platform/base/mutex.h"

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <string>

/// A cache of host names, filled by one thread that runs only while there is
/// something to look up. Never destroyed while that thread runs: keep it for
/// the life of the process. Any thread.
class QD_Host_Names {
public:
    /// Beyond this many the cache starts anew, and lookups wait in a queue no longer than it.
    static constexpr size_t MAX_NAMES = 1000;

    /// Returns a host's name by its address (network byte order), "" if it has none. May be slow.
    using Lookup = std::function<std::string(uint32_t address)>;

    explicit QD_Host_Names(Lookup lookup) : lookup_(std::move(lookup)) {}

    /// The name if it is known, else "" and a look-up is begun. Never waits for one.
    std::string find(uint32_t address) QD_EXCLUDES(mutex_);

private:
    void look_up_all() QD_EXCLUDES(mutex_);

    const Lookup lookup_;
    QD_Mutex mutex_;
    std::map<uint32_t, std::string> names_ QD_GUARDED_BY(mutex_); // "" while not known
    std::deque<uint32_t> wanted_ QD_GUARDED_BY(mutex_);
    bool looking_ QD_GUARDED_BY(mutex_) = false;
};
