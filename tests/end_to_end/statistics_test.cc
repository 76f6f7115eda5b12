// The statistics window of a live conference against a capture of the same packets.
#include "tests/support/program.h"

#include "tests/support/client_under_test.h"
#include "tests/support/relay.h"
#include "tests/support/udp_peer.h"

#include <Xm/List.h>
#include <Xm/TextF.h>
#include <algorithm>
#include <cmath>

namespace {

constexpr int ME = 1;
constexpr int ANNA = 2;
constexpr int BERNT = 3;  // the test itself, with packets as it likes
constexpr int RELAY = 20; // where Anna believes me to be
constexpr int AUDIO_PORT = 12567;
constexpr int VIDEO_PORT = 34999;

using Clock = std::chrono::steady_clock;
using Log = std::vector<QD_Passing>;

double ms(Clock::duration time) { return std::chrono::duration<double, std::milli>(time).count(); }

// What the machine may take from the capture to the receiving thread, and back.
constexpr double SLACK_MS = 100;

struct Range {
    double low, high;
    bool holds(double figure, double rounding) const
    {
        return figure >= low - rounding && figure <= high + rounding;
    }
};

// The figures as the capture has them, counted afresh from what is known of
// each: the first packet counts nowhere, the second is counted and measures nothing.
struct Expected {
    int received = 0;
    int lost = 0;
    Range late {0, 0};
    double latency = 0;
    Range kbps {0, 0}; // whenever between the two moments they were read
    Range fps {0, 0};

    Expected(const Log& log, Clock::time_point from, Clock::time_point until)
    {
        if (log.size() < 2)
            return;
        received = static_cast<int>(log.size()) - 1;
        unsigned highest = log[1].seq;
        Range bytes {0, 0};
        Range frames {0, 0};
        // Of more than a hundred the newest hundred.
        const size_t ring = std::max<size_t>(2, log.size() < 100 ? 0 : log.size() - 100);
        for (size_t i = 2; i < log.size(); ++i) {
            lost += log[i].seq < highest;
            highest = std::max(highest, log[i].seq);
            const double gap = ms(log[i].when - log[i - 1].when);
            late.low += gap > 300 + SLACK_MS && gap < 1000 - SLACK_MS;
            late.high += gap > 300 - SLACK_MS && gap < 1000 + SLACK_MS;
            const bool surely = ms(until - log[i].when) < 5000 - 10; // figures count whole ones
            const bool perhaps = ms(from - log[i].when) < 5000 + SLACK_MS;
            frames.low += i >= ring && surely;
            frames.high += i >= ring && perhaps;
            bytes.low += i >= ring && surely ? log[i].length : 0;
            bytes.high += i >= ring && perhaps ? log[i].length : 0;
        }
        latency = (ms(log.back().when - log[1].when) - 100.0 * (received - 1)) / received;
        kbps = {std::floor(bytes.low * 8 / 5000), std::floor(bytes.high * 8 / 5000)};
        fps = {frames.low / 5, frames.high / 5};
    }
};

class Viewer {
public:
    Viewer()
    {
        program.framework.announce(ME, ME, "me");
        program.framework.announce(ANNA, ANNA, "anna");
        program.framework.announce(BERNT, BERNT, "bernt");
        program.handle_all();
        stat_
            = dynamic_cast<MainForm*>(QD_Session_Ref()->getMainForm())->getStatWnd()->baseWidget();
    }
    ~Viewer()
    {
        delete mainWindow;
        mainWindow = nullptr;
    }

    // The control loop and the windows.
    void run_until(Clock::time_point end)
    {
        while (Clock::now() < end) {
            ctrlWorkProc(&program.termination);
            qd_pump_until([] { return true; });
        }
    }

    // As a click at the list's line does.
    void select(int member)
    {
        from = Clock::now();
        XmListSelectPos(qd_find(stat_, "statUsersList"), member, True);
        until = Clock::now();
    }

    std::string text(const std::string& field) const
    {
        char* text = XmTextFieldGetString(qd_find(stat_, field.c_str()));
        const std::string copy = text;
        XtFree(text);
        return copy;
    }
    double figure(const std::string& field) const { return atof(text(field).c_str()); }

    // Reads the figures again until so many were received: what was captured may be on its way.
    bool receives(int member, const char* field, int count)
    {
        return qd_wait_for([&] {
            run_until(Clock::now());
            select(member);
            return figure(field) >= count;
        });
    }

