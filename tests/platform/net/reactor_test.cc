#include "platform/net/reactor.h"

#include "platform/base/wake.h"

#include <gtest/gtest.h>

namespace {

// The first one called is the end of all.
struct Handler : Event_Handler {
    using All = std::vector<std::unique_ptr<Handler>>;
    Handler(Reactor& at, All& handlers) : reactor(at), all(handlers) {}
    ~Handler() override { reactor.remove_handler(this, QD_EVENT_READ); }
    int get_handle() override { return wake.get(); }
    int handle_event(Event_Type) override
    {
        All().swap(all);
        return -1;
    }

    Reactor& reactor;
    All& all;
    QD_Wake wake;
};

}

TEST(Reactor, HandlersMayRemoveOneAnotherAndThemselves)
{
    Reactor reactor;
    QD_Wake wake;
    reactor.add_wake(wake.get());
    Handler::All all;
    for (int i = 0; i < 3; ++i) {
        all.push_back(std::make_unique<Handler>(reactor, all));
        EXPECT_EQ(reactor.register_handler(all.back().get(), QD_EVENT_READ), 0);
    }
    wake.raise();
    EXPECT_EQ(reactor.wait(-1, 60000), 0);
    EXPECT_EQ(reactor.dispatch(), 0);
    for (const auto& handler : all)
        handler->wake.raise();
    EXPECT_EQ(reactor.wait(wake.get(), 60000), 1);
    EXPECT_EQ(reactor.dispatch(), 1);
}
