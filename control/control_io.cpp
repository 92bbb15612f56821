// CurveControl persistence: the control's settings as a flat run of chunks in the host's
// scene file. The curves are the control's references: the host saves and restores them
// (each curve writes its own chunks, curve_io.cpp), and CurveControlPostLoad reconnects
// them to the control once the whole file is read.
//
// Chunks, in the order they are written (all numbers 32-bit little-endian):
//   0x03E8  legacyInt
//   0x03F2  shownCurves in the host BitArray's saved form
//   0x0424  zoomFlyOff
//   0x0406  hZoom, vZoom (floats), zoomSet
//   0x0410  hScroll, vScroll, scrollSet
//   0x041A  placement (WINDOWPLACEMENT, eleven 32-bit fields, 44 bytes), placementSaved
//   0x042E  number of curves
//   0x0438  xRange low, high, yRange low, high (floats)
//   0x046A  flags
//   0x0474  toolMode
//   0x044C  reference id of the client object (only when it is saved too)
//   0x0456  title, zero-terminated
//   0x0480  the extensions (a chunk of chunks, control_ext.cpp); only when their flag
//           word is not 0, so a control that leaves them off writes what it always did
//
// The loader reads them in any order and skips chunks it does not know; a field whose
// chunk is missing keeps its constructor default. It does not trust the file: a curve
// count below zero or above CURVECTL_MAX_COUNT (curve/file_count.h), a chunk cut short or
// a header that overruns its chunk end the load with a read error (fields read before it
// keep their loaded values). The count is not measured against the bytes that follow: a
// control's curves are not in its own chunks, and a control saved alone loads its count.
#include "control/curve_control.h"

#include "curve/file_count.h"
#include "host/chunk_values.h"
#include "platform/res_string.h"

#include <new>

namespace {

constexpr USHORT kChunkLegacyInt = 0x03E8;
constexpr USHORT kChunkShownCurves = 0x03F2;
constexpr USHORT kChunkZoomFlyOff = 0x0424;
constexpr USHORT kChunkZoom = 0x0406;
constexpr USHORT kChunkScroll = 0x0410;
constexpr USHORT kChunkPlacement = 0x041A;
constexpr USHORT kChunkCurveCount = 0x042E;
constexpr USHORT kChunkRanges = 0x0438;
constexpr USHORT kChunkFlags = 0x046A;
constexpr USHORT kChunkToolMode = 0x0474;
constexpr USHORT kChunkClientObject = 0x044C;
constexpr USHORT kChunkTitle = 0x0456;

// WINDOWPLACEMENT as eleven 32-bit fields in declaration order: the layout the platform
// stores, written field by field so the file is the same on every build.
void packPlacement(unsigned char* b, const WINDOWPLACEMENT& wp) {
    const int32_t fields[11] = {int32_t(wp.length),
                                int32_t(wp.flags),
                                int32_t(wp.showCmd),
                                int32_t(wp.ptMinPosition.x),
                                int32_t(wp.ptMinPosition.y),
                                int32_t(wp.ptMaxPosition.x),
                                int32_t(wp.ptMaxPosition.y),
                                int32_t(wp.rcNormalPosition.left),
                                int32_t(wp.rcNormalPosition.top),
                                int32_t(wp.rcNormalPosition.right),
                                int32_t(wp.rcNormalPosition.bottom)};
    for (int i = 0; i < 11; ++i)
        PackLE32(b + 4 * i, fields[i]);
}

WINDOWPLACEMENT unpackPlacement(const unsigned char* b) {
    int32_t f[11];
    for (int i = 0; i < 11; ++i)
        f[i] = UnpackLE32<int32_t>(b + 4 * i);
    WINDOWPLACEMENT wp{};
    wp.length = UINT(f[0]);
    wp.flags = UINT(f[1]);
    wp.showCmd = UINT(f[2]);
    wp.ptMinPosition.x = f[3];
    wp.ptMinPosition.y = f[4];
    wp.ptMaxPosition.x = f[5];
    wp.ptMaxPosition.y = f[6];
    wp.rcNormalPosition.left = f[7];
    wp.rcNormalPosition.top = f[8];
    wp.rcNormalPosition.right = f[9];
    wp.rcNormalPosition.bottom = f[10];
    return wp;
}

constexpr ULONG kPlacementBytes = 44;
static_assert(sizeof(WINDOWPLACEMENT) == kPlacementBytes, "saved as 44 bytes");

const char* defaultButtonText() {
    const char* t = GetResString(IDS_VISIBILITY_TOGGLE);
    return t ? t : "";
}

} // namespace

