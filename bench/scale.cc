// What a conference of real clients on one machine costs, by its size: one in
// which all have their cameras on, one in which only the first has.
#include "bench/budgets.h"
#include "tests/support/client_under_test.h"
#include "tests/support/x_server.h"

#include <algorithm>
#include <cmath>
#include <ctime>
#include <deque>
#include <sstream>
#include <sys/resource.h>

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::seconds SETTLING {2};
constexpr std::chrono::seconds TIME {8};
constexpr double FULL = 0.02;     // of the machine's time is left, or less
constexpr int SOUND_PACKETS = 10; // a second, of everybody to everybody

struct Plan {
    const char* cameras;
    bool all;
    std::vector<int> sizes;
};

double cpu_seconds(pid_t pid)
{
    clockid_t clock {};
    timespec used {};
    if (clock_getcpuclockid(pid, &clock) != 0 || clock_gettime(clock, &used) != 0)
        return NAN;
    return static_cast<double>(used.tv_sec) + static_cast<double>(used.tv_nsec) / 1e9;
}

/// Megabytes, of the line that begins so.
double memory(pid_t pid, const std::string& kind)
{
    std::ifstream all("/proc/" + std::to_string(pid) + "/smaps_rollup");
    for (std::string line; std::getline(all, line);)
        if (line.starts_with(kind + ":"))
            return std::stod(line.substr(kind.size() + 1)) / 1024;
    return NAN;
}

/// Datagrams of this machine since it started.
struct Datagrams {
    Datagrams()
    {
        std::ifstream counters("/proc/net/snmp");
        std::string word;
        for (std::string line; std::getline(counters, line);)
            if (line.starts_with("Udp: ") && std::isdigit(line[5]) != 0)
                std::istringstream(line) >> word >> received >> word >> word >> sent >> no_room;
    }
    double received = 0;
    double sent = 0;
    double no_room = 0; // for them in a receive buffer
};

/// Seconds that all processors have been idle.
double idle_seconds()
{
    std::ifstream uptime("/proc/uptime");
    double idle = 0;
    uptime >> idle >> idle;
    return idle;
}

/// One line of the table.
struct Figures {
    int members;
    double camera_cpu; // per cent of a core, mean of those with cameras
    double cpu;        // mean of the others
    double all_cpu;
    double idle; // the share of the machine's time
    double rss;  // megabytes, mean of those without cameras
    double pss;  // all together
    double received;
    double sound;   // packets that should have come, a second
    double no_room; // of those sent
};

class Conference {
public:
    explicit Conference(bool all_cameras) : all_cameras_(all_cameras) {}

    /// Lets more members in. Returns whether all came.
    bool grow(int size)
    {
        const int before = static_cast<int>(clients_.size());
        for (int id = before + 1; id <= size; ++id) {
            QD_Client_Under_Test::Set_Up set_up;
            set_up.mic = "tone:" + std::to_string(200 + 10 * id);
            if (id == 1 || all_cameras_)
                set_up.toolkit_options = {"-xrm", "*toggle.set: True"};
            clients_.emplace_back(id, set_up);
        }
        for (int id = 1; id <= size; ++id) {
            const QD_Test_Framework& framework = client(id).framework();
            if (id > before)
                framework.announce(id, id, "m" + std::to_string(id));
            for (int other = 1; other <= size; ++other)
                if (other != id && (id > before || other > before))
                    framework.announce(other, other, "m" + std::to_string(other));
        }
        return std::all_of(clients_.begin(), clients_.end(),
            [](auto& client) { return client.registered() && client.framework().settle(); });
    }

    Figures measure() const
    {
        std::this_thread::sleep_for(SETTLING);
        const std::vector<double> cpu_before = cpu();
        const Datagrams before;
        const double idle_before = idle_seconds();
        const auto begin = Clock::now();
        std::this_thread::sleep_for(TIME);
        const double time = std::chrono::duration<double>(Clock::now() - begin).count();
        const std::vector<double> cpu_after = cpu();
        const Datagrams after;

        const int members = static_cast<int>(clients_.size());
        Figures figures {};
        figures.members = members;
        figures.idle = (idle_seconds() - idle_before) / time
            / static_cast<double>(sysconf(_SC_NPROCESSORS_ONLN));
        figures.received = (after.received - before.received) / time;
        figures.sound = SOUND_PACKETS * members * (members - 1.0);
        figures.no_room = (after.no_room - before.no_room) / (after.sent - before.sent);
        const int cameras = all_cameras_ ? members : 1;
        for (int id = 1; id <= members; ++id) {
            const auto i = static_cast<size_t>(id - 1);
            const double used = (cpu_after[i] - cpu_before[i]) / time * 100;
            figures.all_cpu += used;
            if (id <= cameras)
                figures.camera_cpu += used / cameras;
            else
                figures.cpu += used / (members - cameras);
            figures.pss += memory(clients_[i].pid(), "Pss");
            if (id > cameras || all_cameras_)
                figures.rss += memory(clients_[i].pid(), "Rss")
                    / (all_cameras_ ? members : members - cameras);
        }
        return figures;
    }

