#include "host/controller.h"

#include "host/chunk_values.h"
#include "host/class_desc.h"
#include "host/hold.h"

#include <algorithm>
#include <cstdint>
#include <new>
#include <vector>

namespace {

int animateOn = 0;        // animate mode as the user set it
int animateSuspended = 0; // SuspendAnimate calls not yet resumed

struct Key {
    TimeValue t;
    Point3 v;
};

/// Keyframed Point3 controller: no keys means one constant value; with keys the value is
/// linear between neighbouring keys and constant before the first and after the last.
class Point3KeyControl : public Control {
public:
    Class_ID ClassID() override { return POINT3_KEY_CONTROL_CLASS_ID; }
    SClass_ID SuperClassID() override { return CTRL_POINT3_CLASS_ID; }
    void GetClassName(CStr& s) override { s = "Point3 Keys"; }
    BOOL IsAnimated() override { return keys_.empty() ? FALSE : TRUE; }

    void GetValue(TimeValue t, void* val, Interval& valid, GetSetMethod method) override {
        Point3 v;
        Interval iv = FOREVER;
        if (keys_.empty()) {
            v = constant_;
        } else if (keys_.size() == 1) {
            v = keys_[0].v;
        } else if (t <= keys_.front().t) {
            v = keys_.front().v;
            iv.Set(TIME_NegInfinity, keys_.front().t);
        } else if (t >= keys_.back().t) {
            v = keys_.back().v;
            iv.Set(keys_.back().t, TIME_PosInfinity);
        } else {
            auto hi = std::upper_bound(keys_.begin(), keys_.end(), t,
                                       [](TimeValue a, const Key& k) { return a < k.t; });
            auto lo = hi - 1;
            // Key times may lie as far apart as the whole time line (a loaded scene can put
            // them anywhere): take the differences in 64 bits.
            const float u = float(double(int64_t(t) - lo->t) / double(int64_t(hi->t) - lo->t));
            v = lo->v + (hi->v - lo->v) * u;
            iv.SetInstant(t);
        }
        valid &= iv;
        Point3* out = static_cast<Point3*>(val);
        *out = method == CTRL_RELATIVE ? *out + v : v;
    }

    void SetValue(TimeValue t, void* val, int, GetSetMethod method) override {
        Point3 v = *static_cast<Point3*>(val);
        if (method == CTRL_RELATIVE) {
            Interval ignored = FOREVER;
            Point3 cur;
            GetValue(t, &cur, ignored, CTRL_ABSOLUTE);
            v = cur + v;
        }
        if (theHold.Holding())
            theHold.Put(new StateRestore(this));
        if (Animating()) {
            auto it = std::lower_bound(keys_.begin(), keys_.end(), t,
                                       [](const Key& k, TimeValue a) { return k.t < a; });
            if (it != keys_.end() && it->t == t)
                it->v = v;
            else
                keys_.insert(it, Key{t, v});
        } else if (keys_.empty()) {
            constant_ = v;
        } else if (Key* k = keyAt(t)) {
            // Outside animate mode a set exactly at a key's time edits that key, so a
            // caller can rework an animation key by key.
            k->v = v;
        } else {
            Interval ignored = FOREVER;
            Point3 cur;
            GetValue(t, &cur, ignored, CTRL_ABSOLUTE);
            Point3 d = v - cur;
            for (Key& key : keys_)
                key.v = key.v + d;
        }
        NotifyDependents(FOREVER, PART_ALL, REFMSG_CHANGE);
    }

    int NumKeys() override { return int(keys_.size()); }
    TimeValue GetKeyTime(int i) override { return (i >= 0 && i < NumKeys()) ? keys_[i].t : 0; }

    RefTargetHandle Clone(RemapDir& remap) override {
        auto* c = new Point3KeyControl;
        c->keys_ = keys_;
        c->constant_ = constant_;
        BaseClone(this, c, remap);
        return c;
    }

    // Chunks: 0x0100 the constant value (three floats); 0x0110 one key each: time (int)
    // and value (three floats). All numbers little-endian.
    IOResult Save(ISave* isave) override {
        isave->BeginChunk(0x0100);
        writePoint(isave, constant_);
        isave->EndChunk();
        for (const Key& k : keys_) {
            isave->BeginChunk(0x0110);
            WriteLE32(isave, int32_t(k.t));
            writePoint(isave, k.v);
            isave->EndChunk();
        }
        return IO_OK;
    }

