#include "conference/demo/demo.h"

#include "conference/demo/voice_match.h"
#include "conference/demo/wav_file.h"
#include "tests/support/temp_dir.h"

#include <gmock/gmock.h>

using testing::Contains;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

namespace {

class Demo : public testing::Test {
protected:
    Demo() { line_.count = 2; }

    void prepare() { ASSERT_EQ(qd_prepare_demo(line_, directory_, members_, out_), 0); }

    /// `hearer` recorded what `speaker` says, from `begin` on, for 2 s; a packet was lost, and each
    /// sample may be off by so much.
    void record(const std::string& hearer, const std::string& speaker, size_t begin, int noise = 0)
    {
        QD_Voice voice;
        QD_Voice heard;
        ASSERT_EQ(qd_read_wav(directory_ + "/voices/" + speaker + ".wav", voice), 0);
        for (size_t i = 0; i < 16160; ++i)
            if (i < 8000 || i >= 8160)
                heard.push_back(static_cast<int16_t>(
                    voice[(begin + i) % voice.size()] / 2 + (i % 2 == 0 ? noise : -noise)));
        const std::string port = "/speaker/port-" + speaker + ".wav";
        ASSERT_EQ(qd_write_wav(directory_ + "/" + hearer + port, heard), 0);
    }

    int report() { return qd_report_demo(directory_, members_, true, out_); }

    const QD_Temp_Dir dir_;
    const std::string directory_ = dir_.path();
    QD_Command_Line line_;
    std::vector<QD_Member_Plan> members_;
    std::ostringstream out_;
};

TEST_F(Demo, LiveRecordsNothingAndKeepsWhatTheUserHas)
{
    line_.seconds = 0;
    prepare();
    qd_write_file(directory_ + "/voices/anna.wav", "kept");
    prepare();
    EXPECT_EQ(qd_read_file(directory_ + "/voices/anna.wav"), "kept");
    EXPECT_THAT(members_[0].environment, Not(Contains(StartsWith("QD_SPEAKER="))));
    EXPECT_THAT(members_[1].environment, Contains("QD_SPEAKER=null"));
    EXPECT_EQ(qd_report_demo(directory_, members_, false, out_), 0);
}

TEST_F(Demo, TheTableTellsWhatEachSentAndHeard)
{
    prepare();
    qd_write_file(directory_ + "/anna/log.txt",
        "QD_AudioApp: sent 21 packets\n"
        "QD_Session_Control: audio a, id=7: b, id=2: received 19, lost 1, late 3\n"
        "QD_Session_Control: audio cut, id=2: received 149, lo\n"
        "QD_VideoApp: sent 75 packets\n"
        "QD_Session_Control: video bernt@127.0.0.3, id=2: received 70, lost 4, late 0, shown 69\n");
    record("anna", "bernt", 5000);
    record("bernt", "anna", 31999);
    EXPECT_EQ(report(), 0);
    EXPECT_THAT(out_.str(),
        HasSubstr("\nanna           21  bernt            19     1     3   2.0 s    1.0000\n"
                  "bernt           -  anna              -     -     -   2.0 s    1.0000\n"));
    EXPECT_THAT(
        out_.str(), HasSubstr("\nanna           75  bernt            70     4     0     69\n"));
}

TEST_F(Demo, FailsIfOneVoiceWasNotHeardFaithfully)
{
    prepare();
    record("anna", "bernt", 0);
    record("bernt", "bernt", 0); // its own voice is not the other's
    EXPECT_EQ(report(), -1);
    record("bernt", "anna", 0);
    EXPECT_EQ(report(), 0);

    members_.clear();
    prepare(); // an earlier demo's recordings do not pass for this one's
    record("anna", "bernt", 0);
    EXPECT_EQ(report(), -1);
    record("bernt", "anna", 0, 1000);
    EXPECT_EQ(report(), -1);
}

}
