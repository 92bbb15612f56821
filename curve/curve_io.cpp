// Curve persistence: the curve's own chunks in the host's scene file. The point
// controllers are not part of them: they are the curve's references, which the host saves
// and restores itself (reference i animates point i).
//
// Chunks (all numbers 32-bit little-endian):
//   0x1000  point count (written only when there are points)
//   0x1030  one per point, in order, after 0x1000; holds a chunk 0x1000 with the point:
//           position, in-handle and out-handle as absolute positions, flags (28 bytes)
//   0x1010  older layout, read but never written: every point's 28 bytes in one chunk
//   0x1020  curve flags
//   0x1040  pen colours, widths and styles (enabled, disabled) and the animatable flag
//
// The loader reads what the saver writes in any order and skips chunks it does not know.
// Unlike the loader this format was first written for, it does not trust the file: a
// negative count or one above CURVECTL_MAX_COUNT (file_count.h), a chunk cut short, a
// header that overruns its chunk all end the load with a read error; point chunks beyond
// the count are ignored, and points without a chunk stay zero. Every read is bounded by
// the stream (host/scene.h), so nothing a file says can move a read outside its chunk.
#include "curve/curve.h"

#include "curve/curve_edit_detail.h"
#include "curve/file_count.h"
#include "curvectl/messages.h"
#include "host/chunk_values.h"
#include "platform/client_message.h"

#include <cstdlib>

namespace {

constexpr USHORT kChunkCount = 0x1000;
constexpr USHORT kChunkOldPoints = 0x1010;
constexpr USHORT kChunkCurveFlags = 0x1020;
constexpr USHORT kChunkPoint = 0x1030;
constexpr USHORT kChunkPen = 0x1040;
constexpr USHORT kChunkPointRecord = 0x1000; // inside kChunkPoint

/// Bytes of one point in the file, in either layout.
constexpr ULONG kPointBytes = 28;

/// Post-load callback of a curve. The curve has nothing to finish: its owner and the
/// links to its control are restored by the control's own callback.
class CurvePostLoad : public PostLoadCallback {
public:
    explicit CurvePostLoad(Curve* curve) : curve_(curve) {}
    void proc(ILoad*) override { delete this; }
    int Priority() override { return 5; }
    Curve* LoadedCurve() const { return curve_; }

private:
    Curve* curve_; // the loaded curve; not owned
};

/// The file form of a point: handles as absolute positions.
void packPoint(unsigned char* b, const CurveKnot& k) {
    const Point2 in = k.pos + k.inTan;
    const Point2 out = k.pos + k.outTan;
    PackLE32(b + 0, k.pos.x);
    PackLE32(b + 4, k.pos.y);
    PackLE32(b + 8, in.x);
    PackLE32(b + 12, in.y);
    PackLE32(b + 16, out.x);
    PackLE32(b + 20, out.y);
    PackLE32(b + 24, k.flags);
}

Point2 unpackPoint2(const unsigned char* b) {
    return Point2(UnpackLE32<float>(b), UnpackLE32<float>(b + 4));
}

/// Reads one Point2 (8 bytes).
IOResult readPoint2(ILoad* iload, Point2& p) {
    unsigned char b[8];
    ULONG got = 0;
    const IOResult r = iload->Read(b, sizeof(b), &got);
    if (r == IO_OK)
        p = unpackPoint2(b);
    return r;
}

} // namespace

// ---------------------------------------------------------------------------------------
// Save

