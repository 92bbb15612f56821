/// @file
/// Helpers for client plug-ins, header only (a client still never links the module):
/// creating a curve control in one call, reading a reference as a control without a cast,
/// and keeping the control's client pointer registered exactly as long as the client
/// object lives.
///
///     class MyEffect : public ReferenceTarget, public ICurveCtlClient {
///         ICurveCtl* control_ = nullptr;                // reference 0
///         curvectl::ClientRegistration registration_{this};
///
///         void SetReference(int i, RefTargetHandle target) override {
///             if (i != 0)
///                 return;
///             control_ = curvectl::AsCurveControl(target);
///             registration_.Attach(control_);           // also after a load or an undo
///         }
///     };
///
///     ReplaceReference(0, curvectl::CreateCurveControl());
#pragma once

#include "curvectl/icurvectl.h"
#include "host/animatable.h"
#include "host/class_desc.h"
#include "host/hold.h"

/// The client helpers of the curve control SDK.
namespace curvectl {

/// `target` as a curve control: null when it is null or not an object of the curve
/// control's class (a damaged scene may hold anything in a reference slot).
///
/// Any thread that may read `target`; the pointer stays valid as long as `target` does.
inline ICurveCtl* AsCurveControl(ReferenceTarget* target) {
    if (!target || target->SuperClassID() != CURVE_CONTROL_SUPER_CLASS_ID ||
        target->ClassID() != CURVE_CONTROL_CLASS_ID)
        return nullptr;
    return static_cast<ICurveCtl*>(target);
}

/// A new curve control, made through the module's class descriptor as the host makes
/// every object; null when the curve control module is not loaded (its class is not in
/// the host's class directory) or the control could not be made.
///
/// The new control has no dependents yet: make it a reference of your object at once
/// (`ReplaceReference`), which then owns it; or delete it with `DeleteThis`.
/// User-interface thread.
inline ICurveCtl* CreateCurveControl() {
    ClassDesc* desc =
        ClassDirectory::Get().FindClass(CURVE_CONTROL_SUPER_CLASS_ID, CURVE_CONTROL_CLASS_ID);
    if (!desc)
        return nullptr;
    // A descriptor hands out its object as the object's ReferenceTarget base.
    auto* made = static_cast<ReferenceTarget*>(desc->Create(FALSE));
    ICurveCtl* control = AsCurveControl(made);
    if (made && !control)
        made->DeleteThis(); // another module registered a class under the control's id
    return control;
}

/// Keeps one client object registered with (at most) one curve control, and unregisters
/// it when it is destroyed, so that a control never keeps a pointer to a dead client.
///
/// Make it a member of the client object, constructed with the object's `this`, and
/// attach it to the control wherever the object gets its control (creation, a scene load,
/// undo: the object's `SetReference`). While attached it holds a reference of its own to
/// the control (never recorded for undo), so the control cannot be deleted under it by
/// the client dropping its reference first; and if something deletes the control anyway,
/// the registration learns of it and lets go.
///
/// User-interface thread only, like the control.
class ClientRegistration final : public ReferenceMaker {
public:
    /// A registration of `client` (which may be null), attached to no control yet.
    explicit ClientRegistration(ReferenceTarget* client) : client_(client) {}
    /// Unregisters the client from its control (RegisterClientObject(nullptr)) and lets
    /// the control go.
    ~ClientRegistration() override { Attach(nullptr); }

    /// Registers the client with `control` (null: with none). A control attached before
    /// is told first that it has no client any more. Attaching the control already
    /// attached registers the client with it again.
    void Attach(ICurveCtl* control) {
        if (control_ && control_ != control)
            control_->RegisterClientObject(nullptr);
        // The registration's own reference is bookkeeping, not an edit: it must neither
        // enter the undo history nor be changed back by undo.
        theHold.Suspend();
        ReplaceReference(0, control);
        theHold.Resume();
        if (control_)
            control_->RegisterClientObject(client_);
    }

    /// The attached control; null when none is attached or it was deleted.
    ICurveCtl* Control() const { return control_; }
    /// The client object given to the constructor.
    ReferenceTarget* Client() const { return client_; }

    /// One reference: the attached control.
    int NumRefs() override { return 1; }
    /// The attached control for i = 0, else null.
    RefTargetHandle GetReference(int i) override { return i == 0 ? control_ : nullptr; }

protected:
    /// Called by the reference system only: when the control is attached, released or
    /// deleted.
    void SetReference(int i, RefTargetHandle target) override {
        if (i == 0)
            control_ = AsCurveControl(target);
    }

private:
    ReferenceTarget* client_;      // the object registered with the control; not owned
    ICurveCtl* control_ = nullptr; // reference 0: the attached control
};

} // namespace curvectl
