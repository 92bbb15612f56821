#include "test_support.h"

#include "host/chunk_values.h"
#include "host/controller.h"
#include "host/core_interface.h"
#include "host/heap.h"
#include "host/hold.h"
#include "host/scene.h"
#include "platform/platform.h"

#include <doctest/doctest.h>

#include <algorithm>

namespace testsupport {

void ResetHostState() {
#if defined(_WIN32)
    // The test program carries the module's resources (the .rc is linked into it).
    platform::SetModuleInstance(GetModuleHandleA(nullptr));
#else
    // Natively any non-null instance selects the built-in string table.
    static int instanceToken;
    platform::SetModuleInstance(reinterpret_cast<HINSTANCE>(&instanceToken));
#endif
    HostHeapFailAfter(-1); // a test that failed part way leaves no injected faults behind
    while (theHold.IsSuspended())
        theHold.Resume();
    theHold.End();
    theHold.Reset();
    AnimateOff();
    // Animate-mode suspensions nest without a query; a test that left some open must not
    // turn animate mode off for the next one.
    for (int i = 0; i < 64; ++i)
        ResumeAnimate();
    GetCOREInterface()->SetTime(0);
}

// ---------------------------------------------------------------------------------------
// MessageRecorder

int MessageRecorder::Count(UINT msg) const {
    return int(std::count_if(messages.begin(), messages.end(),
                             [msg](const ClientMessage& m) { return m.msg == msg; }));
}

void MessageRecorder::Record(UINT msg, WPARAM wParam, LPARAM lParam) {
    if (msg >= CURVE_MSG_SELECTION && msg <= CURVE_MSG_LBUTTONUP) {
        messages.push_back(ClientMessage{msg, wParam, lParam});
        if (onMessage)
            onMessage(messages.back());
    }
}

#if defined(_WIN32)

namespace {
const char* const kRecorderClass = "CurveCtlTestMessageRecorder";

LRESULT CALLBACK recorderProc(HWND hwnd, UINT msg, WPARAM wParam, LPARAM lParam) {
    if (msg == WM_NCCREATE) {
        auto* cs = reinterpret_cast<CREATESTRUCTA*>(lParam);
        SetWindowLongPtrA(hwnd, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(cs->lpCreateParams));
    }
    auto* self = reinterpret_cast<MessageRecorder*>(GetWindowLongPtrA(hwnd, GWLP_USERDATA));
    if (self && msg >= CURVE_MSG_SELECTION && msg <= CURVE_MSG_LBUTTONUP) {
        self->Record(msg, wParam, lParam);
        return 0;
    }
    return DefWindowProcA(hwnd, msg, wParam, lParam);
}
} // namespace

MessageRecorder::MessageRecorder() {
    static const ATOM atom = [] {
        WNDCLASSA wc{};
        wc.lpfnWndProc = recorderProc;
        wc.hInstance = GetModuleHandleA(nullptr);
        wc.lpszClassName = kRecorderClass;
        return RegisterClassA(&wc);
    }();
    REQUIRE(atom != 0);
    window_ = CreateWindowExA(0, kRecorderClass, "recorder", WS_OVERLAPPED, 0, 0, 10, 10, nullptr,
                              nullptr, GetModuleHandleA(nullptr), this);
    REQUIRE(window_ != nullptr);
}

MessageRecorder::~MessageRecorder() {
    if (window_)
        DestroyWindow(window_);
}

#else

namespace {
std::vector<MessageRecorder*>& liveRecorders() {
    static std::vector<MessageRecorder*> recorders;
    return recorders;
}

LRESULT deliver(HWND window, UINT msg, WPARAM wParam, LPARAM lParam) {
    for (MessageRecorder* r : liveRecorders())
        if (r->window() == window)
            r->Record(msg, wParam, lParam);
    return 0;
}
} // namespace

// The recorder's own address is its window token: unique while it lives.
MessageRecorder::MessageRecorder() : window_(reinterpret_cast<HWND>(this)) {
    liveRecorders().push_back(this);
    platform::SetMessageSink(&deliver);
}

MessageRecorder::~MessageRecorder() {
    auto& all = liveRecorders();
    all.erase(std::remove(all.begin(), all.end(), this), all.end());
    if (all.empty())
        platform::SetMessageSink(nullptr);
}

#endif

// ---------------------------------------------------------------------------------------
// Ranges from a file

void LoadRanges(ICurveCtl& control, float low, float high, float yLow, float yHigh) {
    unsigned char chunk[CHUNK_HEADER_SIZE + 16] = {0x38, 0x04, sizeof chunk, 0, 0, 0};
    PackLE32(chunk + 6, low);
    PackLE32(chunk + 10, high);
    PackLE32(chunk + 14, yLow);
    PackLE32(chunk + 18, yHigh);
    ChunkLoad in(chunk, sizeof chunk);
    REQUIRE(control.Load(&in) == IO_OK);
    in.RunPostLoadCallbacks();
}

// ---------------------------------------------------------------------------------------
// FakeClient

void* FakeClient::GetInterface(ULONG id) {
    if (id == CURVE_CLIENT_INTERFACE_ID)
        return static_cast<ICurveCtlClient*>(this);
    return ReferenceTarget::GetInterface(id);
}

BOOL FakeClient::GetCurveButtonImages(HIMAGELIST* out, ICurveCtl* control) {
    calls.push_back("images");
    lastControl = control;
    if (!images)
        return FALSE;
    *out = images;
    return TRUE;
}

BOOL FakeClient::GetCurveButtonText(int i, CStr& text, ICurveCtl* control) {
    calls.push_back("text " + std::to_string(i));
    lastControl = control;
    if (i < 0 || i >= int(texts.size()) || texts[i].empty())
        return FALSE;
    text = texts[i].c_str();
    return TRUE;
}

void FakeClient::ResetCurve(int i, ICurveCtl* control) {
    calls.push_back("reset " + std::to_string(i));
    lastControl = control;
    if (onReset)
        onReset(i, control);
}

void FakeClient::NewCurveCreated(int i, ICurveCtl* control) {
    calls.push_back("new " + std::to_string(i));
    lastControl = control;
    if (onNew)
        onNew(i, control);
}

} // namespace testsupport
