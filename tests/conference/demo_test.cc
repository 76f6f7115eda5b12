#include "conference/demo.h"

#include "conference/voice_match.h"
#include "conference/wav_file.h"
#include "tests/support/temp_dir.h"

#include <gmock/gmock.h>

using testing::Contains;
using testing::IsSupersetOf;
using testing::Not;
using testing::StartsWith;

namespace {

class Demo : public testing::Test {
protected:
    Demo()
    {
        ::unsetenv("QD_CAMERA");
        line_.mode_ = QD_Command_Line::DEMO;
        line_.count_ = 2;
    }

    void prepare() { ASSERT_EQ(qd_prepare_demo(line_, directory_, members_, out_), 0); }

    /// `hearer` recorded what `speaker` says, from `begin` on, for 2 s.
    void record(const std::string& hearer, const std::string& speaker, size_t begin)
    {
        QD_Voice voice;
        QD_Voice heard;
        ASSERT_EQ(qd_read_wav(directory_ + "/voices/" + speaker + ".wav", voice), 0);
        for (size_t i = 0; i < 16000; ++i)
            heard.push_back(voice[(begin + i) % voice.size()]);
        const std::string port = "/speaker/port-" + std::to_string(ports_++) + ".wav";
        ASSERT_EQ(qd_write_wav(directory_ + "/" + hearer + port, heard), 0);
    }

    int report() { return qd_report_demo(directory_, members_, true, out_); }

    const QD_Temp_Dir dir_;
    const std::string directory_ = dir_.path();
    int ports_ = 0;
    QD_Command_Line line_;
    std::vector<QD_Member_Plan> members_;
    std::ostringstream out_;
};

TEST_F(Demo, AVoiceThatIsThereStaysAndOnASmallScreenEightHaveTheirPlaces)
{
    line_.count_ = 8;
    line_.screen_width_ = 4800;
    line_.screen_height_ = 800; // two rows, two columns: four find no room
    std::filesystem::create_directories(directory_ + "/voices");
    qd_write_file(directory_ + "/voices/anna.wav", "kept");
    prepare();
    EXPECT_EQ(qd_read_file(directory_ + "/voices/anna.wav"), "kept");
    EXPECT_THAT(members_.at(7).options_, IsSupersetOf({"+2420+420", "*toggle.set: True"}));
}

TEST_F(Demo, LiveRecordsNothingAndLeavesTheFirstLoudspeakerToTheUser)
{
    line_.seconds_ = 0;
    ::setenv("QD_CAMERA", "screen", 1);
    prepare();
    EXPECT_THAT(members_[0].environment_, Not(Contains(StartsWith("QD_SPEAKER="))));
    EXPECT_THAT(members_[1].environment_, Contains("QD_SPEAKER=null"));
    EXPECT_THAT(members_[1].environment_, Not(Contains(StartsWith("QD_CAMERA="))));
    EXPECT_EQ(qd_report_demo(directory_, members_, false, out_), 0);
}

TEST_F(Demo, TheTableTellsWhatEachSentAndHeard)
{
    prepare();
    qd_write_file(directory_ + "/anna/log.txt",
        "Hidding stat window\nQD_AudioApp: sent 21 packets\n"
        "QD_Session_Control: audio a, id=7: b, id=2: received 19, lost 1, late 3\n"
        "QD_Session_Control: audio cut, id=2: received 149, lo\n"
        "QD_VideoApp: sent 75 packets\n"
        "QD_Session_Control: video bernt@127.0.0.3, id=2: received 70, lost 4, late 0, shown 69\n");
    record("anna", "bernt", 5000);
    record("bernt", "anna", 31999);
    EXPECT_EQ(report(), 0);
    EXPECT_EQ(out_.str(), R"(
sound
member       sent  from       received  lost  late   heard  likeness
anna           21  bernt            19     1     3   2.0 s    1.0000
bernt           -  anna              -     -     -   2.0 s    1.0000

pictures
member       sent  from       received  lost  late  shown
anna           75  bernt            70     4     0     69
bernt           -  anna              -     -     -      -
)");
    EXPECT_TRUE(std::filesystem::exists(directory_ + "/heard/anna-hears-bernt.wav"));
}

TEST_F(Demo, FailsIfOneVoiceWasNotHeard)
{
    prepare();
    record("anna", "bernt", 0);
    record("bernt", "bernt", 0); // its own voice is not the other's
    EXPECT_EQ(report(), -1);
    EXPECT_THAT(out_.str(), testing::HasSubstr("nothing"));

    record("bernt", "anna", 0);
    EXPECT_EQ(report(), 0);
    members_.clear();
    prepare();
    EXPECT_EQ(report(), -1) << "an earlier demo's recordings do not pass for this one's";
}

}
