#include "host/event_router.h"

#include <algorithm>

EventRouter deleteRouter;

void EventRouter::Register(EventUser* user) {
    if (!user)
        return;
    UnRegister(user);
    users_.push_back(user);
}

void EventRouter::UnRegister(EventUser* user) {
    users_.erase(std::remove(users_.begin(), users_.end(), user), users_.end());
}

BOOL EventRouter::Process() {
    if (users_.empty())
        return FALSE;
    // Notify may change the list; the user is read before the call.
    EventUser* user = users_.back();
    user->Notify();
    return TRUE;
}
