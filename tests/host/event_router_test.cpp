// Event routers: the most recently registered user gets the event.

#include "host/event_router.h"

#include <doctest/doctest.h>

namespace {

struct User : EventUser {
    int notified = 0;
    EventRouter* unregisterFrom = nullptr; // unregisters itself when notified
    void Notify() override {
        ++notified;
        if (unregisterFrom)
            unregisterFrom->UnRegister(this);
    }
};

} // namespace

TEST_CASE("an empty router processes nothing") {
    EventRouter router;
    CHECK(router.Count() == 0);
    CHECK_FALSE(router.Process());
    router.Register(nullptr);
    router.UnRegister(nullptr);
    CHECK(router.Count() == 0);
}

TEST_CASE("the last registered user gets the event; the one before it gets it back later") {
    EventRouter router;
    User a, b;
    router.Register(&a);
    router.Register(&b);
    CHECK(router.Count() == 2);
    CHECK(router.Process());
    CHECK(a.notified == 0);
    CHECK(b.notified == 1);
    router.UnRegister(&b);
    CHECK(router.Process());
    CHECK(a.notified == 1);
    CHECK(b.notified == 1);
}

TEST_CASE("registering again moves a user to the front without duplicating it") {
    EventRouter router;
    User a, b;
    router.Register(&a);
    router.Register(&b);
    router.Register(&a);
    CHECK(router.Count() == 2);
    router.Process();
    CHECK(a.notified == 1);
    router.UnRegister(&a);
    CHECK(router.Count() == 1);
    router.Process();
    CHECK(b.notified == 1);
    User stranger;
    router.UnRegister(&stranger); // unknown: ignored
    CHECK(router.Count() == 1);
}

TEST_CASE("a user may unregister itself while it is notified") {
    EventRouter router;
    User a, b;
    b.unregisterFrom = &router;
    router.Register(&a);
    router.Register(&b);
    CHECK(router.Process());
    CHECK(b.notified == 1);
    CHECK(router.Count() == 1);
    router.Process();
    CHECK(a.notified == 1);
}

TEST_CASE("the host's delete router is one object for everyone") {
    User u;
    const int before = deleteRouter.Count();
    deleteRouter.Register(&u);
    CHECK(deleteRouter.Process());
    CHECK(u.notified == 1);
    deleteRouter.UnRegister(&u);
    CHECK(deleteRouter.Count() == before);
}