    /// All end. Prints what they have counted.
    void end()
    {
        for (auto& client : clients_)
            client.framework().end_session();
        long sent = 0;
        long received = 0;
        long behind = 0;
        for (auto& client : clients_) {
            client.wait();
            count(client.log(), sent, received, behind);
        }
        printf("The clients counted %ld packets made for all, %ld received, %ld out of order\n",
            sent, received, behind);
    }

private:
    QD_Client_Under_Test& client(int id) { return clients_[static_cast<size_t>(id - 1)]; }

    std::vector<double> cpu() const
    {
        std::vector<double> all;
        for (const auto& client : clients_)
            all.push_back(cpu_seconds(client.pid()));
        return all;
    }

    static void count(const std::string& log, long& sent, long& received, long& behind)
    {
        std::istringstream lines(log);
        for (std::string line; std::getline(lines, line);) {
            int packets = 0;
            int lost = 0;
            if (const size_t at = line.find(": sent "); at != std::string::npos)
                sent += sscanf(line.c_str() + at, ": sent %d", &packets) == 1 ? packets : 0;
            else if (const size_t from = line.find(": received "); from != std::string::npos
                     && sscanf(line.c_str() + from, ": received %d, lost %d", &packets, &lost)
                         == 2) {
                received += packets;
                behind += lost;
            }
        }
    }

    const bool all_cameras_;
    std::deque<QD_Client_Under_Test> clients_;
};

void print_head(const Plan& plan)
{
    printf("cameras: %s\n"
           "| members | processor, all | with camera | without | left | memory, all (PSS) | "
           "of one (RSS) | packets/s | of sound | no room |\n"
           "|---|---|---|---|---|---|---|---|---|---|\n",
        plan.cameras);
}

void print(const Figures& figures)
{
    printf("| %d | %.1f %% | %.2f %% | %.2f %% | %.0f %% | %.0f MB | %.1f MB | %.0f | %.0f | "
           "%.2f %% |\n",
        figures.members, figures.all_cpu, figures.camera_cpu, figures.cpu, figures.idle * 100,
        figures.pss, figures.rss, figures.received, figures.sound, figures.no_room * 100);
    fflush(stdout);
}

/// Of the straight line that fits best.
template <class Value> double slope(const std::vector<Figures>& figures, Value value)
{
    double n = 0;
    double x = 0;
    double y = 0;
    double xx = 0;
    double xy = 0;
    for (const Figures& one : figures) {
        const double at = one.members - 1;
        ++n;
        x += at;
        y += value(one);
        xx += at * at;
        xy += at * value(one);
    }
    return (n * xy - x * y) / (n * xx - x * x);
}

std::vector<Figures> run(const Plan& plan)
{
    const QD_X_Server x_server("1280x1024x24", "-maxclients 512");
    Conference conference(plan.all);
    std::vector<Figures> all;
    print_head(plan);
    for (int size : plan.sizes) {
        if (!conference.grow(size)) {
            printf("not all of %d came\n", size);
            break;
        }
        all.push_back(conference.measure());
        print(all.back());
    }
    conference.end();
    return all;
}

}

int main(int argc, char** argv)
{
    rlimit files {};
    getrlimit(RLIMIT_NOFILE, &files);
    files.rlim_cur = files.rlim_max;
    setrlimit(RLIMIT_NOFILE, &files);

    const int most = argc > 1 ? atoi(argv[1]) : 99;
    Plan all {"all", true, {2, 4, 8, 16}};
    Plan one {"one", false, {2, 4, 8, 16, 32, 64, 99}};
    for (Plan* plan : {&all, &one})
        std::erase_if(plan->sizes, [&](int size) { return size > most; });
    const std::vector<Figures> filming = run(all);
    std::vector<Figures> figures = run(one);
    for (size_t i = 1; i < figures.size(); ++i)
        printf("from %d to %d members: %.4f %% per member heard\n", figures[i - 1].members,
            figures[i].members,
            (figures[i].cpu - figures[i - 1].cpu) / (figures[i].members - figures[i - 1].members));
    std::erase_if(figures, [](const Figures& one_size) { return one_size.idle < FULL; });
    if (figures.size() < 2 || filming.size() < 2)
        return 1;
    printf("sound to and from each, up to %d members; memory for sound and pictures, up to %d\n",
        figures.back().members, filming.back().members);
    const auto cpu = [](const Figures& one_size) { return one_size.cpu; };
    const auto rss = [](const Figures& one_size) { return one_size.rss; };
    int missed = qd_report(QD_MEMBER_CPU, slope(figures, cpu));
    missed |= qd_report(QD_MEMBER_MEMORY, slope(filming, rss));
    return missed;
}