/// Reconnects the loaded curves to their control once every object of the file exists.
/// One-shot: deletes itself when done.
class CurveControlPostLoad : public PostLoadCallback {
public:
    explicit CurveControlPostLoad(CurveControl* control) : control_(control) {}

    void proc(ILoad*) override {
        // The reference count is asked again before each step.
        for (int i = 0; i < control_->NumRefs(); ++i) {
            Curve* curve = control_->GetCurveObject(i);
            if (!curve)
                curve = replaceMissingCurve(i);
            if (curve)
                curve->SetOwner(control_);
        }
        delete this;
    }

private:
    // Every saved curve slot is expected to be restored. One that was not (a damaged
    // file, a curve the reader had to leave out) gets a new curve with the two corner end
    // points a new control's curves have, so that GetCurve answers a curve for every
    // index below the count, as clients rely on.
    // Nothing is thrown back to the host: a curve that cannot be made leaves the slot null.
    Curve* replaceMissingCurve(int i) {
        try {
            return makeCurve(i);
        } catch (...) {
            return control_->GetCurveObject(i);
        }
    }

    Curve* makeCurve(int i) {
        Curve* c = new Curve(control_, 0);
        control_->ReplaceReference(i, c);
        c->SetPointCount(2);
        if (CurveKnot* k = c->Knots()) {
            const Point2 x = control_->GetXRange();
            k[0] = CurveKnot(Point2(x.x, 0.0f), Point2(), Point2(), KNOT_ENDPOINT | KNOT_CORNER);
            k[1] = CurveKnot(Point2(x.y, 0.0f), Point2(), Point2(), KNOT_ENDPOINT | KNOT_CORNER);
        }
        c->InvalidateCache();
        c->SetPen(0, 0, 0);
        c->SetDisabledPen(0xC0C0C0, 0, 0);
        return c;
    }

    CurveControl* control_; // the loaded control; not owned
};

// ---------------------------------------------------------------------------------------
// Save

IOResult CurveControl::Save(ISave* isave) {
    // The view the user left is what a reopened file shows.
    if (IsEditorOpen()) {
        editorWindow_->CaptureView(hZoom_, vZoom_, hScroll_, vScroll_);
        zoomSet_ = scrollSet_ = 1;
    }

    isave->BeginChunk(kChunkLegacyInt);
    WriteLE32(isave, int32_t(legacyInt_));
    isave->EndChunk();

    isave->BeginChunk(kChunkShownCurves);
    shownCurves_.Save(isave);
    isave->EndChunk();

    isave->BeginChunk(kChunkZoomFlyOff);
    WriteLE32(isave, int32_t(zoomFlyOff_));
    isave->EndChunk();

    isave->BeginChunk(kChunkZoom);
    WriteLE32(isave, hZoom_);
    WriteLE32(isave, vZoom_);
    WriteLE32(isave, int32_t(zoomSet_));
    isave->EndChunk();

    isave->BeginChunk(kChunkScroll);
    WriteLE32(isave, int32_t(hScroll_));
    WriteLE32(isave, int32_t(vScroll_));
    WriteLE32(isave, int32_t(scrollSet_));
    isave->EndChunk();

    isave->BeginChunk(kChunkPlacement);
    unsigned char placement[kPlacementBytes];
    packPlacement(placement, placement_);
    isave->Write(placement, kPlacementBytes, nullptr);
    WriteLE32(isave, int32_t(placementSaved_));
    isave->EndChunk();

    isave->BeginChunk(kChunkCurveCount);
    WriteLE32(isave, int32_t(GetCurveCount()));
    isave->EndChunk();

    isave->BeginChunk(kChunkRanges);
    WriteLE32(isave, xRange_.x);
    WriteLE32(isave, xRange_.y);
    WriteLE32(isave, yRange_.x);
    WriteLE32(isave, yRange_.y);
    isave->EndChunk();

    isave->BeginChunk(kChunkFlags);
    WriteLE32(isave, uint32_t(flags_));
    isave->EndChunk();

    isave->BeginChunk(kChunkToolMode);
    WriteLE32(isave, int32_t(toolMode_));
    isave->EndChunk();

    if (clientObject_) {
        const int id = isave->GetRefID(clientObject_);
        if (id > -1) {
            isave->BeginChunk(kChunkClientObject);
            WriteLE32(isave, int32_t(id));
            isave->EndChunk();
        }
    }

    isave->BeginChunk(kChunkTitle);
    isave->WriteCString(title_.data());
    isave->EndChunk();

    ext_.Save(isave);
    return IO_OK;
}