    // Reads what Save wrote in any order. A key chunk cut short ends the load with its
    // error (the keys read before it stay); keys of equal time keep the last one read.
    IOResult Load(ILoad* iload) override {
        keys_.clear();
        constant_ = Point3();
        std::vector<Key> loaded;
        IOResult res;
        while ((res = iload->OpenChunk()) == IO_OK) {
            switch (iload->CurChunkID()) {
            case 0x0100:
                res = readPoint(iload, constant_);
                break;
            case 0x0110: {
                Key k{};
                int32_t t = 0;
                res = ReadLE32(iload, t);
                if (res == IO_OK)
                    res = readPoint(iload, k.v);
                k.t = t;
                if (res == IO_OK)
                    loaded.push_back(k);
                break;
            }
            default:
                break;
            }
            const IOResult closed = iload->CloseChunk();
            if (res == IO_OK)
                res = closed;
            if (res != IO_OK)
                break;
        }
        // Sorted once at the end rather than inserted one by one: a file with many keys
        // costs n log n, not n squared.
        std::stable_sort(loaded.begin(), loaded.end(),
                         [](const Key& a, const Key& b) { return a.t < b.t; });
        for (const Key& k : loaded) {
            if (!keys_.empty() && keys_.back().t == k.t)
                keys_.back().v = k.v;
            else
                keys_.push_back(k);
        }
        // A damaged chunk header is a failed read like any other; only the end of the
        // chunks is success.
        return res == IO_END ? IO_OK : res;
    }

private:
    static void writePoint(ISave* isave, const Point3& p) {
        WriteLE32(isave, p.x);
        WriteLE32(isave, p.y);
        WriteLE32(isave, p.z);
    }
    /// All three or, on a short read, none.
    static IOResult readPoint(ILoad* iload, Point3& p) {
        unsigned char b[12];
        ULONG got = 0;
        const IOResult r = iload->Read(b, sizeof(b), &got);
        if (r == IO_OK)
            p = Point3(UnpackLE32<float>(b), UnpackLE32<float>(b + 4), UnpackLE32<float>(b + 8));
        return r;
    }

    Key* keyAt(TimeValue t) {
        for (Key& k : keys_)
            if (k.t == t)
                return &k;
        return nullptr;
    }

    /// Undo record of a whole controller state.
    class StateRestore : public RestoreObj {
    public:
        explicit StateRestore(Point3KeyControl* c)
            : c_(c), beforeKeys_(c->keys_), beforeConst_(c->constant_) {
            c_->HoldPin();
        }
        ~StateRestore() override { c_->HoldUnpin(); }
        void Restore(int isUndo) override {
            if (isUndo) {
                afterKeys_ = c_->keys_;
                afterConst_ = c_->constant_;
            }
            c_->keys_ = beforeKeys_;
            c_->constant_ = beforeConst_;
            c_->NotifyDependents(FOREVER, PART_ALL, REFMSG_CHANGE);
        }
        void Redo() override {
            c_->keys_ = afterKeys_;
            c_->constant_ = afterConst_;
            c_->NotifyDependents(FOREVER, PART_ALL, REFMSG_CHANGE);
        }
        CStr Description() override { return CStr("Point3 key restore"); }

    private:
        Point3KeyControl* c_; // the controller, pinned while this record lives
        std::vector<Key> beforeKeys_, afterKeys_;
        Point3 beforeConst_, afterConst_;
    };

    std::vector<Key> keys_; // sorted by time, no two at one time
    Point3 constant_;       // the value while there are no keys
};

/// The controller's class, so that a scene can re-create saved controllers.
class Point3KeyControlClassDesc : public ClassDesc {
public:
    int IsPublic() override { return 0; }
    void* Create(BOOL) override {
        return static_cast<Animatable*>(new (std::nothrow) Point3KeyControl);
    }
    const char* ClassName() override { return "Point3 Keys"; }
    SClass_ID SuperClassID() override { return CTRL_POINT3_CLASS_ID; }
    Class_ID ClassID() override { return POINT3_KEY_CONTROL_CLASS_ID; }
    const char* Category() override { return ""; }
};

Point3KeyControlClassDesc point3KeyControlDesc;

// Built-in classes are in the class directory from the moment the host library loads,
// before any module is.
struct BuiltinClassRegistration {
    BuiltinClassRegistration() { ClassDirectory::Get().AddClass(&point3KeyControlDesc); }
} builtinClassRegistration;

} // namespace

Control* NewDefaultPoint3Controller() { return new Point3KeyControl; }
ClassDesc* GetPoint3ControllerClassDesc() { return &point3KeyControlDesc; }

BOOL Animating() { return (animateOn && animateSuspended == 0) ? TRUE : FALSE; }
void AnimateOn() { animateOn = 1; }
void AnimateOff() { animateOn = 0; }
void SuspendAnimate() { ++animateSuspended; }
void ResumeAnimate() {
    if (animateSuspended > 0)
        --animateSuspended;
}
