#include "conference/agent.h"
#include "tests/support/broker.h"
#include "tests/support/crowd.h"
#include "tests/support/promised.h"

#include <gmock/gmock.h>
#include <regex>

using namespace std::chrono_literals;
using testing::Contains;
using testing::HasSubstr;
using testing::StartsWith;

namespace {

/// Three in one conference.
class Agent : public testing::Test {
protected:
    void gather(const QD_Test_Broker& broker)
    {
        for (const char* name : {"anna", "bo", "cleo"})
            crowd_.join("mqtt://" + broker.place() + "/standup", name);
    }

    bool all_know(size_t count) const
    {
        return std::all_of(crowd_.members_.begin(), crowd_.members_.end(),
            [&](const auto& m) { return !m || m->members() == count; });
    }

    const std::vector<std::string>& told(size_t who) { return crowd_.members_[who]->told_; }

    QD_Crowd crowd_;
};

TEST_F(Agent, AllOfThirtyKnowAllWithinThreeSecondsADeathWithinOneAndALeaveAtOnce)
{
    const QD_Test_Broker broker;
    for (int i = 0; i < 30; ++i)
        crowd_.join("mqtt://" + broker.place() + "/standup", "m" + std::to_string(i));
    EXPECT_TRUE(crowd_.run_until([&] { return all_know(30); }, qd_promised(3s)));
    QD_Crowd_Member& leaver = *crowd_.members_[28];
    crowd_.members_[0]->told_.clear();
    crowd_.members_[29].reset(); // its connection breaks, as when a process is killed
    EXPECT_TRUE(crowd_.run_until([&] { return all_know(29); }, qd_promised(1s)));
    leaver.agent_.leave();
    EXPECT_TRUE(
        crowd_.run_until([&] { return crowd_.members_[0]->members() == 28; }, qd_promised(400ms)));
    EXPECT_TRUE(crowd_.run_until([&] { return leaver.agent_.over(); }, qd_promised(1s)));
    EXPECT_THAT(told(0), testing::ElementsAre("-m29@127.32.0.30", "-m28@127.32.0.29"));
}

// Three conferences, each with a broker that goes in another way: orderly, when it
// removes everybody's record first; killed; or stuck for so long that everybody
// connects anew.
TEST_F(Agent, NobodyIsLostByABrokerThatGoesAndReturns)
{
    QD_Test_Broker brokers[3];
    for (const QD_Test_Broker& broker : brokers)
        gather(broker);
    ASSERT_TRUE(crowd_.run_until([&] { return all_know(3); }));
    const auto all_said = [&](const char* text) {
        return std::all_of(crowd_.members_.begin(), crowd_.members_.end(), [&](const auto& m) {
            return !m->said_.empty() && m->said_.back().find(text) != std::string::npos;
        });
    };
    brokers[0].stop(SIGTERM);
    brokers[1].stop(SIGKILL);
    brokers[2].send(SIGSTOP);
    ASSERT_TRUE(crowd_.run_until([&] { return all_said(" is lost: "); }));
    crowd_.run_for(1s);
    EXPECT_TRUE(brokers[0].start() && brokers[1].start());
    brokers[2].send(SIGCONT);
    ASSERT_TRUE(crowd_.run_until([&] { return all_said(" is back"); }));
    crowd_.run_for(11s); // in which whoever is not there is missed
    for (size_t i = 0; i < 9; ++i) {
        EXPECT_THAT(told(i), testing::SizeIs(3)) << i << ": those who came and no more";
        EXPECT_THAT(crowd_.members_[i]->said_, testing::SizeIs(2)) << i;
    }
}

/// The broker that is shipped as an example, with its users and conferences.
class Guarded_Broker : public Agent {
protected:
    Guarded_Broker()
    {
        for (const char* ca : {"ca", "other"})
            run("openssl req -x509 -newkey ec -pkeyopt ec_paramgen_curve:P-256 -nodes -days 2 "
                "-subj /CN="
                + std::string(ca) + " -keyout " + ca + ".key -out " + ca + ".crt");
        run("openssl req -newkey ec -pkeyopt ec_paramgen_curve:P-256 -nodes -subj /CN=127.0.0.1 "
            "-keyout broker.key -out "
            "b.csr");
        qd_write_file(dir_ / "ext", "subjectAltName=IP:127.0.0.1\n");
        run("openssl x509 -req -in b.csr -CA ca.crt -CAkey ca.key -CAcreateserial -days 2"
            " -extfile ext -out broker.crt");
        for (const char* user : {"anna", "bernt", "chiara"})
            run("touch passwords; mosquitto_passwd -b passwords " + std::string(user) + " pw-"
                + user);
        run("cp " QD_SOURCE_DIR "/packaging/broker/acl.example acl");
        std::string settings
            = qd_read_file(QD_SOURCE_DIR "/packaging/broker/mosquitto.conf.example");
        settings = std::regex_replace(settings, std::regex("/etc/mosquitto/quendal"), dir_.path());
        settings = std::regex_replace(settings, std::regex("listener 8883"), "");
        broker_.emplace(settings);
    }

    void run(const std::string& command) const
    {
        const std::string said
            = qd_output("cd " + dir_.path() + " && { " + command + "; } 2>&1 && echo done");
        ASSERT_TRUE(said.ends_with("done\n")) << said;
    }