IOResult Curve::Save(ISave* isave) {
    if (count_ != 0) {
        isave->BeginChunk(kChunkCount);
        WriteLE32(isave, int32_t(count_));
        isave->EndChunk();
        for (int i = 0; i < count_; ++i) {
            // A table that failed to allocate reads as zero points everywhere else; it is
            // saved the same way, so that the count and the point chunks agree.
            const CurveKnot k = points_ ? points_[i] : CurveKnot();
            unsigned char record[kPointBytes];
            packPoint(record, k);
            isave->BeginChunk(kChunkPoint);
            isave->BeginChunk(kChunkPointRecord);
            isave->Write(record, sizeof(record), nullptr);
            isave->EndChunk();
            isave->EndChunk();
        }
    }

    isave->BeginChunk(kChunkCurveFlags);
    WriteLE32(isave, uint32_t(curveFlags_));
    isave->EndChunk();

    isave->BeginChunk(kChunkPen);
    WriteLE32(isave, uint32_t(penColour_));
    WriteLE32(isave, uint32_t(disabledPenColour_));
    WriteLE32(isave, int32_t(penWidth_));
    WriteLE32(isave, int32_t(disabledPenWidth_));
    WriteLE32(isave, int32_t(penStyle_));
    WriteLE32(isave, int32_t(disabledPenStyle_));
    WriteLE32(isave, int32_t(animatable_));
    isave->EndChunk();
    return IO_OK;
}

// ---------------------------------------------------------------------------------------
// Load

// Nothing is thrown back to the host: memory running out ends the load with a read error.
IOResult Curve::Load(ILoad* iload) {
    try {
        return loadChunks(iload);
    } catch (...) {
        return IO_ERROR;
    }
}

IOResult Curve::loadChunks(ILoad* iload) {
    iload->RegisterPostLoadCallback(new CurvePostLoad(this));

    // Reset: no points, no controllers, fresh cache; fitted width, curve flags and the
    // lookup size are those of a new curve, whatever they were when the file was saved.
    {
        auto tableLock = LockPointTable(); // an evaluation elsewhere must not see this
        SetOpenPosRecord(nullptr);         // a record of the old table takes no new changes
        DeleteAllRefsFromMe();
        freeTables();
        InvalidateCache();
        fittedWidth_ = 1.0f;
        curveFlags_ = 0;
    }
    SetLookupSize(1000);

    int nextPoint = 0; // the k-th 0x1030 chunk in file order fills point k
    return ReadChunks(iload, [&](USHORT id) {
        IOResult res = IO_OK;
        switch (id) {
        case kChunkCount:
            res = loadCount(iload);
            break;
        case kChunkOldPoints:
            res = loadOldPoints(iload);
            break;
        case kChunkCurveFlags: {
            uint32_t flags = 0;
            res = ReadLE32(iload, flags);
            if (res == IO_OK) {
                auto tableLock = LockPointTable();
                curveFlags_ = flags;
                InvalidateCache();
            }
            break;
        }
        case kChunkPoint:
            res = loadPoint(iload, nextPoint++);
            break;
        case kChunkPen:
            res = loadPens(iload);
            break;
        default:
            break; // not ours: skipped
        }
        return res;
    });
}

// Chunk 0x1000: the count, then a table of that many zeroed points (no end-point flags:
// the points come from the file) and as many null controllers.
IOResult Curve::loadCount(ILoad* iload) {
    int n = 0;
    const IOResult r = ReadFileCount(iload, n);
    if (r != IO_OK)
        return r;

    auto tableLock = LockPointTable();
    DeleteAllRefsFromMe();
    freeTables();
    InvalidateCache();
    if (n == 0)
        return IO_OK;
    auto* points = static_cast<CurveKnot*>(std::calloc(std::size_t(n), sizeof(CurveKnot)));
    auto* controllers =
        static_cast<ReferenceTarget**>(std::calloc(std::size_t(n), sizeof(ReferenceTarget*)));
    if (!points || !controllers) {
        std::free(points);
        std::free(controllers);
        return IO_ERROR; // cannot hold what the file describes
    }
    points_ = points;
    controllers_ = controllers;
    count_ = n;
    return IO_OK;
}

