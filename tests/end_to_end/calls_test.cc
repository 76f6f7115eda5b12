// People who call one another: real clients, driven through their windows.
#include "tests/support/heard_tone.h"
#include "tests/support/video_window.h"
#include "tests/support/x_server.h"

#include <gtest/gtest.h>

namespace {

enum Answer : bool { BY_HAND = false, AT_ONCE = true };
enum Message { ACCEPTED = 0, REJECTED = 2, NEW_MEMBER = 3, CONNECT = 61, INVITED = 62 };

// One person: a client of a name, a voice and a face of her own, whom nobody has announced.
class Caller {
public:
    // `number` counts from 0.
    Caller(int number, const char* name, Answer answer) : number_(number), name_(name)
    {
        std::string options(280, '\0');
        options[3] = 3; // a local network
        options[7] = answer;
        options.replace(8, name_.size(), name_);
        options[267] = options[271] = 125;
        options[275] = 5;
        client_.emplace(2 + number,
            QD_Client_Under_Test::Set_Up {.mic = "tone:" + std::to_string(voice()),
                .speaker = "file:" + dir_.path(),
                .camera = "testcard:" + std::to_string(face()),
                .options_file = options,
                .toolkit_options = qd_seeing_options(number)});
    }
    ~Caller() { EXPECT_EQ(client_->end(), 0); }
    Caller(const Caller&) = delete;

    QD_Client_Under_Test& client() { return *client_; }

    // Types whom to call into the dialog.
    void call(const Caller& other)
    {
        click(CALL);
        QD_Person person(*client_);
        ASSERT_TRUE(person.look_at("Call"));
        person.write(other.address());
        person.press("Return");
        EXPECT_TRUE(person.loses("Call"));
    }

    enum Button { ACCEPT = 47, REJECT = 122, CALL = 205 }; // from the left, in the row of buttons
    void click(Button button)
    {
        QD_Person person(*client_);
        ASSERT_TRUE(person.look_at("Quendal"));
        EXPECT_EQ(person.click(button, 152), 0);
    }

    // How many messages of a type have come from somebody.
    int messages(Message type, const Caller& from) const
    {
        return atoi(qd_output("grep -cxF 'QD_Message: received message of type "
            + std::to_string(type) + " from " + from.address() + "' " + client_->file("log"))
                        .c_str());
    }
    bool gets(Message type, const Caller& from, int count = 1) const
    {
        return qd_wait_for([&] { return messages(type, from) >= count; }, std::chrono::seconds(20));
    }

    bool hears(const Caller& other) const { return qd_hears(mix(), other.voice()); }
    bool has_heard(const Caller& other) const
    {
        return qd_amplitude(qd_read_wav(mix()), other.voice()) > 50;
    }
    bool sees(const Caller& other) const
    {
        return qd_shows(*client_, other.name_ + "@" + other.address(), other.face());
    }

private:
    std::string address() const { return qd_test_address(2 + number_); }
    std::string mix() const { return dir_ / "mix.wav"; }
    int face() const { return number_ * 120; }        // hue
    int voice() const { return 440 + 170 * number_; } // Hz

    const int number_;
    const std::string name_;
    const QD_Temp_Dir dir_;
    std::optional<QD_Client_Under_Test> client_;
};

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
    Caller anna(0, "anna", AT_ONCE);
    Caller bernt(1, "bernt", AT_ONCE);
    Caller chiara(2, "chiara", BY_HAND);
    Caller dmitri(3, "dmitri", BY_HAND);
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
    EXPECT_FALSE(bernt.has_heard(chiara) || chiara.has_heard(bernt));

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
    for (auto button : {Caller::ACCEPT, Caller::REJECT, Caller::CALL})
        dmitri.click(button);
    ASSERT_TRUE(QD_Person(dmitri.client()).look_at("Call")) << "all three presses are handled";
    ASSERT_TRUE(dmitri.client().framework().settle());
    EXPECT_EQ(anna.messages(ACCEPTED, dmitri), 0);
    EXPECT_EQ(anna.messages(REJECTED, dmitri), 1);
}
