// Test support for the whole-curve operations, the control's undo records and the
// editor's commands: a recording stand-in for the editor window, an answerer for the one
// Yes/No question of the module, a dependent that counts change notices, random curves,
// and exact snapshots of a control's curves. (Client messages and client objects come
// from test_support.h.)
#pragma once

#include "doctest/doctest.h"

#include "control/control_undo.h"
#include "control/curve_control.h"
#include "curve/curve.h"
#include "host/controller.h"
#include "host/hold.h"
#include "platform/platform.h"
#include "test_support.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <random>
#include <string>
#include <vector>

namespace wholetest {

// ---------------------------------------------------------------------------------------
// Host state

/// The host state every test expects (module strings, an empty undo history, animate mode
/// off, time 0), on entry and on exit.
struct CleanHold {
    CleanHold() { testsupport::ResetHostState(); }
    ~CleanHold() { testsupport::ResetHostState(); }
};

// ---------------------------------------------------------------------------------------
// A window handle the editor stand-in can own. On Windows a real (hidden) window, so that
// a message box may name it as its owner.

class TestWindow {
public:
    TestWindow() {
#ifdef _WIN32
        hwnd_ = CreateWindowExA(0, "STATIC", "curve editor stand-in", WS_POPUP, 0, 0, 10, 10,
                                nullptr, nullptr, GetModuleHandleA(nullptr), nullptr);
#else
        hwnd_ = reinterpret_cast<HWND>(std::uintptr_t(0x5150));
#endif
    }
    ~TestWindow() {
#ifdef _WIN32
        if (hwnd_)
            DestroyWindow(hwnd_);
#endif
    }
    TestWindow(const TestWindow&) = delete;
    TestWindow& operator=(const TestWindow&) = delete;
    HWND Handle() const { return hwnd_; }

private:
    HWND hwnd_ = nullptr; // owned
};

// ---------------------------------------------------------------------------------------
// The editor window as the control sees it (IEditorView), recording what it is asked.
// Like the real editor it keeps its own copy of the display bits and puts the display
// undo record when it receives new bits.

class FakeEditor : public IEditorView {
public:
    explicit FakeEditor(CurveControl& control) : control_(control) {
        display = control.GetShownCurves();
        control_.AttachEditor(window_.Handle(), this);
    }
    ~FakeEditor() override { control_.DetachEditor(); }

    HWND Handle() override { return window_.Handle(); }
    void RedrawGraph() override { calls.push_back("RedrawGraph"); }
    void InvalidateGraph() override { calls.push_back("InvalidateGraph"); }
    void CaptureView(float& h, float& v, int& hs, int& vs) override {
        h = v = 1.0f;
        hs = vs = 0;
    }
    void SetZoom(float, float) override {}
    void SetScroll(int, int) override {}
    void SetCaption(const char*) override {}
    void SelectEditMode(int, int) override {}
    void GetEditMode(int& mode, int& flyOff) override {
        mode = 400;
        flyOff = 0;
    }
    void SetDisplayMode(const BitArray& bits) override {
        const BitArray old = display;
        BitArray now = bits;
        if (now.GetSize() < old.GetSize())
            now.SetSize(old.GetSize(), 1);
        display = now;
        if (theHold.Holding())
            theHold.Put(new DeformDispModeRestore(&control_, old, now));
    }
    BitArray DisplayMode() override { return display; }
    void RebuildCurveButtons() override { calls.push_back("RebuildCurveButtons"); }
    void SendCommand(int) override {}
    bool AspectRescale(int direction) override {
        calls.push_back("AspectRescale(" + std::to_string(direction) + ")");
        return aspectLocked;
    }
    void InvalidateRuler() override { calls.push_back("InvalidateRuler"); }
    void RedrawRuler() override { calls.push_back("RedrawRuler"); }

    int Count(const std::string& call) const {
        int n = 0;
        for (const std::string& c : calls)
            n += (c == call);
        return n;
    }

    BitArray display;               // the editor's copy of the display bits
    bool aspectLocked = false;      // answer of AspectRescale
    std::vector<std::string> calls; // every repaint-related call, in order

private:
    CurveControl& control_;
    TestWindow window_;
};

// ---------------------------------------------------------------------------------------
// The module's Yes/No question, answered by the test. Natively through the platform's
// question sink; on Windows a thread timer finds the real message box ("#32770") while
// it runs its modal loop, reads it and presses the answer.

struct Question {
    int asked = 0;       // how many questions were asked
    std::string caption; // of the last one
    std::string text;
    HWND owner = nullptr;
};

class AnswerQuestions {
public:
    explicit AnswerQuestions(bool yes) {
        answer_ = yes;
        last_ = Question();
#ifdef _WIN32
        timer_ = SetTimer(nullptr, 0, 30, &AnswerQuestions::onTimer);
#else
        platform::SetQuestionSink(&AnswerQuestions::sink);
#endif
    }
    ~AnswerQuestions() {
#ifdef _WIN32
        KillTimer(nullptr, timer_);
#else
        platform::SetQuestionSink(nullptr);
#endif
    }
    AnswerQuestions(const AnswerQuestions&) = delete;
    AnswerQuestions& operator=(const AnswerQuestions&) = delete;