    QD_Broker_Url url(const std::string& scheme, const std::string& user,
        const std::string& conference = "standup", const std::string& ca = "ca.crt") const
    {
        QD_Broker_Url read;
        QD_Broker_Url::parse(
            scheme + "://" + user + "@" + broker_->place() + "/" + conference, read);
        read.ca_file_ = ca.empty() ? "" : dir_ / ca;
        return read;
    }

    /// A record that another program publishes as `user`. Returns what the broker answers.
    std::string publish(
        const std::string& user, const std::string& topic, const std::string& file) const
    {
        return qd_output("mosquitto_pub -V 5 -q 1 -r --cafile " + (dir_ / "ca.crt") + " -p "
            + broker_->port() + " -h 127.0.0.1 -u " + user + " -P pw-" + user
            + " -t quendal/1/standup/m/" + topic + " -f " + (dir_ / file) + " 2>&1");
    }

    const QD_Temp_Dir dir_;
    std::optional<QD_Test_Broker> broker_;
};

TEST_F(Guarded_Broker, SaysInOneLineWhyItCannotBeUsed)
{
    QD_Broker_Url nowhere = url("mqtts", "anna:pw-anna");
    nowhere.port_ = static_cast<uint16_t>(qd_free_port());
    QD_Broker_Url nameless = url("mqtt", "anna");
    nameless.host_ = "no.such.host.invalid";
    const QD_Test_Broker plain;
    QD_Broker_Url not_tls = nowhere;
    not_tls.port_ = static_cast<uint16_t>(std::stoi(plain.port()));
    const struct {
        QD_Broker_Url url;
        const char* why;
    } cases[] = {
        {url("mqtts", "anna:wrong"), "it does not accept the user or the password"},
        {url("mqtts", "eve:pw-anna"), "it does not accept the user or the password"},
        {url("mqtts", "anna:pw-anna", "standup", "other.crt"),
            "its certificate is not one that is trusted here"},
        {url("mqtts", "anna:pw-anna", "standup", ""),
            "its certificate is not one that is trusted here"},
        {url("mqtts", "anna:pw-anna", "standup", "missing"), "missing cannot be read"},
        {url("mqtt", "anna:pw-anna"), "perhaps it wants TLS"},
        {url("mqtts", "chiara:pw-chiara"), "it does not let chiara into the conference standup"},
        {nowhere, "refused"},
        {not_tls, "it does not speak TLS there"},
        {nameless, "there is no host of this name"},
    };
    for (const auto& c : cases)
        crowd_.join(c.url, "x");
    EXPECT_TRUE(crowd_.run_until([&] {
        return std::all_of(crowd_.members_.begin(), crowd_.members_.end(),
            [](const auto& m) { return m->agent_.over(); });
    }));
    for (size_t i = 0; i < std::size(cases); ++i) {
        const std::string& line = crowd_.members_[i]->failure_;
        EXPECT_THAT(line, StartsWith("the broker " + cases[i].url.place() + " cannot be used: "));
        EXPECT_THAT(line, HasSubstr(cases[i].why));
        EXPECT_THAT(line, testing::Not(HasSubstr("\n")));
    }
}

TEST_F(Guarded_Broker, WhatOthersForgeDisturbsNobody)
{
    QD_Crowd_Member& anna = crowd_.join(url("mqtts", "anna:pw-anna"), "anna");
    QD_Crowd_Member& bernt = crowd_.join(url("mqtts", "bernt:pw-bernt"), "bernt");
    ASSERT_TRUE(crowd_.run_until([&] { return all_know(2); })) << anna.failure_ << bernt.failure_;
    const std::string own = anna.agent_.owner();
    qd_write_file(dir_ / "nothing", "");
    qd_write_file(dir_ / "forged", "left 70000 127.32.0.1 999999 anna");
    qd_write_file(dir_ / "huge", std::string(100000, 'x'));
    qd_write_file(dir_ / "long", std::string(3000, 'x'));
    qd_write_file(dir_ / "stolen", "live 70000 127.32.0.1 1 mallory"); // anna's address
    qd_write_file(dir_ / "routable", "live 70001 10.0.0.5 1 mallory");

    EXPECT_THAT(publish("bernt", own, "nothing"), HasSubstr("Not authorized"));
    EXPECT_THAT(publish("bernt", own, "forged"), HasSubstr("Not authorized"));
    EXPECT_THAT(publish("chiara", "chiara/1", "stolen"), HasSubstr("Not authorized"));
    publish("bernt", "bernt/1", "huge");
    publish("bernt", "bernt/2", "long");
    publish("bernt", "bernt/3", "stolen");
    publish("bernt", "bernt/4", "routable");
    crowd_.run_for(2s);

    EXPECT_THAT(anna.told_, testing::SizeIs(2)) << "only both themselves";
    EXPECT_THAT(bernt.told_, testing::SizeIs(2));
    EXPECT_EQ(anna.said_.size(), 3u);
    EXPECT_THAT(anna.said_, Contains(HasSubstr("bernt/2 publishes a record that is refused")));
    EXPECT_THAT(anna.said_, Contains(HasSubstr("mallory@127.32.0.1 of bernt/3 is not announced")));
    EXPECT_THAT(anna.said_, Contains(HasSubstr("10.0.0.5 cannot be reached from here")));

    // Somebody who comes now is not misled either.
    QD_Crowd_Member& late = crowd_.join(url("mqtts", "anna:pw-anna"), "late");
    EXPECT_TRUE(crowd_.run_until([&] { return late.members() == 3 || !late.failure_.empty(); }));
    EXPECT_EQ(late.failure_, "");
    EXPECT_THAT(late.told_, Contains("+anna@127.32.0.1"));
}

}
