// What cannot be destroyed any more.
#pragma once

#include "platform/net/mutex.h"

#include <memory>
#include <vector>

/// Gives an object up for the rest of the process: a thread that does not end
/// still uses it, or it is to be there until the very end. Any thread.
template <class T> void qd_leave_behind(std::unique_ptr<T> object)
{
    struct Kept {
        QD_Mutex mutex;
        std::vector<T*> objects QD_GUARDED_BY(mutex);
    };
    static auto* kept = new Kept; // neither destroyed nor lost sight of
    QD_Lock hold(kept->mutex);
    kept->objects.push_back(object.release());
}
