// Members who use everything for long: what they hold may not grow, and nothing may go wrong.
#include "tests/soak/course.h"

#include <cstdio>
#include <cstring>

namespace {

constexpr int FEWEST_ROUNDS = 3; // one to settle in, and two to compare

int usage()
{
    fprintf(stderr,
        "usage: soak MINUTES MEMBERS [disturbed]\n"
        "MEMBERS (4 to 60) is how many are there at most; whole rounds are gone.\n");
    return 2;
}

}

int main(int argc, char** argv)
{
    const bool disturbed = argc == 4 && strcmp(argv[3], "disturbed") == 0;
    const double minutes = argc == 3 || disturbed ? atof(argv[1]) : -1;
    const int members = argc > 2 ? atoi(argv[2]) : 0;
    if (minutes < 0 || members < 4 || members > 60)
        return usage();
    setvbuf(stdout, nullptr, _IOLBF, 0);
    using Clock = std::chrono::steady_clock;
    const auto start = Clock::now();
    const auto elapsed
        = [&] { return std::chrono::duration<double>(Clock::now() - start).count(); };

    QD_Soak_Course course(static_cast<size_t>(members), disturbed);
    QD_Figures figures;
    bool well = course.begin(figures);
    int round = 0;
    for (; well && (round < FEWEST_ROUNDS || elapsed() < 60 * minutes); ++round) {
        printf("round %d from %.0f s on\n", round, elapsed());
        figures.begin(round);
        well = course.round();
    }
    printf("%d rounds in %.0f s\n", round, elapsed());
    figures.begin(round); // leaving is none
    // Sanitizers keep what was freed.
    constexpr bool SANITIZED = sizeof QD_SANITIZED > 1;
    const unsigned judged = 1U << QD_Figures::DESCRIPTORS | 1U << QD_Figures::THREADS
        | (SANITIZED ? 0U : 1U << QD_Figures::MEMORY);
    const int missed = figures.report(1, round - 1, judged);
    well = well && course.end();
    return well ? missed : 1;
}
