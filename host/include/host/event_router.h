// Event routers: the host tells whoever currently wants an event (the Delete key, for
// one) without knowing who that is. A user registers while it wants the event, typically
// while its window is active, and unregisters when it stops.
//
// Portable (no window calls); user-interface thread only.
#pragma once

#include <vector>

#include "host/export.h"
#include "host/win_types.h"

class HOST_API EventUser {
public:
    virtual ~EventUser() = default;
    /// The event happened. Called on the user-interface thread by EventRouter::Process.
    virtual void Notify() = 0;
};

class HOST_API EventRouter {
public:
    EventRouter() = default;
    EventRouter(const EventRouter&) = delete;
    EventRouter& operator=(const EventRouter&) = delete;

    /// Makes `user` the one that gets the event (not owned). A user registered already
    /// moves to the front; the user before it gets the event again once this one
    /// unregisters. Null is ignored.
    void Register(EventUser* user);
    /// Removes `user` wherever it is; unknown users and null are ignored.
    void UnRegister(EventUser* user);
    /// Notifies the most recently registered user; TRUE when there was one. A user may
    /// register or unregister (itself or others) from inside Notify.
    BOOL Process();
    /// How many users are registered.
    int Count() const { return int(users_.size()); }

private:
    std::vector<EventUser*> users_; // not owned; the last one gets the event
};

/// The host's Delete key: its main window processes this router when Delete is pressed
/// (see host/host_window.h).
extern HOST_API EventRouter deleteRouter;
