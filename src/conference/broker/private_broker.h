// A broker of one's own, for as long as this program runs.
#pragma once

#include "conference/base/child.h"
#include "conference/broker/broker_url.h"

/// mosquitto, started with a fresh key that is both the password and the
/// encryption's: who has the URL is in, nobody else is. One thread.
class QD_Private_Broker {
public:
    /// For one conference, whose name is a good one.
    explicit QD_Private_Broker(const std::string& conference) { url_.conference = conference; }

    /// Starts it at `address` (a number), at `port` or, with 0, at 8883 or any
    /// free port, and waits until it answers, at most 5 s. Its files go to
    /// `directory`, which exists. Returns "" or what is wrong, a sentence.
    std::string start(uint32_t address, uint16_t port, const std::string& directory);

    /// What lets others in.
    const QD_Broker_Url& url() const { return url_; }

    /// For polling: readable when the broker has ended.
    int get() const { return child_.get(); }

private:
    std::string write_files(const std::string& directory) const;

    QD_Broker_Url url_;
    QD_Child child_;
};
