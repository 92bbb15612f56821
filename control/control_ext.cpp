// CurveControlEx: the extension switch and its settings, their copying and their chunk.
//
// Chunk 0x0480 (a chunk of chunks, written after the control's title and only when the
// flag word is not 0, so that the files of clients that leave the extensions off stay
// byte for byte as a module without them writes them) holds one sub-chunk per setting:
//   0x0001  flag word (uint32)
//   0x0002  snap toggle (int32, 0 or 1)
//   0x0003  onion skin: frames each side, frame step (int32, int32)
// Later settings are new sub-chunks; a loader skips the ids it does not know, and a
// sub-chunk may be longer than the fields this version reads (the rest is skipped), so
// both older and newer loaders read what they understand. A sub-chunk too short for its
// fields, or a value out of range, is damage: the load ends with a read error.
#include "control/control_ext.h"

#include "control/curve_control.h"
#include "host/chunk_values.h"

namespace {

constexpr USHORT kSubFlags = 0x0001;
constexpr USHORT kSubSnap = 0x0002;
constexpr USHORT kSubOnion = 0x0003;

bool validOnion(int frames, int step) {
    return frames >= 0 && frames <= CCX_ONION_MAX_FRAMES && step >= 1;
}

} // namespace

// ---------------------------------------------------------------------------------------
// ICurveCtlEx

// A configuration call of the client, as SetControlFlags is: never recorded for undo.
void CurveControlEx::SetExtendedFlags(DWORD flags) {
    flags_ = flags;
    owner_.Redraw();
}

void CurveControlEx::SetSnapEnabled(BOOL on) {
    snap_ = on ? 1 : 0;
    owner_.Redraw();
}

void CurveControlEx::SetOnionSkin(int framesEachSide, int frameStep) {
    if (!validOnion(framesEachSide, frameStep))
        return;
    onionFrames_ = framesEachSide;
    onionStep_ = frameStep;
    owner_.Redraw();
}

void CurveControlEx::GetOnionSkin(int* framesEachSide, int* frameStep) {
    if (framesEachSide)
        *framesEachSide = onionFrames_;
    if (frameStep)
        *frameStep = onionStep_;
}

void CurveControlEx::CopyFrom(const CurveControlEx& other) {
    flags_ = other.flags_;
    snap_ = other.snap_;
    onionFrames_ = other.onionFrames_;
    onionStep_ = other.onionStep_;
}

// ---------------------------------------------------------------------------------------
// Chunk 0x0480

void CurveControlEx::Save(ISave* isave) const {
    if (flags_ == 0)
        return;
    isave->BeginChunk(kControlExtensionChunk);

    isave->BeginChunk(kSubFlags);
    WriteLE32(isave, uint32_t(flags_));
    isave->EndChunk();

    isave->BeginChunk(kSubSnap);
    WriteLE32(isave, int32_t(snap_));
    isave->EndChunk();

    isave->BeginChunk(kSubOnion);
    WriteLE32(isave, int32_t(onionFrames_));
    WriteLE32(isave, int32_t(onionStep_));
    isave->EndChunk();

    isave->EndChunk();
}

IOResult CurveControlEx::Load(ILoad* iload) {
    return ReadChunks(iload, [&](USHORT chunk) {
        IOResult res = IO_OK;
        switch (chunk) {
        case kSubFlags: {
            uint32_t flags = 0;
            if ((res = ReadLE32(iload, flags)) == IO_OK)
                flags_ = flags;
            break;
        }
        case kSubSnap: {
            int32_t snap = 0;
            if ((res = ReadLE32(iload, snap)) != IO_OK)
                break;
            if (snap != 0 && snap != 1)
                return IO_ERROR;
            snap_ = snap;
            break;
        }
        case kSubOnion: {
            int32_t frames = 0, step = 0;
            if ((res = ReadLE32(iload, frames)) != IO_OK || (res = ReadLE32(iload, step)) != IO_OK)
                break;
            if (!validOnion(frames, step))
                return IO_ERROR;
            onionFrames_ = frames;
            onionStep_ = step;
            break;
        }
        default:
            break; // a later setting: skipped
        }
        return res;
    });
}
