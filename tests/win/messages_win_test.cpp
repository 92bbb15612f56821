// Client messages of point editing as a real client window receives them: a hidden
// top-level window whose procedure records every message it gets while an edit runs.
// The scenarios are those of the native test (tests/core/message_scenarios.h); here the
// messages travel through SendMessageA, and anything else the window is sent during an
// edit would show up in the recording and fail the comparison.
#include "core/message_scenarios.h"

#include <doctest/doctest.h>

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

using namespace edit_test;

namespace {

/// Every message the window got while `recording` was set, and the handler's view of
/// the curve at each point message.
struct WindowLog {
    bool recording = false;
    std::vector<SentMessage> received;
    Curve* curve = nullptr;       // read from the handler, when set
    std::vector<int> pointCounts; // the curve's point count as each message arrived
};
WindowLog windowLog;

LRESULT CALLBACK recorderProc(HWND window, UINT msg, WPARAM wParam, LPARAM lParam) {
    if (windowLog.recording) {
        windowLog.received.push_back(SentMessage{msg, wParam, lParam});
        if (windowLog.curve)
            windowLog.pointCounts.push_back(windowLog.curve->PointCount());
        return 0;
    }
    return DefWindowProcA(window, msg, wParam, lParam);
}

/// The client's notification window: registered and created on first use, destroyed at
/// the end of each test case.
class ClientWindow {
public:
    ClientWindow() {
        static const char* const kClass = "CurveCtlTestClient";
        static bool registered = false;
        if (!registered) {
            WNDCLASSA wc{};
            wc.lpfnWndProc = recorderProc;
            wc.hInstance = GetModuleHandleA(nullptr);
            wc.lpszClassName = kClass;
            registered = RegisterClassA(&wc) != 0;
        }
        hwnd_ = CreateWindowExA(0, kClass, "client", WS_OVERLAPPEDWINDOW, 0, 0, 200, 100, nullptr,
                                nullptr, GetModuleHandleA(nullptr), nullptr);
    }
    ~ClientWindow() {
        if (hwnd_)
            DestroyWindow(hwnd_);
    }
    HWND handle() const { return hwnd_; }

    /// Starts recording: drains what is queued so that only the edit's messages count.
    void Start(Curve* curve = nullptr) {
        MSG m;
        while (PeekMessageA(&m, nullptr, 0, 0, PM_REMOVE))
            DispatchMessageA(&m);
        windowLog = WindowLog{};
        windowLog.curve = curve;
        windowLog.recording = true;
    }
    std::vector<SentMessage> Stop() {
        windowLog.recording = false;
        return windowLog.received;
    }

private:
    HWND hwnd_ = nullptr;
};

} // namespace

TEST_CASE("a client window receives exactly the messages of each edit, in order") {
    ClientWindow client;
    REQUIRE(client.handle() != nullptr);
    for (const MessageScenario& s : MessageScenarios()) {
        CAPTURE(s.name);
        CurveFixture f(s.knots);
        if (s.prepare)
            s.prepare(f.curve());
        f.control().SetNotifyWindow(client.handle());
        client.Start();
        const std::vector<SentMessage> expected = s.act(f.curve());
        CHECK(client.Stop() == expected);
    }
}

TEST_CASE("the window's handler runs inside the edit, after the table changed") {
    ClientWindow client;
    REQUIRE(client.handle() != nullptr);
    CurveFixture f(
        {Knot(0.0f, 0.0f), Knot(0.2f, 0.2f), Knot(0.4f, 0.4f), Knot(0.6f, 0.6f), Knot(1.0f, 1.0f)});
    Curve& c = f.curve();
    Select(c, {1, 3});
    f.control().SetNotifyWindow(client.handle());

    client.Start(&c);
    c.DeleteSelectedKnots();           // deleted 3 (4 points left), then deleted 1 (3 left)
    c.InsertKnotAtX(kNow, 0, 0.1f, 1); // inserted at 1 (4 points), then the selection
    const std::vector<SentMessage> got = client.Stop();
    CHECK(got == std::vector<SentMessage>{
                     From(c, CURVE_MSG_POINT_DELETED, 3), From(c, CURVE_MSG_POINT_DELETED, 1),
                     From(c, CURVE_MSG_POINT_INSERTED, 1), From(c, CURVE_MSG_SELECTION, 1)});
    CHECK(windowLog.pointCounts == std::vector<int>{4, 3, 4, 4});
}

TEST_CASE("a destroyed client window gets nothing and the edits still complete") {
    CurveFixture f({Knot(0.0f, 0.0f), Knot(0.5f, 0.5f), Knot(1.0f, 1.0f)});
    Curve& c = f.curve();
    {
        ClientWindow gone;
        f.control().SetNotifyWindow(gone.handle());
    }
    c.SetKnotPosition(kNow, 1, Point2(0.4f, 0.45f));
    c.InsertKnotAtX(kNow, 0, 0.2f, 1);
    CHECK(c.PointCount() == 4);
    CHECK(c.Knots()[2].pos == Point2(0.4f, 0.45f));
}