    QD_Program program;
    Clock::time_point from; // the last selection
    Clock::time_point until;

private:
    Widget stat_;
};

// The fields of one medium; those it does not have are "".
struct Fields {
    const char *received, *lost, *bandwidth, *total, *late, *latency, *fps;
};
constexpr Fields AUDIO {"audioRecText", "audioLostText", "audioBwdText", "audioTotalText",
    "audioLateText", "audioLatencyText", ""};
constexpr Fields VIDEO {
    "videoRecText", "videoLostText", "videoBdwText", "", "", "", "videoFpsText"};

void expect(Viewer& viewer, int member, const Fields& fields, const Log& log)
{
    const int received = Expected(log, {}, {}).received;
    EXPECT_TRUE(viewer.receives(member, fields.received, received));
    const Expected expected(log, viewer.from, viewer.until);
    const auto holds = [&](const char* field, const Range& range, double rounding) {
        EXPECT_TRUE(*field == 0 || range.holds(viewer.figure(field), rounding))
            << field << " " << viewer.text(field) << ", not in " << range.low << ".." << range.high;
    };
    const auto exactly = [](double value) { return Range {value, value}; };
    holds(fields.received, exactly(received), 0);
    holds(fields.lost, exactly(expected.lost), 0);
    holds(fields.total, exactly(received + expected.lost), 0);
    holds(fields.late, expected.late, 0);
    holds(fields.latency, exactly(expected.latency), 2.5); // 2 ms and rounding
    holds(fields.bandwidth, expected.kbps, 0);
    holds(fields.fps, expected.fps, 0.05);
}

// A packet of silence, of Bernt's making.
void send(const QD_Udp_Peer& bernt, unsigned seq, Log& log)
{
    std::string packet("\x80\x0f\0\0\0\0\0\0\0\0\0\x03", 12);
    packet[2] = static_cast<char>(seq >> 8);
    packet[3] = static_cast<char>(seq);
    packet.resize(12 + 1600);
    log.push_back(qd_passing(packet));
    ASSERT_TRUE(bernt.send(packet, qd_test_host(ME)));
}

}

TEST(Statistics, OfThreeMembersAgreeWithACapture)
{
    QD_Relay audio(qd_test_host(RELAY), qd_test_host(ME), AUDIO_PORT, 1);
    QD_Relay video(qd_test_host(RELAY), qd_test_host(ME), VIDEO_PORT, 1);
    QD_Udp_Peer bernt(qd_test_host(BERNT), AUDIO_PORT);
    ASSERT_TRUE(audio.bound() && video.bound() && bernt.bound());
    Viewer viewer;

    QD_Client_Under_Test::Set_Up seeing;
    seeing.mic = "tone:330";
    seeing.toolkit_options = {"-xrm", "*toggle.set: True"};
    QD_Client_Under_Test anna(ANNA, seeing);
    anna.framework().announce(ANNA, ANNA, "anna");
    anna.framework().announce(BERNT, BERNT, "bernt");
    anna.framework().announce(ME, RELAY, "me");

    // Around the wrap, overtaken ones, a late one and a pause; all behind the wrap count as lost.
    struct {
        unsigned seq;
        int after_ms;
    } const packets[] = {{65530, 0}, {65531, 100}, {65533, 100}, {65532, 100}, {65534, 100},
        {65535, 100}, {0, 100}, {1, 650}, {2, 100}, {3, 100}, {4, 1400}, {5, 100}, {65535, 100}};
    Log sent;
    auto next = Clock::now();
    for (const auto& packet : packets) {
        next += std::chrono::milliseconds(packet.after_ms);
        viewer.run_until(next);
        send(bernt, packet.seq, sent);
    }
    // The figures are those of the moment of selection: nothing refreshes them while packets come.
    viewer.select(ANNA);
    const std::string then = viewer.text("audioRecText");
    const size_t passed = audio.log().size();
    EXPECT_TRUE(qd_wait_for([&] {
        viewer.run_until(Clock::now() + std::chrono::milliseconds(50));
        return audio.log().size() > passed + 20;
    }));
    EXPECT_EQ(viewer.text("audioRecText"), then);

    for (QD_Relay* relay : {&audio, &video}) {
        relay->drop(100);
        EXPECT_TRUE(qd_wait_for([&] { return relay->dropped() > 0; })) << "the log is complete";
    }
    expect(viewer, ANNA, AUDIO, audio.log());
    expect(viewer, ANNA, VIDEO, video.log());
    expect(viewer, BERNT, AUDIO, sent);
    EXPECT_EQ(viewer.text("videoRecText"), "0") << "no pictures of his";
    EXPECT_EQ(viewer.figure("audioLostText"), 7);
    EXPECT_EQ(anna.end(), 0);
}
