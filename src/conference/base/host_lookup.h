// Whether a host's name can be looked up, asked without waiting: a dead name
// server takes ten seconds to be noticed.
#pragma once

#include "platform/base/wake.h"

#include <atomic>
#include <memory>
#include <string>

/// One question at a time. One thread asks; another one, which may outlive this
/// object, waits for the answer.
class QD_Host_Lookup {
public:
    enum Answer { PENDING, KNOWN, UNKNOWN };

    /// Begins to look up a name. Addresses are known at once.
    void start(const std::string& host);

    Answer answer() const { return question_ ? question_->answer.load() : KNOWN; }

    /// For polling: readable once the answer is there.
    int get() const { return question_ ? question_->wake.get() : -1; }

private:
    struct Question {
        std::atomic<Answer> answer {PENDING};
        QD_Wake wake;
    };
    std::shared_ptr<Question> question_;
};
