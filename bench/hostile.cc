// What strangers can do to a call: two real clients, and rubbish on all ports of
// the one that hears and sees. Exits non-zero if too little of the call is left.
#include "bench/flood.h"
#include "bench/heard.h"
#include "bench/seen.h"
#include "bench/usage.h"
#include "tests/support/udp_peer.h"
#include "tests/support/video_window.h"
#include "tests/support/x_server.h"

#include <cstdio>
#include <cstring>
#include <sstream>
#include <sys/resource.h>

namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;
using Clock = std::chrono::steady_clock;

constexpr uint16_t PORTS[] = {12567, 34999}; // sound, pictures
constexpr uint16_t SIGNALLING_PORT = 5000;
enum { ANNA = 2, BERNT, EAR, STRANGERS };
constexpr int STRANGER_COUNT = 3;
constexpr double RATE = 50000; // datagrams a second, to either port
constexpr seconds TIME {6};
constexpr seconds QUIET {3}; // afterwards
constexpr double LEAST_HEARD = 0.95;
constexpr double LEAST_PICTURES = 1; // a second
constexpr double MOST_WINDOW_MS = 1000;
constexpr long MOST_GROWTH_KB = 32768;

struct Case {
    const char* name;
    QD_Rubbish rubbish;
    bool datagrams = true;
    bool streams = false;
    bool harmless = true; // or else the sound may be spoilt
};
constexpr Case CASES[] = {
    {"nobody", {}, false},
    {"0 to 11 bytes", {.most = 11}},
    {"wrong version", {.least = 12, .most = 1500, .version = QD_Rubbish::WRONG}},
    {"unknown sender", {.least = 12, .most = 1500, .version = QD_Rubbish::RIGHT}},
    {"mutated packets", {.mutated = true}},
    {"0 to 65000 bytes", {.most = 65000}},
    {"1000 streams", {}, false, true},
    {"mutated, and streams", {.mutated = true}, true, true},
    {"0 to 65000 bytes, and streams", {.most = 65000}, true, true},
    {"mutated, in a member's name", {.mutated = true, .sender = ANNA}, true, false, false},
};

/// Opens 1000 streams at once, lets them be for a second, and begins again, until it goes.
class Callers {
public:
    Callers() : thread_([this] { run(); }) {}
    ~Callers()
    {
        going_ = false;
        thread_.join();
    }
    Callers(const Callers&) = delete;

private:
    static constexpr int COUNT = 1000;

    void run() const
    {
        while (going_) {
            std::vector<QD_Fd> streams;
            for (int i = 0; i < COUNT; ++i)
                streams.push_back(call());
            qd_wait_for([&] { return !going_; }, seconds(1));
        }
    }

    static QD_Fd call()
    {
        QD_Fd fd(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
        const sockaddr_in us {AF_INET, htons(SIGNALLING_PORT), {qd_test_host(BERNT)}, {}};
        qd_bind(fd.get(), qd_test_host(STRANGERS), 0);
        ::connect(fd.get(), reinterpret_cast<const sockaddr*>(&us), sizeof us);
        return fd;
    }

    std::atomic<bool> going_ = true;
    std::thread thread_;
};

/// Presses the button "Accept" of a client's window, which does nothing while
/// nobody calls, and sees it go down and up.
class Clicks {
public:
    Clicks() : display_(XOpenDisplay(nullptr), &XCloseDisplay) {}

    void aim_at(Window window)
    {
        for (Window next = window; next != 0;) {
            target_ = next;
            XTranslateCoordinates(display_.get(), window, target_, X, Y, &x_, &y_, &next);
        }
        Window child = 0;
        XTranslateCoordinates(display_.get(), window, DefaultRootWindow(display_.get()), X, Y,
            &root_x_, &root_y_, &child);
    }

    /// Milliseconds until it is seen down, 2000 if it is not.
    double click()
    {
        const std::string up = look();
        const Clock::time_point begin = Clock::now();
        send(ButtonPress);
        qd_wait_for([&] { return look() != up; }, seconds(2));
        const Clock::duration took = Clock::now() - begin;
        send(ButtonRelease);
        qd_wait_for([&] { return look() == up; }, seconds(2));
        return std::chrono::duration<double, std::milli>(took).count();
    }

private:
    static constexpr int X = 16;
    static constexpr int Y = 157;
    static constexpr int SIZE = 12;

