// CurveControlEx: the extensions of a CurveControl (ICurveCtlEx, curvectl/icurvectl_ex.h),
// a member object of the control that answers GetInterface(CURVE_CTL_EX_INTERFACE_ID).
// Being a separate object, it leaves the control's own ICurveCtl table exactly as it is.
//
// It holds the extended flag word and the settings the extensions need; the editor and its
// modes read them through Has() and the getters. Saved with the control in chunk 0x0480,
// and only when the flag word is not 0 (control_ext.cpp, docs/scene-format.md).
#pragma once

#include "curvectl/icurvectl_ex.h"
#include "host/iosave.h"

class CurveControl;

class CurveControlEx final : public ICurveCtlEx {
public:
    explicit CurveControlEx(CurveControl& owner) : owner_(owner) {}
    CurveControlEx(const CurveControlEx&) = delete;
    CurveControlEx& operator=(const CurveControlEx&) = delete;
    ~CurveControlEx() = default;

    /// @name ICurveCtlEx
    /// @{
    void SetExtendedFlags(DWORD flags) override;
    DWORD GetExtendedFlags() override { return flags_; }
    void SetSnapEnabled(BOOL on) override;
    BOOL GetSnapEnabled() override { return snap_ ? TRUE : FALSE; }
    void SetOnionSkin(int framesEachSide, int frameStep) override;
    void GetOnionSkin(int* framesEachSide, int* frameStep) override;
    /// @}

    /// @name For the control, the editor and the modes
    /// @{
    /// Whether every bit of `bits` (CCX_...) is set.
    bool Has(DWORD bits) const { return bits != 0 && (flags_ & bits) == bits; }
    /// Snapping applies: CCX_SNAP set and the toggle on.
    bool Snapping() const { return Has(CCX_SNAP) && snap_; }
    int OnionFrames() const { return onionFrames_; }
    int OnionStep() const { return onionStep_; }
    /// Every setting of `other` (a clone, an undo snapshot).
    void CopyFrom(const CurveControlEx& other);
    /// Chunk 0x0480 with its sub-chunks when the flag word is not 0; nothing otherwise.
    void Save(ISave* isave) const;
    /// Reads the sub-chunks of chunk 0x0480, just opened; the first read error, or a
    /// setting out of range, ends it with IO_ERROR (settings read before it stay).
    IOResult Load(ILoad* iload);
    /// @}

private:
    CurveControl& owner_;                        // the control this belongs to
    DWORD flags_ = 0;                            // CCX_... bits, unnamed ones kept as given
    int snap_ = 0;                               // the snap toggle (effective under CCX_SNAP)
    int onionFrames_ = CCX_ONION_DEFAULT_FRAMES; // skins on each side of the current time
    int onionStep_ = CCX_ONION_DEFAULT_STEP;     // time between two skins (host units)
};

/// The chunk of a control that holds its extensions (a chunk of chunks).
constexpr USHORT kControlExtensionChunk = 0x0480;
