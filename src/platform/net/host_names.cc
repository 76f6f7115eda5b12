#include "platform/net/host_names.h"

#include "platform/base/create_thread.h"

std::string QD_Host_Names::find(uint32_t address)
{
    QD_Lock hold(mutex_);
    const auto known = names_.find(address);
    if (known != names_.end())
        return known->second;
    if (names_.size() >= MAX_NAMES) {
        names_.clear();
        wanted_.clear();
    }
    names_[address] = "";
    wanted_.push_back(address);
    if (!looking_)
        looking_ = qd_run_detached([this] { look_up_all(); }) == 0; // else the next call tries
    return "";
}

void QD_Host_Names::look_up_all()
{
    for (;;) {
        uint32_t address = 0;
        {
            QD_Lock hold(mutex_);
            if (wanted_.empty()) {
                looking_ = false;
                return;
            }
            address = wanted_.front();
            wanted_.pop_front();
        }
        std::string name = lookup_(address);
        QD_Lock hold(mutex_);
        names_[address] = std::move(name);
    }
}
