// Membership at scale: how soon everybody knows of everybody, and what it costs.
// Agents without clients in this one process, over real connections to a real broker.
#include "bench/crowd.h"
#include "bench/usage.h"
#include "tests/support/broker.h"

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <sys/resource.h>

namespace {

using Seconds = std::chrono::duration<double>;

constexpr const char* SETTINGS = "allow_anonymous true\npersistence false\n"
                                 "max_inflight_messages 100\nmax_queued_messages 2000\n";

double broker_megabytes(const QD_Test_Broker& broker)
{
    std::ifstream status("/proc/" + std::to_string(broker.pid()) + "/status");
    for (std::string line; std::getline(status, line);)
        if (line.starts_with("VmHWM:"))
            return std::stod(line.substr(6)) / 1024;
    return -1;
}

double own_cpu_seconds()
{
    rusage used {};
    getrusage(RUSAGE_SELF, &used);
    return static_cast<double>(used.ru_utime.tv_sec + used.ru_stime.tv_sec)
        + static_cast<double>(used.ru_utime.tv_usec + used.ru_stime.tv_usec) / 1e6;
}

/// Who could not join, and why: the first of them.
void print_failures(const QD_Crowd& crowd)
{
    for (const auto& member : crowd.members)
        if (!member->failure.empty()) {
            printf("  %s\n", member->failure.c_str());
            return;
        }
}

/// One conference. Returns 0, 1 if a budget is missed.
int one_conference(int count)
{
    const QD_Test_Broker broker(SETTINGS);
    QD_Crowd crowd;
    for (int i = 0; i < count; ++i)
        crowd.join("mqtt://" + broker.place() + "/standup", "m" + std::to_string(i));
    const auto begin = QD_Clock::real().now();
    const bool known = crowd.run_until(
        [&] { return crowd.all_know(static_cast<size_t>(count)); }, std::chrono::seconds(30));
    const double took = Seconds(QD_Clock::real().now() - begin).count();

    constexpr double SPAN = 10;
    const double broker_before = qd_cpu_seconds(broker.pid());
    const double own_before = own_cpu_seconds();
    crowd.run_for(std::chrono::seconds(static_cast<int>(SPAN)));
    const double broker_load = (qd_cpu_seconds(broker.pid()) - broker_before) / SPAN * 100;
    const double agent_load = (own_cpu_seconds() - own_before) / SPAN * 100 / count;
    printf("%9d %14.2f s %14.1f MB %14.1f %% %14.2f %%\n", count, took, broker_megabytes(broker),
        broker_load, agent_load);
    print_failures(crowd);
    return known && took <= 3 ? 0 : 1;
}

/// Many conferences of three on one broker, begun over ten seconds.
int many_conferences(int count)
{
    constexpr size_t SIZE = 3;
    constexpr int AT_ONCE = 20; // every fifth of a second
    const QD_Test_Broker broker(SETTINGS);
    QD_Crowd crowd;
    std::vector<QD_Clock::Time> begun;
    std::vector<double> took; // until all of a conference know all; below 0: they do not yet
    const auto look = [&] {
        for (size_t i = 0; i < took.size(); ++i) {
            const auto* const first = &crowd.members[i * SIZE];
            if (took[i] < 0 && std::all_of(first, first + SIZE, [&](const auto& m) {
                    return m->members() == SIZE;
                }))
                took[i] = Seconds(QD_Clock::real().now() - begun[i]).count();
        }
        return false;
    };
    for (int conference = 0; conference < count; ++conference) {
        for (size_t i = 0; i < SIZE; ++i)
            crowd.join("mqtt://" + broker.place() + "/c" + std::to_string(conference),
                "m" + std::to_string(i));
        begun.push_back(QD_Clock::real().now());
        took.push_back(-1);
        if (conference % AT_ONCE == AT_ONCE - 1)
            crowd.run_until(look, std::chrono::milliseconds(200));
    }
    const bool known
        = crowd.run_until([&] { return look() || crowd.all_know(SIZE); }, std::chrono::seconds(60));
    std::sort(took.begin(), took.end());
    const double late = took[took.size() * 99 / 100];
    const double memory = broker_megabytes(broker);
    printf(
        "%d conferences of %zu: all know all in %.2f s median, %.2f s at the 99th percentile (2), "
        "broker %.1f MB (64)%s\n",
        count, SIZE, took[took.size() / 2], late, memory, known ? "" : ", NOT ALL");
    print_failures(crowd);
    return known && late <= 2 && memory <= 64 ? 0 : 1;
}

}

int main()
{
    rlimit files {};
    getrlimit(RLIMIT_NOFILE, &files);
    files.rlim_cur = files.rlim_max;
    setrlimit(RLIMIT_NOFILE, &files);

    printf("one conference; budget: 3 s\n");
    printf("%9s %16s %17s %16s %16s\n", "members", "all know all", "broker, peak", "broker, idle",
        "agent, idle");
    int missed = 0;
    for (const int count : {3, 10, 30, 60, 100})
        missed |= one_conference(count);
    missed |= many_conferences(1000);
    return missed;
}
