// Who is let in by a broker that is guarded, and who is not.
#include "tests/conference/seat.h"
#include "tests/support/broker.h"

#include <gmock/gmock.h>
#include <regex>

using namespace std::chrono_literals;
using testing::HasSubstr;
using testing::Not;

namespace {

/// The broker that is shipped as an example, with its users and conferences.
class Guarded_Broker : public testing::Test {
protected:
    Guarded_Broker()
    {
        const char* const script = R"(
            cd "$1"
            for who in broker other; do
                openssl req -x509 -newkey ec -pkeyopt ec_paramgen_curve:P-256 -nodes -days 2 \
                    -subj /CN=$who -addext subjectAltName=IP:127.0.0.1 -keyout $who.key -out $who.crt
            done 2> log
            touch passwords
            for user in anna bernt chiara; do mosquitto_passwd -b passwords $user pw-$user; done
            cp "$2/acl.example" acl
            sed "s,/etc/mosquitto/quendal,$1,; /^listener/d" "$2/mosquitto.conf.example" > conf)";
        EXPECT_EQ(
            qd_run({"sh", "-ec", script, "sh", dir_.path(), QD_SOURCE_DIR "/packaging/broker"}), 0);
        broker_.emplace(qd_read_file(dir_ / "conf"));
    }

    std::string url(const std::string& user, const std::string& path = "standup") const
    {
        return "mqtts://" + user + ":pw-" + user + "@" + broker_->place() + "/" + path;
    }

    /// A record that another program publishes as `user`. Returns what the broker answers.
    std::string publish(
        const std::string& user, const std::string& topic, const std::string& record) const
    {
        return qd_output("mosquitto_pub -V 5 -q 1 -r --cafile " + (dir_ / "broker.crt") + " -L "
            + url(user, "quendal/1/standup/m/" + topic) + " -m '" + record + "' 2>&1");
    }

    const QD_Temp_Dir dir_;
    std::optional<QD_Test_Broker> broker_;
};

TEST_F(Guarded_Broker, SaysInOneLineWhyItCannotBeUsed)
{
    const QD_Test_Broker plain;
    const struct {
        std::string url;
        const char* authority;
        const char* why;
    } cases[] = {
        {"mqtts://anna:wrong@" + broker_->place(), "broker.crt",
            "it does not accept the user or the password"},
        {url("anna"), "other.crt", "its certificate is not one that is trusted here"},
        {url("anna"), "missing", "missing cannot be read"},
        {url("chiara"), "broker.crt", "it does not let chiara into the conference standup"},
        {"mqtt://" + broker_->place(), "", "perhaps it wants TLS"},
        {"mqtts://" + plain.place(), "broker.crt", "it does not speak TLS there"},
        {"mqtt://127.0.0.1:" + std::to_string(qd_free_port()), "", "refused"},
        {"mqtt://no.such.host.invalid", "", "there is no host of this name"},
    };
    for (const auto& c : cases) {
        Member member("anna", 40, c.url, dir_ / c.authority);
        EXPECT_EQ(member.process().wait(20s), 1);
        EXPECT_THAT(member.said(),
            testing::MatchesRegex("anna cannot be in the conference: the broker [^ \n]+ cannot be "
                                  "used: [^\n]*"
                + std::string(c.why) + "[^\n]*\n"));
    }
}

TEST_F(Guarded_Broker, WhatOthersForgeDisturbsNobody)
{
    Member anna("anna", 41, url("anna"), dir_ / "broker.crt");
    Member bernt("bernt", 42, url("bernt"), dir_ / "broker.crt");
    ASSERT_TRUE(anna.says(bernt.label + " has joined\n")) << anna.said();
    const std::string said = anna.said();
    const std::string stolen = "live 70000 " + qd_test_address(41) + " 1 mallory";
    EXPECT_THAT(publish("bernt", "anna/1", stolen), HasSubstr("Not authorized"));
    EXPECT_THAT(publish("chiara", "chiara/1", stolen), HasSubstr("Not authorized"));
    publish("bernt", "bernt/1", std::string(100000, 'x')); // which the broker keeps back
    publish("bernt", "bernt/2", std::string(3000, 'x'));
    publish("bernt", "bernt/3", stolen);
    const std::string mallory = "mallory@" + qd_test_address(41) + " of bernt/3 is not announced: ";
    EXPECT_TRUE(anna.says(mallory)) << anna.said();
    EXPECT_THAT(anna.said(),
        testing::MatchesRegex(
            said + "bernt/2 publishes a record that is refused: [^\n]*\n" + mallory + "[^\n]*\n"));
}

