#include "host/controller.h"

#include "host/hold.h"

#include <algorithm>
#include <vector>

namespace {

int animateOn = 0;         // animate mode as the user set it
int animateSuspended = 0;  // SuspendAnimate calls not yet resumed

struct Key {
    TimeValue t;
    Point3 v;
};

/// Keyframed Point3 controller: no keys means one constant value; with keys the value is
/// linear between neighbouring keys and constant before the first and after the last.
class Point3KeyControl : public Control {
public:
    Class_ID ClassID() override { return Class_ID(0x118f7e02, 0xffee238a); }
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
            float u = float(t - lo->t) / float(hi->t - lo->t);
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
        if (theHold.Holding()) theHold.Put(new StateRestore(this));
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
            for (Key& key : keys_) key.v = key.v + d;
        }
        NotifyDependents(FOREVER, PART_ALL, REFMSG_CHANGE);
    }

    int NumKeys() override { return int(keys_.size()); }
    TimeValue GetKeyTime(int i) override {
        return (i >= 0 && i < NumKeys()) ? keys_[i].t : 0;
    }

    RefTargetHandle Clone(RemapDir& remap) override {
        auto* c = new Point3KeyControl;
        c->keys_ = keys_;
        c->constant_ = constant_;
        BaseClone(this, c, remap);
        return c;
    }

    IOResult Save(ISave* isave) override {
        isave->BeginChunk(0x0100);
        isave->Write(&constant_, sizeof(constant_), nullptr);
        isave->EndChunk();
        for (const Key& k : keys_) {
            isave->BeginChunk(0x0110);
            isave->Write(&k.t, sizeof(k.t), nullptr);
            isave->Write(&k.v, sizeof(k.v), nullptr);
            isave->EndChunk();
        }
        return IO_OK;
    }

    IOResult Load(ILoad* iload) override {
        keys_.clear();
        IOResult res;
        while ((res = iload->OpenChunk()) == IO_OK) {
            ULONG nr = 0;
            switch (iload->CurChunkID()) {
            case 0x0100:
                res = iload->Read(&constant_, sizeof(constant_), &nr);
                break;
            case 0x0110: {
                Key k{};
                res = iload->Read(&k.t, sizeof(k.t), &nr);
                if (res == IO_OK) res = iload->Read(&k.v, sizeof(k.v), &nr);
                // Keys arrive in time order from our own writer; keep the table sorted
                // whatever the file says.
                if (res == IO_OK) {
                    auto it = std::lower_bound(keys_.begin(), keys_.end(), k.t,
                                               [](const Key& a, TimeValue b) { return a.t < b; });
                    if (it != keys_.end() && it->t == k.t)
                        it->v = k.v;
                    else
                        keys_.insert(it, k);
                }
                break;
            }
            default:
                break;
            }
            iload->CloseChunk();
            if (res != IO_OK) return res;
        }
        return IO_OK;
    }

private:
    Key* keyAt(TimeValue t) {
        for (Key& k : keys_)
            if (k.t == t) return &k;
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
        Point3KeyControl* c_;  // the controller, pinned while this record lives
        std::vector<Key> beforeKeys_, afterKeys_;
        Point3 beforeConst_, afterConst_;
    };

    std::vector<Key> keys_;  // sorted by time, no two at one time
    Point3 constant_;        // the value while there are no keys
};

}  // namespace

Control* NewDefaultPoint3Controller() { return new Point3KeyControl; }

BOOL Animating() { return (animateOn && animateSuspended == 0) ? TRUE : FALSE; }
void AnimateOn() { animateOn = 1; }
void AnimateOff() { animateOn = 0; }
void SuspendAnimate() { ++animateSuspended; }
void ResumeAnimate() {
    if (animateSuspended > 0) --animateSuspended;
}
