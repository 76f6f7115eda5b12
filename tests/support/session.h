// A session of the test's own, which is at test address 1 and has a home that goes with it.
#pragma once

#include "signalling/session_control.h"
#include "tests/support/fake_views.h"
#include "tests/support/loopback.h"
#include "tests/support/temp_dir.h"

#include <gtest/gtest.h>

class QD_Session_Test : public testing::Test {
protected:
    QD_Session_Test()
    {
        qd_use_test_address();
        setenv("HOME", home_.path().c_str(), 1);
        session_ = QD_Session_Control::instance();
        session_->setGUI(nullptr, &form_);
        session_->set_display_factory(&displays_);
    }
    ~QD_Session_Test() override
    {
        session_->reset(); // its members have windows of ours
        QD_Session_Control::destroy();
    }

    /// As the framework announces a member; at the test address of that number.
    void join(int id, int host, const char* name = "m")
    {
        EXPECT_EQ(session_->new_member(new QD_Member(nullptr, id, name, qd_test_host(host))), 0);
    }

    /// The display string of a member there.
    static std::string text(const std::string& name, int host)
    {
        return name + "@" + qd_test_address(host);
    }

    /// Hands an application a packet of a member's.
    static int receive(auto& app, int id, unsigned type, std::string payload, unsigned version = 2)
    {
        rtp_fix_header header {version, 0, 0, 0, 0, type, 0, 0, static_cast<uint32_t>(id)};
        return app.process_message(&header, payload.data(), static_cast<int>(payload.size()));
    }

    /// Lets the member windows catch up; returns what became of them.
    std::vector<std::string> serve()
    {
        displays_.log.clear();
        for (int i = 0; i < 4; ++i)
            session_->handle_member_events();
        return displays_.log;
    }

    QD_Temp_Dir home_;
    QD_Fake_Main_View form_;
    QD_Fake_Displays displays_;
    QD_Session_Control* session_;
};
