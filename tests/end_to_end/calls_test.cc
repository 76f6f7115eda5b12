// People who call one another: real clients, driven through their windows.
#include "tests/support/signal_math.h"
#include "tests/support/video_window.h"
#include "tests/support/wav.h"
#include "tests/support/x_server.h"

#include <gtest/gtest.h>

namespace {

enum { ANNA = 2, BERNT, CHIARA, DMITRI };
enum Answer : bool { BY_HAND = false, AT_ONCE = true };

// One person: a client of a name, a voice and a face of her own, whom nobody has announced.
class Caller {
public:
    Caller(int host, const char* name, Answer answer) :
        host_(host),
        name_(name),
        voice_(qd_noise(static_cast<unsigned>(host)))
    {
        qd_write_wav(dir_.file("voice.wav"), voice_);
        std::string options(280, '\0');
        options[3] = 3; // a local network
        options[7] = answer;
        options.replace(8, name_.size(), name_);
        options[267] = options[271] = 125;
        options[275] = 5;
        QD_Client_Under_Test::Set_Up set_up;
        set_up.mic = "file:" + dir_.file("voice.wav");
        set_up.speaker = "file:" + dir_.path();
        set_up.camera = "testcard:" + std::to_string(hue());
        set_up.options_file = options;
        set_up.toolkit_options = qd_seeing_options(host - ANNA);
        client_.emplace(host, set_up);
    }

    ~Caller() { EXPECT_EQ(client_->end(), 0); }
    Caller(const Caller&) = delete;

    QD_Client_Under_Test& client() { return *client_; }
    std::string address() const { return qd_test_address(host_); }

    // Types whom to call into the dialog.
    void call(const Caller& other)
    {
        click(CALL);
        QD_Person person(*client_);
        ASSERT_TRUE(person.look_at("Call"));
        person.write(other.address());
        person.press("Return");
        EXPECT_TRUE(qd_wait_for([&] { return !person.find("Call"); }));
    }

    static constexpr int ACCEPT = 47; // from the left, in the row of buttons
    static constexpr int REJECT = 122;
    static constexpr int CALL = 205;
    void click(int button)
    {
        QD_Person person(*client_);
        ASSERT_TRUE(person.look_at("Quendal"));
        EXPECT_EQ(person.click(button, 152), 0);
    }

    // How many messages of a type have come from somebody.
    int messages(int type, const Caller& from) const
    {
        return atoi(qd_output("grep -cxF 'QD_Message: received message of type "
            + std::to_string(type) + " from " + from.address() + "' " + client_->file("log"))
                        .c_str());
    }
    bool gets(int type, const Caller& from, int count = 1) const
    {
        return qd_wait_for([&] { return messages(type, from) >= count; }, PATIENCE);
    }

    using Heard = std::vector<std::vector<short>>; // by port
    Heard heard() const
    {
        Heard ports;
        for (std::string file; std::filesystem::exists(
                 file = dir_ / ("port-" + std::to_string(ports.size() + 1) + ".wav"));)
            ports.push_back(qd_read_wav(file));
        return ports;
    }

    // Whether two packets on end of the other's voice came out of the loudspeaker behind `before`.
    bool has_heard(const Caller& other, const Heard& before = {}) const
    {
        constexpr size_t PART = 1600;
        std::vector<short> loop = other.voice_;
        loop.insert(loop.end(), other.voice_.begin(), other.voice_.begin() + PART);
        const Heard ports = heard();
        for (size_t port = 0; port < ports.size(); ++port)
            for (size_t at = port < before.size() ? before[port].size() : 0;
                 at + PART <= ports[port].size(); at += PART)
                if (qd_contains(loop, std::span(ports[port]).subspan(at, PART)))
                    return true;
        return false;
    }
    // From now on.
    bool hears(const Caller& other) const
    {
        return qd_wait_for([&, before = heard()] { return has_heard(other, before); }, PATIENCE);
    }

    bool sees(const Caller& other) const
    {
        return qd_shows(*client_, other.name_ + "@" + other.address(), other.hue());
    }
    bool has_window_of(const Caller& other) const
    {
        return QD_Person(*client_).find(other.name_ + "@");
    }

private:
    static constexpr std::chrono::seconds PATIENCE {20};
    int hue() const { return (host_ - ANNA) * 120; }

    int host_;
    std::string name_;
    std::vector<short> voice_;
    QD_Temp_Dir dir_;
    std::optional<QD_Client_Under_Test> client_;
};

enum { ACCEPTED = 0, REJECTED = 2, NEW_MEMBER = 3, CONNECT = 61, INVITED = 62 };

void expect_call(const Caller& one, const Caller& other)
{
    for (auto [from, to] : {std::pair(&one, &other), {&other, &one}}) {
        EXPECT_TRUE(from->hears(*to));
        EXPECT_TRUE(from->sees(*to));
    }
}

}

TEST(Calls, PeopleCallAcceptAndReject)
{
    const QD_X_Server x_server("1430x1600x24");
    Caller anna(ANNA, "anna", AT_ONCE);
    Caller bernt(BERNT, "bernt", AT_ONCE);
    Caller chiara(CHIARA, "chiara", BY_HAND);
    Caller dmitri(DMITRI, "dmitri", BY_HAND);
    anna.call(bernt);
    expect_call(anna, bernt);
    anna.call(chiara);
    ASSERT_TRUE(chiara.gets(INVITED, anna));
    EXPECT_EQ(anna.messages(ACCEPTED, chiara), 0) << "nobody has answered yet";
    chiara.click(Caller::ACCEPT);
    expect_call(anna, chiara);
    // Every message says that it is from member 0. So the announcement of Chiara renews Bernt's
    // record of Anna, her own stream to him becomes Anna's, and he knows nobody with the number
    // that her packets carry. This is how the exchange goes; whoever wants all to hear all has a
    // framework.
    EXPECT_TRUE(bernt.gets(NEW_MEMBER, anna));
    EXPECT_TRUE(bernt.gets(CONNECT, chiara));
    expect_call(anna, bernt);
    EXPECT_FALSE(bernt.has_heard(chiara));
    EXPECT_FALSE(chiara.has_heard(bernt));
    EXPECT_FALSE(bernt.has_window_of(chiara));

    chiara.call(bernt); // who is busy
    EXPECT_TRUE(chiara.gets(REJECTED, bernt));
    EXPECT_TRUE(bernt.hears(anna)) << "the call goes on";
    EXPECT_EQ(bernt.messages(NEW_MEMBER, anna), 1);

    anna.call(dmitri);
    ASSERT_TRUE(dmitri.gets(INVITED, anna));
    dmitri.click(Caller::REJECT);
    ASSERT_TRUE(anna.gets(REJECTED, dmitri));
    anna.call(dmitri); // may call again, but the buttons are dead
    ASSERT_TRUE(dmitri.gets(INVITED, anna, 2));
    dmitri.click(Caller::ACCEPT);
    dmitri.click(Caller::REJECT);
    dmitri.click(Caller::CALL);
    ASSERT_TRUE(QD_Person(dmitri.client()).look_at("Call")) << "all three presses are handled";
    ASSERT_TRUE(dmitri.client().framework().settle());
    EXPECT_EQ(anna.messages(ACCEPTED, dmitri), 0);
    EXPECT_EQ(anna.messages(REJECTED, dmitri), 1);
}