TEST(Host, OthersJoinByTheLineItPrintsAndNobodyElse)
{
    const std::string address = qd_test_address(43);
    Seat host("host", {"daily", "--name", "anna"}, {{"QD_LOCAL_ADDRESS", address}});
    ASSERT_TRUE(host.says("anna@" + address + " has joined\n")) << host.said();
    std::smatch line;
    const std::string said = host.said();
    ASSERT_TRUE(std::regex_search(said, line, std::regex("(mqtt.psk://guest:)(.*)(@.*/daily)")));

    Member guest("bo", 44, line.str());
    EXPECT_TRUE(host.says(guest.label + " has joined\n")) << guest.said();
    EXPECT_TRUE(guest.says("anna@" + address + " has joined\n"));
    const std::string seen
        = qd_read_file("/proc/" + std::to_string(guest.process().pid()) + "/cmdline");
    EXPECT_THAT(seen, testing::AllOf(HasSubstr(line.str(1) + "***"), Not(HasSubstr(line.str(2)))));

    std::string wrong = line.str(2);
    wrong[0] = wrong[0] == '0' ? '1' : '0';
    ::setenv("QD_BROKER_PASSWORD", wrong.c_str(), 1);
    Member stranger("eve", 45, line.str(1) + line.str(3));
    ::unsetenv("QD_BROKER_PASSWORD");
    EXPECT_EQ(stranger.process().wait(10s), 1);
    EXPECT_THAT(stranger.said(), HasSubstr("cannot be used: "));
    EXPECT_EQ(guest.end(), 0);
    EXPECT_EQ(host.process().end(SIGTERM), 0);
}

TEST_F(Guarded_Broker, AKeyIsTakenFromWhoHasItAndNobodyElse)
{
    const std::string keys = dir_ / "keys";
    const std::string key(64, 'a');
    const std::string certificate
        = "certfile " + (dir_ / "other.crt") + "\nkeyfile " + (dir_ / "other.key") + "\n";
    const std::string by_key = "psk_hint x\nuse_identity_as_username true\npsk_file " + keys + "\n";
    const struct {
        std::string settings, key;
        const char* why; // "" if it is let in
    } cases[] = {
        {by_key, key, ""},
        {by_key + "tls_version tlsv1.2\n", key, ""},
        {by_key, std::string(64, 'b'), "it does not have the key"},
        {by_key + "tls_version tlsv1.2\n", std::string(64, 'b'), "it does not have the key"},
        {"allow_anonymous true\n" + certificate, key, "it does not have the key"},
        {"allow_anonymous true\ntls_version tlsv1.2\n" + certificate, key,
            "it does not have the key"},
        {"allow_anonymous true\n", key, "[^\n]*it does not speak TLS there"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.settings);
        qd_write_file(keys, "guest:" + c.key + "\n");
        const QD_Test_Broker broker(c.settings);
        Member member("anna", 46, "mqtt+psk://guest:" + key + "@" + broker.place());
        if (*c.why == '\0') {
            EXPECT_TRUE(member.says(member.label + " has joined\n")) << member.said();
            EXPECT_EQ(member.end(), 0);
            continue;
        }
        EXPECT_EQ(member.process().wait(20s), 1);
        EXPECT_THAT(member.said(),
            testing::MatchesRegex("anna cannot be in the conference: the broker [^ \n]+ cannot be "
                                  "used: "
                + std::string(c.why) + "[^\n]*\n"));
    }
}

}