// Chunk 0x1010, the older layout: every point in one chunk. A point loads exactly as the
// same point of the current layout does (handles made relative to the point's own stored
// position), and clients hear about each point as they did when this layout was current:
// the point-changed message once its position is stored, then one tangent message whose
// high word holds the change bits the handle setters would report (1 in, 2 out).
//
// Setting the handles through the handle setters instead, as edits are, would measure
// each one from the point's position in the evaluation cache while the points after it
// are still zero, where the ordering passes may have moved it: an interior point of a
// file with three or more points came back with handles shifted by that move. A user's
// old scene must open with the curves it had.
//
// A chunk shorter than the count ends the load at the first short read; what was read
// before it stays.
IOResult Curve::loadOldPoints(ILoad* iload) {
    for (int i = 0; i < count_; ++i) {
        Point2 pos, in, out;
        IOResult r = readPoint2(iload, pos);
        if (r != IO_OK)
            return r;
        if (points_ && i < count_) { // a client's message handler may have changed the table
            auto tableLock = LockPointTable();
            points_[i].pos = pos;
            InvalidateCache();
        }
        SendClientMessage(CURVE_MSG_POINT_CHANGED, WPARAM(i & 0xFFFF));
        if ((r = readPoint2(iload, in)) != IO_OK)
            return r;
        if ((r = readPoint2(iload, out)) != IO_OK)
            return r;
        unsigned changed = 0;
        if (points_ && i < count_) {
            auto tableLock = LockPointTable();
            CurveKnot& p = points_[i];
            const Point2 inTan = in - p.pos, outTan = out - p.pos;
            changed = (curve_edit::Different(p.inTan, inTan) ? 1u : 0u) |
                      (curve_edit::Different(p.outTan, outTan) ? 2u : 0u);
            p.inTan = inTan;
            p.outTan = outTan;
            InvalidateCache();
        }
        SendClientMessage(CURVE_MSG_TANGENT_CHANGED, client_message::PackWParam(i, changed));
        uint32_t flags = 0;
        if ((r = ReadLE32(iload, flags)) != IO_OK)
            return r;
        if (points_ && i < count_) {
            auto tableLock = LockPointTable();
            points_[i].flags = flags;
            InvalidateCache();
        }
    }
    iload->SetObsolete();
    return IO_OK;
}

// Chunk 0x1030: point k from its nested 0x1000 record; other nested chunks are skipped.
// A point beyond the count has no slot and is ignored.
IOResult Curve::loadPoint(ILoad* iload, int k) {
    return ReadChunks(iload, [&](USHORT id) {
        IOResult res = IO_OK;
        if (id == kChunkPointRecord) {
            // One read for the whole record: a record cut short leaves the point as it was.
            unsigned char b[kPointBytes];
            ULONG got = 0;
            res = iload->Read(b, sizeof(b), &got);
            if (res == IO_OK && points_ && k < count_) {
                auto tableLock = LockPointTable();
                InvalidateCache();
                CurveKnot& p = points_[k];
                p.pos = unpackPoint2(b);
                p.inTan = unpackPoint2(b + 8) - p.pos;
                p.outTan = unpackPoint2(b + 16) - p.pos;
                p.flags = UnpackLE32<uint32_t>(b + 24);
            }
        }
        return res;
    });
}

// Chunk 0x1040: pens and the animatable flag, each field as it is read.
IOResult Curve::loadPens(ILoad* iload) {
    uint32_t colour = 0, disabledColour = 0;
    IOResult r;
    if ((r = ReadLE32(iload, colour)) != IO_OK)
        return r;
    penColour_ = colour;
    if ((r = ReadLE32(iload, disabledColour)) != IO_OK)
        return r;
    disabledPenColour_ = disabledColour;
    if ((r = ReadLE32(iload, penWidth_)) != IO_OK)
        return r;
    if ((r = ReadLE32(iload, disabledPenWidth_)) != IO_OK)
        return r;
    if ((r = ReadLE32(iload, penStyle_)) != IO_OK)
        return r;
    if ((r = ReadLE32(iload, disabledPenStyle_)) != IO_OK)
        return r;
    return ReadLE32(iload, animatable_);
}
