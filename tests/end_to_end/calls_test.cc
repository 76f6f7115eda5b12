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
    size_t messages(int type, const Caller& from) const
    {
        const std::string line = "QD_Message: received message of type " + std::to_string(type)
            + " from " + from.address() + "\n";
        const std::string log = client_->log();
        size_t count = 0;
        for (size_t at = log.find(line); at != std::string::npos; at = log.find(line, at + 1))
            ++count;
        return count;
    }
    bool gets(int type, const Caller& from, size_t count = 1) const
    {
        return qd_wait_for([&] { return messages(type, from) >= count; }, PATIENCE);
    }

    // Whether two packets on end of the other's voice are, or come, out of the loudspeaker, not
    // counting what has come before `since`.
    bool has_heard(const Caller& other, size_t since = 0) const
    {
        constexpr size_t PART = 1600;
        std::vector<short> loop = other.voice_;
        loop.insert(loop.end(), other.voice_.begin(), other.voice_.begin() + PART);
        for (int port = 1; std::filesystem::exists(port_file(port)); ++port) {
            const std::vector<short> heard = qd_read_wav(port_file(port));
            for (size_t at = since; at + PART <= heard.size(); at += PART)
                if (qd_contains(loop, std::span(heard).subspan(at, PART)))
                    return true;
        }
        return false;
    }
    bool hears(const Caller& other, size_t since = 0) const
    {
        return qd_wait_for([&] { return has_heard(other, since); }, PATIENCE);
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
    std::string port_file(int port) const
    {
        return dir_.file("port-" + std::to_string(port) + ".wav");
    }

    int host_;
    std::string name_;
    std::vector<short> voice_;
    QD_Temp_Dir dir_;
    std::optional<QD_Client_Under_Test> client_;
};

class CallsTest : public testing::Test {
protected:
    QD_X_Server x_server_ {"1430x1600x24"};
};

enum { ACCEPTED = 0, REJECTED = 2, NEW_MEMBER = 3, CONFIRMED = 4, CONNECT = 61, INVITED = 62 };

}

TEST_F(CallsTest, ThreePeopleCallOneAnotherTogether)
{
    Caller anna(ANNA, "anna", AT_ONCE);
    Caller bernt(BERNT, "bernt", AT_ONCE);
    Caller chiara(CHIARA, "chiara", BY_HAND);
    anna.call(bernt);
    EXPECT_TRUE(anna.hears(bernt));
    EXPECT_TRUE(bernt.hears(anna));
    EXPECT_TRUE(anna.sees(bernt));
    EXPECT_TRUE(bernt.sees(anna));

    anna.call(chiara);
    ASSERT_TRUE(chiara.gets(INVITED, anna));
    EXPECT_EQ(anna.messages(ACCEPTED, chiara), 0u) << "nobody has answered yet";
    chiara.click(Caller::ACCEPT);
    EXPECT_TRUE(anna.hears(chiara));
    EXPECT_TRUE(chiara.hears(anna));
    EXPECT_TRUE(anna.sees(chiara));
    EXPECT_TRUE(chiara.sees(anna));
    EXPECT_TRUE(anna.sees(bernt));
    EXPECT_TRUE(bernt.sees(anna));
}

// Every message says that it is from member 0. So the announcement of Chiara renews Bernt's record
// of Anna, her own stream to him becomes Anna's, and he knows nobody with the number that her
// packets carry. This is how the exchange goes; whoever wants all to hear all has a framework.
TEST_F(CallsTest, AMemberCalledLaterIsAStrangerToThoseCalledBefore)
{
    Caller anna(ANNA, "anna", AT_ONCE);
    Caller bernt(BERNT, "bernt", AT_ONCE);
    Caller chiara(CHIARA, "chiara", AT_ONCE);
    anna.call(bernt);
    ASSERT_TRUE(bernt.hears(anna));
    anna.call(chiara);
    EXPECT_TRUE(bernt.gets(NEW_MEMBER, anna));
    EXPECT_TRUE(bernt.gets(CONNECT, chiara));
    ASSERT_TRUE(anna.hears(chiara)) << "who sends to Bernt as well";
    EXPECT_TRUE(bernt.hears(anna, 8000)) << "as before";
    EXPECT_TRUE(anna.hears(bernt, 8000));
    EXPECT_FALSE(bernt.has_heard(chiara));
    EXPECT_FALSE(chiara.has_heard(bernt));
    EXPECT_FALSE(bernt.has_window_of(chiara));
}

TEST_F(CallsTest, RejectionsAreToldAndOneEndsAnsweringForGood)
{
    Caller anna(ANNA, "anna", AT_ONCE);
    Caller bernt(BERNT, "bernt", AT_ONCE);
    Caller chiara(CHIARA, "chiara", BY_HAND);
    anna.call(bernt);
    ASSERT_TRUE(anna.hears(bernt));
    chiara.call(bernt); // who is busy
    EXPECT_TRUE(chiara.gets(REJECTED, bernt));
    EXPECT_TRUE(bernt.hears(anna, 16000)) << "the call goes on";
    EXPECT_EQ(bernt.messages(NEW_MEMBER, anna), 0u);

    Caller dmitri(DMITRI, "dmitri", BY_HAND);
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
    EXPECT_EQ(anna.messages(ACCEPTED, dmitri), 0u);
    EXPECT_EQ(anna.messages(REJECTED, dmitri), 1u);
}