    const Question& Last() const { return last_; }

private:
#ifdef _WIN32
    static BOOL CALLBACK findDialog(HWND w, LPARAM out) {
        char cls[16] = {};
        GetClassNameA(w, cls, sizeof(cls));
        if (std::strcmp(cls, "#32770") != 0 || !IsWindowVisible(w))
            return TRUE;
        *reinterpret_cast<HWND*>(out) = w;
        return FALSE;
    }
    static void CALLBACK onTimer(HWND, UINT, UINT_PTR, DWORD) {
        HWND dlg = nullptr;
        EnumThreadWindows(GetCurrentThreadId(), &AnswerQuestions::findDialog,
                          reinterpret_cast<LPARAM>(&dlg));
        if (!dlg || dlg == answered_)
            return;
        answered_ = dlg;
        char buf[256] = {};
        GetWindowTextA(dlg, buf, sizeof(buf));
        last_.caption = buf;
        GetDlgItemTextA(dlg, 0xFFFF, buf, sizeof(buf)); // the message box's text control
        last_.text = buf;
        last_.owner = GetWindow(dlg, GW_OWNER);
        ++last_.asked;
        PostMessageA(dlg, WM_COMMAND, answer_ ? IDYES : IDNO, 0);
    }
    UINT_PTR timer_ = 0;
    static inline HWND answered_ = nullptr; // a dialog is answered once
#else
    static bool sink(HWND owner, const char* caption, const char* text) {
        ++last_.asked;
        last_.caption = caption ? caption : "";
        last_.text = text ? text : "";
        last_.owner = owner;
        return answer_;
    }
#endif
    static inline bool answer_ = false;
    static inline Question last_;
};

// ---------------------------------------------------------------------------------------
// A dependent of one target that counts the change notices it receives.

class Watcher : public ReferenceMaker {
public:
    explicit Watcher(ReferenceTarget* target) { ReplaceReference(0, target); }
    ~Watcher() override { DeleteAllRefsFromMe(); }
    int NumRefs() override { return 1; }
    RefTargetHandle GetReference(int i) override { return i == 0 ? target_ : nullptr; }
    RefResult NotifyRefChanged(const Interval& iv, RefTargetHandle, PartID& part, RefMessage msg,
                               BOOL) override {
        notices.push_back({iv, part, msg});
        return REF_SUCCEED;
    }

    struct Notice {
        Interval interval;
        PartID part;
        RefMessage message;
    };
    std::vector<Notice> notices;

protected:
    void SetReference(int i, RefTargetHandle t) override {
        if (i == 0)
            target_ = t;
    }

private:
    RefTargetHandle target_ = nullptr;
};

// ---------------------------------------------------------------------------------------
// Building curves

/// Replaces the points of `c` by `knots` (no undo record: set-up only).
inline void SetPoints(Curve& c, const std::vector<CurveKnot>& knots) {
    const bool holding = theHold.Holding();
    if (holding)
        theHold.Suspend();
    c.SetPointCount(int(knots.size()));
    if (holding)
        theHold.Resume();
    {
        auto lock = c.LockPointTable();
        for (std::size_t i = 0; i < knots.size(); ++i)
            c.Knots()[i] = knots[i];
        c.InvalidateCache();
    }
}

inline CurveKnot Knot(float x, float y, uint32_t flags = KNOT_TYPE_CORNER, Point2 in = Point2(),
                      Point2 out = Point2()) {
    return CurveKnot(Point2(x, y), in, out, flags);
}

/// Gives point i a position controller at its table position (no undo record).
inline Control* Animate(Curve& c, int i) {
    const bool holding = theHold.Holding();
    if (holding)
        theHold.Suspend();
    Control* ctrl = NewDefaultPoint3Controller();
    c.ReplaceReference(i, ctrl);
    Point3 v(c.Knots()[i].pos.x, c.Knots()[i].pos.y, 0.0f);
    ctrl->SetValue(0, &v);
    if (holding)
        theHold.Resume();
    return ctrl;
}

/// Random curves whose numbers sit on a 1/4096 grid, so that every sum, difference and
/// halving the mirror performs is exact in single precision: round trips can be checked
/// for exact equality.
class RandomCurves {
public:
    explicit RandomCurves(uint32_t seed) : rng_(seed) {}

