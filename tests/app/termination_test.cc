#include "app/termination.h"

#include "tests/support/process.h"

#include <gtest/gtest.h>

TEST(Termination, ProgramsStartedFromHereHaveTheirSignalsByDefaultAndUnblocked)
{
    sigset_t some;
    sigfillset(&some);
    pthread_sigmask(SIG_BLOCK, &some, nullptr); // as the framework may have left it
    const QD_Termination termination;
    // But for those that the C library keeps for itself, 32 and 33.
    EXPECT_EQ(qd_output("grep -cE 'Sig(Blk|Ign):.0{7}[01][08]0{7}$' /proc/self/status"), "2\n");
    for (int passes : {SIGPIPE, SIGCHLD})
        raise(passes);
    EXPECT_FALSE(termination.requested());
    raise(SIGHUP);
    EXPECT_TRUE(termination.requested());
}
