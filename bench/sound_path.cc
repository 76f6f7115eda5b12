// What one frame of sound costs on its way: captured and sent to 99 members,
// and received and played. The real media code in this process, the network
// this machine's own.
#include "audio/audio_app.h"
#include "bench/budgets.h"
#include "bench/percentile.h"
#include "tests/support/loopback.h"
#include "tests/support/temp_dir.h"
#include "tests/support/udp_peer.h"
#include "tests/support/wav.h"

#include <chrono>
#include <deque>
#include <filesystem>
#include <sched.h>
#include <string>
#include <sys/select.h>
#include <thread>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

constexpr int OTHERS = 99;
constexpr int SELF = OTHERS + 1;
constexpr size_t FRAMES = 60; // sent, of each codec
constexpr int ROUNDS = 300;
constexpr int BURST = 50; // datagrams received at once

double milliseconds_since(Clock::time_point start)
{
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

void join_everybody()
{
    QD_Session_Ref session;
    for (int id = 1; id <= SELF; ++id)
        session->new_member(new QD_Member(nullptr, id, "m", qd_test_host(id == SELF ? 1 : id + 1)));
}

/// Keeps this thread, and those that it starts from now on, to one processor if there are two.
void keep_to(unsigned processor)
{
    cpu_set_t one;
    CPU_ZERO(&one);
    CPU_SET(processor, &one);
    ::sched_setaffinity(0, sizeof one, &one);
}

/// The descriptor by which this process reads the file; -1 if it does not.
int find_open(const std::string& path)
{
    for (const auto& fd : std::filesystem::directory_iterator("/proc/self/fd")) {
        std::error_code gone;
        if (std::filesystem::read_symlink(fd, gone) == path)
            return std::stoi(fd.path().filename().string());
    }
    return -1;
}

/// The other members' ends; datagrams are taken out in between, so that no buffer is full.
class Others {
public:
    Others()
    {
        for (int i = 2; i <= SELF; ++i)
            peers_.emplace_back(qd_test_host(i), QD_AudioApp::PORT);
        for (int i = 0; i <= SELF; ++i)
            hosts_.push_back(qd_test_host(i));
    }
    bool last_has_it() const { return !peers_.back().receive(0).empty(); }

    /// Milliseconds for one datagram to each of them with nothing around it.
    double send_bare(const QD_Fd& from) const
    {
        sockaddr_in to {};
        to.sin_family = AF_INET;
        to.sin_port = htons(QD_AudioApp::PORT);
        const std::string datagram(rtp_fix_header::WIRE_SIZE + QD_AudioApp::PCM_SIZE, '\0');
        const auto start = Clock::now();
        for (int i = 2; i <= SELF; ++i) {
            to.sin_addr.s_addr = hosts_[static_cast<size_t>(i)];
            ::sendto(from.get(), datagram.data(), datagram.size(), 0,
                reinterpret_cast<sockaddr*>(&to), sizeof to);
        }
        return milliseconds_since(start);
    }
    void drain() const
    {
        for (const QD_Udp_Peer& peer : peers_)
            while (!peer.receive(0).empty())
                ;
    }

private:
    std::deque<QD_Udp_Peer> peers_;
    std::vector<uint32_t> hosts_;
};

/// Milliseconds from the moment at which the microphone's file has given the
/// last samples of a frame until the last of the others has the datagram.
std::vector<double> send_frames(int mic, const Others& others)
{
    std::vector<double> spent;
    off_t place = lseek(mic, 0, SEEK_CUR);
    Clock::time_point moved;
    others.drain();
    for (size_t skip = 2; spent.size() < FRAMES;) {
        const off_t now = lseek(mic, 0, SEEK_CUR);
        if (now != place)
            moved = Clock::now();
        place = now;
        if (!others.last_has_it())
            continue;
        if (skip > 0) // begun before the options were applied
            --skip;
        else
            spent.push_back(milliseconds_since(moved));
        others.drain();
    }
    return spent;
}

int measure_sending()
{
    const QD_Temp_Dir dir;
    std::vector<short> voice(8000);
    for (size_t i = 0; i < voice.size(); ++i)
        voice[i] = static_cast<short>((i * 7919) % 20000 - 10000);
    qd_write_wav(dir / "voice.wav", voice);
    setenv("QD_MIC", ("file:" + dir / "voice.wav").c_str(), 1);

    const Others others;
    keep_to(0);
    QD_AudioApp app;
    app.init();
    keep_to(1); // this one looks at the file without a pause, which is not to hold up the others
    join_everybody();
    app.play();
    constexpr struct {
        const char* name;
        Connection connection;
    } CODECS[] = {{"PCM", _lan}, {"ADPCM", _isdn}, {"GSM", _modem28}};
    double slowest = 0;
    for (const auto& codec : CODECS) {
        _options options;
        options.connection = codec.connection;
        app.update_options(&options);
        const std::vector<double> spent = send_frames(find_open(dir / "voice.wav"), others);
        printf("%-5s frame complete to the last of %d members: median %.3f ms, 95th percentile"
               " %.3f ms\n",
            codec.name, OTHERS, qd_median(spent), qd_percentile(spent, 0.95));
        slowest = std::max(slowest, qd_median(spent));
    }
    app.close();
    QD_Session_Ref()->reset();
    const QD_Fd sock = qd_open_media_socket();
    std::vector<double> bare;
    for (size_t i = 0; i < FRAMES; ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        bare.push_back(others.send_bare(sock));
        others.drain();
    }
    char beside[60];
    snprintf(beside, sizeof beside, "%d times sendto alone %.3f ms", OTHERS, qd_median(bare));
    return qd_report(QD_FRAME_TO_ALL, slowest, beside);
}

/// PCM datagrams of one member after the other.
class Speakers {
public:
    Speakers() : peer_(qd_test_host(2), QD_AudioApp::PORT) {}

    void burst()
    {
        for (int i = 0; i < BURST; ++i) {
            next_ = next_ % OTHERS + 1;
            uint8_t wire[rtp_fix_header::WIRE_SIZE];
            rtp_fix_header header;
            header.pt = QD_AudioApp::PCM;
            header.ssrc = static_cast<uint32_t>(next_);
            header.encode(wire);
            std::copy(std::begin(wire), std::end(wire), datagram_.begin());
            peer_.send(datagram_, qd_test_host(1));
        }
    }

private:
    QD_Udp_Peer peer_;
    std::string datagram_ = std::string(rtp_fix_header::WIRE_SIZE + QD_AudioApp::PCM_SIZE, '\x15');
    int next_ = 0;
};

/// The same reads, and nothing done with what is read.
void receive_bare(int sock)
{
    fd_set reading;
    FD_ZERO(&reading);
    FD_SET(sock, &reading);
    timeval patience {0, 10000};
    static char buffer[QD_AppReadThread::MAX_DATAGRAM];
    if (::select(sock + 1, &reading, nullptr, nullptr, &patience) == 1)
        ::recvfrom(sock, buffer, sizeof buffer, 0, nullptr, nullptr);
}

int measure_receiving()
{
    setenv("QD_MIC", "silence", 1);
    QD_AudioApp app;
    app.stop();
    join_everybody();
    QD_AppReadThread thread(&app);
    const QD_Fd sock = qd_open_media_socket();
    qd_bind(sock.get(), qd_test_host(1), QD_AudioApp::PORT);
    Speakers speakers;
    std::vector<double> bare;
    std::vector<double> ours;
    const auto time = [&](std::vector<double>& into, auto receive) {
        speakers.burst();
        const auto start = Clock::now();
        for (int i = 0; i < BURST; ++i)
            receive();
        into.push_back(milliseconds_since(start) * 1000 / BURST);
    };
    for (int round = 0; round < ROUNDS; ++round) {
        time(bare, [&] { receive_bare(sock.get()); });
        time(ours, [&] { thread.receive(sock.get()); });
    }
    QD_Session_Ref session;
    const UserData* figures = session->get_member(1)->get_audio_data();
    printf("PCM datagram of %d members in turn, received and processed: %.2f us; received by a bare"
           " loop: %.2f us; %d of the first member counted\n",
        OTHERS, qd_median(ours), qd_median(bare),
        figures == nullptr ? 0 : figures->frames_received);
    session->reset();
    return qd_report(QD_RECEIVE_LOOP, qd_median(ours) / qd_median(bare), "of select and recvfrom");
}

}

int main()
{
    const QD_Temp_Dir home;
    setenv("HOME", home.path().c_str(), 1);
    qd_use_test_address();
    setenv("QD_SPEAKER", "null", 1);
    const int sending = measure_sending();
    return measure_receiving() | sending;
}