    int Int(int lo, int hi) { return lo + int(rng_() % uint32_t(hi - lo + 1)); }
    float Grid(int lo, int hi) { return float(Int(lo * 4096, hi * 4096)) / 4096.0f; }

    /// 2 to 9 points from x 0 to `xHigh` in strictly increasing x.
    std::vector<CurveKnot> Points(float xHigh) {
        const int n = Int(2, 9);
        std::vector<CurveKnot> k(static_cast<std::size_t>(n));
        const int steps = int(xHigh * 4096.0f);
        std::vector<int> xs{0, steps};
        while (int(xs.size()) < n) {
            const int x = Int(1, steps - 1);
            bool fresh = true;
            for (int v : xs)
                fresh = fresh && v != x;
            if (fresh)
                xs.push_back(x);
        }
        std::sort(xs.begin(), xs.end());
        for (int i = 0; i < n; ++i) {
            const uint32_t type = uint32_t(Int(1, 3));
            uint32_t flags = type | (Int(0, 1) ? KNOT_SELECTED : 0u);
            if (i == 0 || i == n - 1)
                flags |= KNOT_ENDPOINT;
            k[i] = CurveKnot(Point2(float(xs[i]) / 4096.0f, Grid(-2, 2)),
                             Point2(-Grid(0, 1) / 8.0f, Grid(-1, 1)),
                             Point2(Grid(0, 1) / 8.0f, Grid(-1, 1)), flags);
        }
        return k;
    }

private:
    std::mt19937 rng_; // fixed seed: the same curves on every platform
};

// ---------------------------------------------------------------------------------------
// Exact snapshots

struct CurveState {
    std::vector<CurveKnot> knots;
    std::vector<ReferenceTarget*> controllers;
    float fittedWidth = 0.0f;
    Curve* object = nullptr;
};

struct ControlState {
    std::vector<CurveState> curves;
    BitArray shown;
};

inline ControlState Snapshot(CurveControl& control) {
    ControlState s;
    for (int i = 0; i < control.GetCurveCount(); ++i) {
        Curve* c = control.GetCurveObject(i);
        CurveState cs;
        cs.object = c;
        cs.fittedWidth = c->FittedWidth();
        for (int j = 0; j < c->PointCount(); ++j) {
            cs.knots.push_back(c->Knots()[j]);
            cs.controllers.push_back(c->Controller(j));
        }
        s.curves.push_back(cs);
    }
    s.shown = control.GetShownCurves();
    return s;
}

/// Bitwise equality of every point record, the same controller objects, the same fitted
/// widths, the same curve objects and the same display bits.
inline bool SameState(const ControlState& a, const ControlState& b) {
    if (a.curves.size() != b.curves.size() || a.shown != b.shown)
        return false;
    for (std::size_t i = 0; i < a.curves.size(); ++i) {
        const CurveState& x = a.curves[i];
        const CurveState& y = b.curves[i];
        if (x.object != y.object || x.knots.size() != y.knots.size() ||
            x.controllers != y.controllers ||
            std::memcmp(&x.fittedWidth, &y.fittedWidth, sizeof(float)) != 0)
            return false;
        if (!x.knots.empty() &&
            std::memcmp(x.knots.data(), y.knots.data(), x.knots.size() * sizeof(CurveKnot)) != 0)
            return false;
    }
    return true;
}

/// A control with `curves` curves for one test. The test holds it through a reference, as
/// a client would, so other dependents coming and going never delete it early; dropping
/// the reference at the end releases it (undo records that still pin it keep it until they
/// go).
class TestControl {
public:
    explicit TestControl(int curves) {
        owner_.ReplaceReference(0, new CurveControl);
        control_ = static_cast<CurveControl*>(owner_.GetReference(0));
        control_->SetCurveCount(curves, FALSE);
    }
    TestControl(const TestControl&) = delete;
    TestControl& operator=(const TestControl&) = delete;
    CurveControl& operator*() { return *control_; }
    CurveControl* operator->() { return control_; }
    CurveControl* get() { return control_; }
    Curve& curve(int i) { return *control_->GetCurveObject(i); }

private:
    class Owner : public ReferenceMaker {
    public:
        ~Owner() override { DeleteAllRefsFromMe(); }
        int NumRefs() override { return 1; }
        RefTargetHandle GetReference(int) override { return target_; }

    protected:
        void SetReference(int, RefTargetHandle t) override { target_ = t; }

    private:
        RefTargetHandle target_ = nullptr;
    };

    Owner owner_;                     // holds the control's one test reference
    CurveControl* control_ = nullptr; // the referenced control
};

inline bool AnyController(Curve& c) {
    for (int i = 0; i < c.PointCount(); ++i)
        if (c.Controller(i))
            return true;
    return false;
}

} // namespace wholetest