    std::string look() const
    {
        const std::unique_ptr<XImage, int (*)(XImage*)> image(
            XGetImage(display_.get(), DefaultRootWindow(display_.get()), root_x_ - SIZE / 2,
                root_y_ - SIZE / 2, SIZE, SIZE, AllPlanes, ZPixmap),
            [](XImage* taken) { return XDestroyImage(taken); });
        return image ? std::string(image->data,
                   static_cast<size_t>(image->bytes_per_line) * static_cast<size_t>(image->height))
                     : "";
    }

    void send(int type)
    {
        XEvent event {};
        event.xbutton.type = type;
        event.xbutton.window = target_;
        event.xbutton.root = DefaultRootWindow(display_.get());
        event.xbutton.button = Button1;
        event.xbutton.same_screen = True;
        event.xbutton.x = x_;
        event.xbutton.y = y_;
        event.xbutton.time = time_ += 1000; // no double clicks
        event.xbutton.state = type == ButtonRelease ? Button1Mask : 0;
        XSendEvent(display_.get(), target_, False, NoEventMask, &event);
        XFlush(display_.get());
    }

    const std::unique_ptr<Display, int (*)(Display*)> display_;
    Window target_ = 0;
    int x_ = 0;
    int y_ = 0;
    int root_x_ = 0;
    int root_y_ = 0;
    Time time_ = 0;
};

/// Datagrams of all on this machine that found no room in a receive buffer. (A socket's own
/// counter in /proc/net/udp also counts what its filter does not want.)
double without_room()
{
    std::ifstream counters("/proc/net/snmp");
    std::string word;
    double count = 0;
    for (std::string line; std::getline(counters, line);)
        if (line.starts_with("Udp: ") && std::isdigit(line[5]) != 0)
            std::istringstream(line) >> word >> word >> word >> word >> word >> count;
    return count;
}

class Conference {
public:
    Conference()
    {
        anna_.framework().announce(ANNA, ANNA, "anna");
        anna_.framework().announce(BERNT, BERNT, "bernt");
        anna_.framework().announce(EAR, EAR, "ear");
        bernt_.framework().announce(BERNT, BERNT, "bernt");
        bernt_.framework().announce(ANNA, ANNA, "anna");
    }

    /// Whether sound and pictures come through.
    bool starts()
    {
        QD_Person person(bernt_);
        if (!person.look_at("Quendal"))
            return false;
        const std::string main = person.window();
        if (!qd_shows(bernt_, "anna@", 0) || !person.look_at("anna@")
            || !seeing_.look_at(std::stoul(person.window()))
            || !qd_wait_for([&] { return hearing_.note(); }))
            return false;
        clicks_.aim_at(std::stoul(main));
        for (size_t medium = 0; medium < std::size(PORTS); ++medium) {
            const QD_Udp_Peer ear(qd_test_host(EAR), PORTS[medium]);
            for (int i = 0; i < 12; ++i)
                real_[medium].push_back(ear.receive());
            if (real_[medium].back().empty())
                return false;
        }
        anna_.framework().remove(EAR, EAR);
        return anna_.framework().settle();
    }