// ---------------------------------------------------------------------------------------
// Load

// Nothing is thrown back to the host: memory running out ends the load with a read error.
IOResult CurveControl::Load(ILoad* iload) {
    try {
        return loadChunks(iload);
    } catch (...) {
        return IO_ERROR;
    }
}

IOResult CurveControl::loadChunks(ILoad* iload) {
    iload->RegisterPostLoadCallback(new CurveControlPostLoad(this));

    return ReadChunks(iload, [&](USHORT chunk) {
        IOResult res = IO_OK;
        switch (chunk) {
        case kChunkLegacyInt:
            res = ReadLE32(iload, legacyInt_);
            break;
        case kChunkShownCurves:
            res = shownCurves_.Load(iload);
            break;
        case kChunkZoomFlyOff:
            res = ReadLE32(iload, zoomFlyOff_);
            break;
        case kChunkZoom:
            if ((res = ReadLE32(iload, hZoom_)) != IO_OK)
                break;
            if ((res = ReadLE32(iload, vZoom_)) != IO_OK)
                break;
            res = ReadLE32(iload, zoomSet_);
            break;
        case kChunkScroll:
            if ((res = ReadLE32(iload, hScroll_)) != IO_OK)
                break;
            if ((res = ReadLE32(iload, vScroll_)) != IO_OK)
                break;
            res = ReadLE32(iload, scrollSet_);
            break;
        case kChunkPlacement: {
            unsigned char placement[kPlacementBytes];
            ULONG got = 0;
            if ((res = iload->Read(placement, kPlacementBytes, &got)) != IO_OK)
                break;
            placement_ = unpackPlacement(placement);
            res = ReadLE32(iload, placementSaved_);
            break;
        }
        case kChunkCurveCount:
            res = loadCurveCount(iload);
            break;
        case kChunkRanges:
            if ((res = ReadLE32(iload, xRange_.x)) != IO_OK)
                break;
            if ((res = ReadLE32(iload, xRange_.y)) != IO_OK)
                break;
            if ((res = ReadLE32(iload, yRange_.x)) != IO_OK)
                break;
            res = ReadLE32(iload, yRange_.y);
            break;
        case kChunkFlags: {
            uint32_t flags = 0;
            if ((res = ReadLE32(iload, flags)) == IO_OK)
                flags_ = flags;
            break;
        }
        case kChunkToolMode:
            res = ReadLE32(iload, toolMode_);
            break;
        case kChunkClientObject: {
            int32_t id = -1;
            res = ReadLE32(iload, id);
            if (res == IO_OK)
                iload->RecordBackpatch(id, reinterpret_cast<void**>(&clientObject_));
            break;
        }
        case kChunkTitle: {
            char* title = nullptr;
            res = iload->ReadCStringChunk(&title);
            if (res == IO_OK && title)
                SetTitle(title);
            break;
        }
        case kControlExtensionChunk:
            res = ext_.Load(iload);
            break;
        default:
            break; // not ours: skipped
        }
        return res;
    });
}

// Chunk 0x042E: both tables get n entries, every curve null (the host fills them as it
// restores the references) and every button text the default one.
IOResult CurveControl::loadCurveCount(ILoad* iload) {
    int n = 0;
    const IOResult r = ReadFileCount(iload, n);
    if (r != IO_OK)
        return r;
    DropAllCurves();
    clearButtonTexts();
    if (!setCurveTableSize(n))
        return IO_ERROR; // no room for what the file describes
    for (int i = 0; i < n; ++i)
        curves_[i] = nullptr;
    for (int i = 0; i < n; ++i)
        if (!appendButtonText(defaultButtonText()))
            return IO_ERROR;
    return IO_OK;
}
