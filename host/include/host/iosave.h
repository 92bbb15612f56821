// Chunked scene streams. A scene file is a tree of chunks, each with a 16-bit id; a
// chunk holds either data or further chunks. Objects write their own chunks through
// ISave and read them back through ILoad; the concrete streams live in the host library.
#pragma once

#include "host/export.h"
#include "host/heap.h"
#include "host/win_types.h"

typedef int IOResult;
#define IO_OK 0
#define IO_END 1
#define IO_ERROR 2

/// What ILoad's size queries answer when the stream does not know.
#define ILOAD_SIZE_UNKNOWN ((ULONG)0xFFFFFFFFu)

class ILoad;

/// Runs once the whole scene is loaded, lowest priority number first. The loader owns a
/// registered callback until it calls proc; proc then deletes the callback (the host's
/// convention: callbacks delete themselves). Callbacks of an abandoned load are deleted by
/// the loader without being called.
class HOST_API PostLoadCallback : public VokHeapOperators {
public:
    virtual ~PostLoadCallback() = default;
    virtual void proc(ILoad* iload) = 0;
    /// 0 runs first, 10 last; 5 is ordinary.
    virtual int Priority() { return 5; }
};

class HOST_API ISave {
public:
    virtual ~ISave() = default;
    /// Opens a chunk inside the current one.
    virtual void BeginChunk(USHORT id) = 0;
    virtual void EndChunk() = 0;
    /// Writes raw bytes into the current chunk; `nwrit` (may be null) gets the count.
    virtual IOResult Write(const void* buf, ULONG nbytes, ULONG* nwrit) = 0;
    /// Writes a zero-terminated string (the terminator included).
    virtual IOResult WriteCString(const char* str) = 0;
    /// The id under which `target` is saved in this scene, or -1 when it is not saved.
    virtual int GetRefID(void* target) = 0;
};

class HOST_API ILoad {
public:
    virtual ~ILoad() = default;
    /// Opens the next chunk of the current level: IO_OK, or IO_END when none is left.
    virtual IOResult OpenChunk() = 0;
    virtual USHORT CurChunkID() = 0;
    virtual IOResult CloseChunk() = 0;
    /// Reads exactly nbytes from the current data chunk. When fewer are left (a short
    /// read) nothing is copied, `*nread` (may be null) is 0 and the result is IO_ERROR.
    virtual IOResult Read(void* buf, ULONG nbytes, ULONG* nread) = 0;
    /// Reads a zero-terminated string; `*buf` points into the loader's storage, valid
    /// until the chunk is closed.
    virtual IOResult ReadCStringChunk(char** buf) = 0;
    /// Registers a callback (the loader takes ownership) to run after the whole load.
    virtual void RegisterPostLoadCallback(PostLoadCallback* cb) = 0;
    /// Tells the loader that an older data layout was read.
    virtual void SetObsolete() = 0;
    /// Once every object exists, `*patchThis` is set to the object saved under refID.
    virtual void RecordBackpatch(int refID, void** patchThis) = 0;

    /// Bytes of the current chunk not yet read (of a chunk of chunks: not yet opened); at
    /// the top level, of the whole stream. Loaders check a count read from a file against
    /// it before they allocate for the count. ILOAD_SIZE_UNKNOWN when the stream cannot
    /// tell.
    virtual ULONG ChunkBytesLeft() { return ILOAD_SIZE_UNKNOWN; }
    /// Bytes of the whole stream after the read position, or ILOAD_SIZE_UNKNOWN.
    virtual ULONG StreamBytesLeft() { return ILOAD_SIZE_UNKNOWN; }
};