    /// One line of the table. Returns 0, 1 if too little is left of the call.
    int run(const Case& the_case)
    {
        seeing_.forget();
        hearing_.note();
        const size_t first = hearing_.noted();
        const double lost_before = without_room();
        const double cpu_before = qd_cpu_seconds(bernt_.pid());
        const auto memory_before = static_cast<long>(qd_resident_kilobytes(bernt_.pid()));
        const Clock::time_point begin = Clock::now();
        std::vector<std::unique_ptr<QD_Flood>> floods;
        for (size_t medium = 0; the_case.datagrams && medium < std::size(PORTS); ++medium)
            floods.push_back(std::make_unique<QD_Flood>(strangers(), qd_test_host(BERNT),
                PORTS[medium], the_case.rubbish, real_[medium], RATE));
        std::optional<Callers> callers;
        if (the_case.streams)
            callers.emplace();
        const double window = watch(TIME, true);
        const Clock::time_point end = Clock::now();
        const double time = std::chrono::duration<double>(end - begin).count();
        const size_t last = hearing_.noted();
        std::vector<double> sent(std::size(PORTS));
        double bytes = 0;
        for (size_t medium = 0; medium < floods.size(); ++medium) {
            sent[medium] = static_cast<double>(floods[medium]->sent());
            bytes += static_cast<double>(floods[medium]->bytes());
        }
        callers.reset();
        floods.clear();
        const double cpu = (qd_cpu_seconds(bernt_.pid()) - cpu_before) / time * 100;
        const auto grown = static_cast<long>(qd_resident_kilobytes(bernt_.pid())) - memory_before;
        const double lost = without_room() - lost_before;
        watch(QUIET, false);

        const QD_Hearing::Report heard = hearing_.report(first, last);
        const QD_Seeing::Report seen = seeing_.report(begin, end);
        printf("| %s | %.0f | %.0f | %.0f MB/s | %.2f %% | %.1f %% | %.1f | %.0f ms | %.0f %% | "
               "%+.1f MB |\n",
            the_case.name, sent[0] / time, sent[1] / time, bytes / time / 1e6,
            lost / std::max(sent[0] + sent[1], 1.0) * 100, heard.right * 100, seen.per_second,
            window, cpu, static_cast<double>(grown) / 1024);
        fflush(stdout);
        const bool fine = window < MOST_WINDOW_MS && grown < MOST_GROWTH_KB
            && (!the_case.harmless
                || (heard.right >= LEAST_HEARD && seen.per_second >= LEAST_PICTURES));
        return fine ? 0 : 1;
    }

    void end()
    {
        for (QD_Client_Under_Test* client : {&anna_, &bernt_}) {
            client->end();
            printf("%s\n", client->log().c_str());
        }
    }

private:
    // Anna's own address is among theirs.
    static std::vector<uint32_t> strangers()
    {
        std::vector<uint32_t> addresses {qd_test_host(ANNA)};
        for (int i = 0; i < STRANGER_COUNT; ++i)
            addresses.push_back(qd_test_host(STRANGERS + i));
        return addresses;
    }

    // Returns the slowest answer to a click, in milliseconds.
    double watch(seconds time, bool clicking)
    {
        const Clock::time_point end = Clock::now() + time;
        double slowest = 0;
        int pass = 0;
        for (auto next = Clock::now(); Clock::now() < end; next += milliseconds(20)) {
            std::this_thread::sleep_until(next);
            hearing_.note();
            if (++pass % 2 == 0)
                seeing_.note();
            if (clicking && pass % 10 == 0)
                slowest = std::max(slowest, clicks_.click());
        }
        return slowest;
    }

    QD_Client_Under_Test::Set_Up speaking() const
    {
        qd_write_wav(voice_, QD_Counted_Voice().samples());
        return {.mic = "file:" + voice_, .toolkit_options = qd_seeing_options(0)};
    }
    QD_Client_Under_Test::Set_Up listening() const
    {
        return {.speaker = "file:" + dir_.path(), .toolkit_options = qd_seeing_options(1)};
    }

    const QD_X_Server x_server_ {"1430x800x24"};
    const QD_Temp_Dir dir_;
    const std::string voice_ = dir_ / "voice.wav";
    QD_Client_Under_Test bernt_ {BERNT, listening()};
    QD_Client_Under_Test anna_ {ANNA, speaking()};
    QD_Hearing hearing_ {anna_.pid(), voice_, dir_ / "mix.wav"};
    QD_Seeing seeing_ {0};
    Clicks clicks_;
    std::vector<std::string> real_[std::size(PORTS)];
};

}

int main(int argc, char** argv)
{
    rlimit files {};
    getrlimit(RLIMIT_NOFILE, &files);
    files.rlim_cur = files.rlim_max;
    setrlimit(RLIMIT_NOFILE, &files);

    Conference conference;
    if (!conference.starts()) {
        fprintf(stderr, "no sound or no pictures\n");
        return 1;
    }
    printf("budget: 95 %% heard, 1 picture/s, an answer within 1 s, 32 MB\n"
           "| strangers' | to sound, 1/s | to pictures, 1/s | together | no room | heard | "
           "pictures/s | window, slowest | processor | memory |\n"
           "|---|---|---|---|---|---|---|---|---|---|\n");
    int missed = 0;
    for (const Case& one : CASES)
        if (argc < 2 || strstr(one.name, argv[1]) != nullptr)
            missed |= conference.run(one);
    conference.end();
    return missed;
}
