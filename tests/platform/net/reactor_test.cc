#include "platform/net/reactor.h"

#include "platform/net/wake.h"

#include <functional>
#include <gtest/gtest.h>
#include <memory>

namespace {

struct Handler : Event_Handler {
    QD_Wake wake;
    Reactor& reactor;
    std::function<int()> then = [] { return 0; }; // what its event does
    int calls = 0;

    explicit Handler(Reactor& r) : reactor(r) { reactor.register_handler(this, QD_EVENT_READ); }
    ~Handler() override { reactor.remove_handler(this, QD_EVENT_READ); }
    int get_handle() override { return wake.get(); }
    int handle_event(Event_Type) override
    {
        ++calls;
        wake.take();
        const auto act = then; // it may delete this
        return act();
    }
};

}

TEST(Reactor, TellsTheExtraDescriptorFromHandlersAndWakes)
{
    Reactor reactor;
    Handler handler(reactor);
    QD_Wake extra;
    QD_Wake wake;
    reactor.add_wake(wake.get());
    EXPECT_EQ(reactor.wait(extra.get(), 0), 0);
    EXPECT_EQ(reactor.dispatch(), 0);

    extra.raise();
    EXPECT_EQ(reactor.wait(extra.get(), 60000), 1);
    EXPECT_EQ(reactor.dispatch(), 0);
    extra.take();

    wake.raise();
    EXPECT_EQ(reactor.wait(extra.get(), 60000), 0);
    wake.take();
    handler.wake.raise();
    EXPECT_EQ(reactor.wait(-1, 60000), 0);
    EXPECT_EQ(reactor.dispatch(), 1);
    EXPECT_EQ(reactor.dispatch(), 0);
    EXPECT_EQ(handler.calls, 1);
}

TEST(Reactor, HandlersMayRemoveOneAnotherAndDeleteThemselves)
{
    Reactor reactor;
    auto first = std::make_unique<Handler>(reactor);
    Handler second(reactor);
    first->then = [&] {
        reactor.remove_handler(&second, QD_EVENT_READ);
        first.reset();
        return -1;
    };
    first->wake.raise();
    second.wake.raise();
    reactor.wait(-1, 60000);
    EXPECT_EQ(reactor.dispatch(), 1);
    EXPECT_EQ(first, nullptr);
    EXPECT_EQ(second.calls, 0);
    EXPECT_EQ(reactor.remove_handler(&second, QD_EVENT_READ), -1);
    EXPECT_EQ(reactor.register_handler(&second, QD_EVENT_READ), 0);
    EXPECT_EQ(reactor.register_handler(&second, QD_EVENT_READ), -1);
}
