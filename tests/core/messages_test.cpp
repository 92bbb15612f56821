// Client messages of point editing, observed through the native build's message sink.
// The same scenarios run against a real window under Wine in tests/win/messages_win_test.cpp.
#if !defined(_WIN32)

#include "core/message_scenarios.h"
#include "platform/platform.h"

#include <doctest/doctest.h>

#include <cstdint>
#include <functional>
#include <string>

using namespace edit_test;

namespace {

const HWND kClientWindow = reinterpret_cast<HWND>(std::uintptr_t(0x2474));

/// Records what reaches the sink; `onMessage` (when set) runs inside the "handler".
struct Recorder {
    std::vector<SentMessage> received;
    std::vector<HWND> windows;
    std::function<void(const SentMessage&)> onMessage;
};
Recorder* recorder = nullptr;

LRESULT recordMessage(HWND window, UINT msg, WPARAM wParam, LPARAM lParam) {
    if (!recorder)
        return 0;
    const SentMessage m{msg, wParam, lParam};
    recorder->received.push_back(m);
    recorder->windows.push_back(window);
    if (recorder->onMessage)
        recorder->onMessage(m);
    return 0;
}

/// Installs a recorder for the life of the object.
class Recording {
public:
    Recording() {
        recorder = &rec;
        platform::SetMessageSink(recordMessage);
    }
    ~Recording() {
        platform::SetMessageSink(nullptr);
        recorder = nullptr;
    }
    Recorder rec;
};

} // namespace

TEST_CASE("each edit sends exactly its messages, in order, to the notify window") {
    for (const MessageScenario& s : MessageScenarios()) {
        CAPTURE(s.name);
        CurveFixture f(s.knots);
        if (s.prepare)
            s.prepare(f.curve());
        f.control().SetNotifyWindow(kClientWindow);
        Recording r;
        const std::vector<SentMessage> expected = s.act(f.curve());
        CHECK(r.rec.received == expected);
        for (HWND w : r.rec.windows)
            CHECK(w == kClientWindow);
    }
}

TEST_CASE("without a notify window nothing is sent and every edit still completes") {
    for (const MessageScenario& s : MessageScenarios()) {
        CAPTURE(s.name);
        CurveFixture heard(s.knots), silent(s.knots);
        if (s.prepare) {
            s.prepare(heard.curve());
            s.prepare(silent.curve());
        }
        heard.control().SetNotifyWindow(kClientWindow);
        {
            Recording r;
            s.act(heard.curve());
        }
        Recording r;
        s.act(silent.curve());
        CHECK(r.rec.received.empty());
        CHECK(Snapshot(silent.curve()) == Snapshot(heard.curve()));
    }
}

TEST_CASE("a client reading the curve from its handler sees the new state") {
    CurveFixture f(
        {Knot(0.0f, 0.0f),
         Knot(0.5f, 0.5f, KNOT_TYPE_BEZIER_SMOOTH, Point2(-0.1f, 0.0f), Point2(0.1f, 0.0f)),
         Knot(0.7f, 0.6f), Knot(1.0f, 1.0f)});
    Curve& c = f.curve();
    f.control().SetNotifyWindow(kClientWindow);
    Recording r;
    std::vector<std::string> seen;
    r.rec.onMessage = [&](const SentMessage& m) {
        const int i = int(m.wParam & 0xFFFF);
        switch (m.msg) {
        case CURVE_MSG_POINT_CHANGED:
            CHECK(c.CachedPosition(kNow, i) == c.Knots()[i].pos);
            seen.push_back("changed");
            break;
        case CURVE_MSG_TANGENT_CHANGED:
            CHECK(c.CachedOutHandle(kNow, i) == c.Knots()[i].pos + c.Knots()[i].outTan);
            CHECK(c.CachedInHandle(kNow, i) == c.Knots()[i].pos + c.Knots()[i].inTan);
            seen.push_back("tangent");
            break;
        case CURVE_MSG_POINT_INSERTED:
            CHECK(c.PointCount() == 5);
            CHECK(c.Knots()[i].flags == (KNOT_SELECTED | KNOT_TYPE_CORNER));
            CHECK(c.Controller(i) == nullptr);
            seen.push_back("inserted");
            break;
        case CURVE_MSG_SELECTION:
            CHECK(int(m.wParam) == int(c.GetSelection().NumberSet()));
            seen.push_back("selection");
            break;
        case CURVE_MSG_POINT_DELETED:
            CHECK(c.PointCount() == 4);
            seen.push_back("deleted");
            break;
        default:
            seen.push_back("other");
        }
    };

    theHold.Begin();
    c.SetKnotPosition(kNow, 2, Point2(0.65f, 0.55f));
    c.DragHandle(kNow, 1, 0x200, 0.0f, 0.1f);
    c.InsertKnotAtX(kNow, 2, 0.8f, 0);
    c.DeleteSelectedKnots();
    theHold.Accept("Edit");
    CHECK(seen ==
          std::vector<std::string>{"changed", "tangent", "inserted", "selection", "deleted"});
}

TEST_CASE("undo and redo send no client messages") {
    CurveFixture f({Knot(0.0f, 0.0f), Knot(0.5f, 0.5f), Knot(1.0f, 1.0f)});
    Curve& c = f.curve();
    f.control().SetNotifyWindow(kClientWindow);
    theHold.Begin();
    c.SetKnotPosition(kNow, 1, Point2(0.4f, 0.4f));
    c.InsertKnotAtX(kNow, 0, 0.2f, 1);
    c.DeleteSelectedKnots();
    theHold.Accept("Edit");
    Recording r;
    REQUIRE(theHold.Undo());
    REQUIRE(theHold.Redo());
    CHECK(r.rec.received.empty());
}

#endif // !_WIN32
