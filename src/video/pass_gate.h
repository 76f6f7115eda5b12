// Lets one thread wait until another has finished what it is in the middle of.
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>

/// One thread passes again and again; any other waits for the end of a pass.
class QD_Pass_Gate {
public:
    /// One pass, for the length of a block.
    class Pass {
    public:
        explicit Pass(QD_Pass_Gate& gate) : gate_(gate) { gate_.set(true); }
        ~Pass() { gate_.set(false); }
        Pass(const Pass&) = delete;
        Pass& operator=(const Pass&) = delete;

    private:
        QD_Pass_Gate& gate_;
    };

    /// Waits until no pass is under way, at most for `bound`. Returns whether none is.
    bool wait(std::chrono::milliseconds bound)
    {
        std::unique_lock hold(mutex_);
        return ended_.wait_for(hold, bound, [this] { return !under_way_; });
    }

private:
    void set(bool under_way)
    {
        const std::lock_guard hold(mutex_);
        under_way_ = under_way;
        ended_.notify_all();
    }

    std::mutex mutex_; // a bare one: the condition needs it
    std::condition_variable ended_;
    bool under_way_ = false; // guarded by mutex_
};
