// The host's scene files: chunked streams over memory and files, and the scene writer and
// reader that save and restore a graph of reference targets.
//
// A chunk is a 6-byte header (16-bit id, 32-bit size word, both little-endian) and a
// payload: either raw bytes or further chunks. docs/scene-format.md has the byte layout.
//
//   ChunkSave   ISave into a growing memory buffer (then, if wanted, a file)
//   ChunkLoad   ILoad over its own copy of a buffer (or of a whole file); every read is
//               checked against the bounds of the chunk it is in, whatever the file says
//   SceneRoots  the objects a loaded scene hands to its caller, held as references
//   SceneReport what a save or load skipped or refused, one line each
//   SaveScene / LoadScene   the scene writer and reader
#pragma once

#include "host/animatable.h"
#include "host/export.h"
#include "host/iosave.h"
#include "host/tab.h"

#include <cstddef>

/// Size of a chunk header: id (2 bytes) and size word (4 bytes).
#define CHUNK_HEADER_SIZE 6
/// Size-word bit that marks a chunk whose payload is chunks; the other 31 bits are the
/// chunk's whole size, header included.
#define CHUNK_HOLDS_CHUNKS 0x80000000u
#define CHUNK_SIZE_MASK 0x7FFFFFFFu

/// Chunk ids of the scene layer (docs/scene-format.md). Objects use ids of their own
/// inside SCENE_CHUNK_OBJECT_DATA, where these have no meaning.
#define SCENE_CHUNK_HEADER 0x0001       // magic and format version
#define SCENE_CHUNK_OBJECTS 0x0002      // one SCENE_CHUNK_OBJECT per object, id order
#define SCENE_CHUNK_ROOTS 0x0003        // ids of the objects handed to the caller
#define SCENE_CHUNK_OBJECT 0x0010       // one object: class, data, references
#define SCENE_CHUNK_OBJECT_CLASS 0x0011 // super class id, class id (two parts)
#define SCENE_CHUNK_OBJECT_DATA 0x0012  // the chunks the object's Save wrote
#define SCENE_CHUNK_OBJECT_REFS 0x0013  // reference count, then one id (or -1) each
/// "HSCN" read as a little-endian number.
#define SCENE_MAGIC 0x4E435348u
#define SCENE_FORMAT_VERSION 1u

// ---------------------------------------------------------------------------------------
// ChunkSave

class HOST_API ChunkSave : public ISave {
public:
    ChunkSave();
    ~ChunkSave() override;
    ChunkSave(const ChunkSave&) = delete;
    ChunkSave& operator=(const ChunkSave&) = delete;

    /// Opens a chunk inside the current one. A chunk that already holds bytes cannot
    /// also hold chunks: doing so is a writer error (see Status).
    void BeginChunk(USHORT id) override;
    void EndChunk() override;
    /// Bytes go into the innermost open chunk; outside every chunk, or into a chunk that
    /// already holds chunks, nothing is written and the result is IO_ERROR.
    IOResult Write(const void* buf, ULONG nbytes, ULONG* nwrit) override;
    /// The text and its terminator; a null text writes an empty string.
    IOResult WriteCString(const char* str) override;
    /// Asks the source set with SetRefIDSource; -1 without one.
    int GetRefID(void* target) override;

    typedef int (*RefIDSource)(void* target, void* context);
    void SetRefIDSource(RefIDSource source, void* context);

    /// IO_OK while every call so far was well-formed and no chunk is left open.
    IOResult Status() const;
    /// The bytes written so far (chunks still open have no size yet).
    const unsigned char* Data() const;
    std::size_t Size() const;
    /// Writes Data() to a file, replacing it. IO_ERROR when Status() fails or the file
    /// cannot be written.
    IOResult WriteFile(const char* path) const;

private:
    struct Impl;
    Impl* impl_; // owned: buffer, open chunks, status
};

// ---------------------------------------------------------------------------------------
// ChunkLoad

class HOST_API ChunkLoad : public ILoad {
public:
    /// An empty stream; fill it with SetBytes or ReadFile.
    ChunkLoad();
    /// A stream over a copy of `size` bytes at `data`.
    ChunkLoad(const void* data, std::size_t size);
    /// Deletes post-load callbacks that never ran.
    ~ChunkLoad() override;
    ChunkLoad(const ChunkLoad&) = delete;
    ChunkLoad& operator=(const ChunkLoad&) = delete;

    /// Replaces the stream's bytes with a copy of `size` bytes and rewinds. IO_ERROR (and
    /// an empty stream) when the size cannot be a scene (2 GiB or more).
    IOResult SetBytes(const void* data, std::size_t size);
    /// Replaces the stream's bytes with a whole file and rewinds. IO_ERROR when the file
    /// cannot be read.
    IOResult ReadFile(const char* path);

    /// IO_OK, IO_END when the current chunk has no further chunk, IO_ERROR when the next
    /// header does not fit inside the current chunk, claims a size that does not fit, or
    /// the current chunk holds bytes rather than chunks.
    IOResult OpenChunk() override;
    /// Id of the innermost open chunk; 0 at the top level.
    USHORT CurChunkID() override;
    /// Skips what is left of the innermost chunk. IO_ERROR at the top level.
    IOResult CloseChunk() override;
    IOResult Read(void* buf, ULONG nbytes, ULONG* nread) override;
    /// Reads a zero-terminated string from the current data chunk; IO_ERROR when no
    /// terminator comes before the chunk ends. `*buf` stays valid while the stream lives.
    IOResult ReadCStringChunk(char** buf) override;
    void RegisterPostLoadCallback(PostLoadCallback* cb) override;
    void SetObsolete() override;
    void RecordBackpatch(int refID, void** patchThis) override;
    ULONG ChunkBytesLeft() override;
    ULONG StreamBytesLeft() override;

    /// @name Beyond ILoad: for tools and for loading one object on its own
    /// @{
    /// Whether the innermost open chunk's size word marks it as a chunk of chunks.
    bool CurChunkHoldsChunks() const;
    /// Payload size of the innermost open chunk (0 at the top level).
    ULONG CurChunkSize() const;
    /// Offset of the innermost open chunk's header in the stream (0 at the top level).
    std::size_t CurChunkOffset() const;
    /// Number of open chunks.
    int Depth() const;
    /// IO_ERROR once any call met damaged or misused data (not IO_END), else IO_OK.
    IOResult Status() const;
    /// Whether a loader reported an older layout (SetObsolete).
    bool Obsolete() const;
    /// Sets every pointer recorded with RecordBackpatch to `resolve(refID, context)`
    /// (null when there is no resolver), then forgets them.
    typedef void* (*BackpatchResolver)(int refID, void* context);
    void ResolveBackpatches(BackpatchResolver resolve, void* context);
    /// Runs the registered callbacks, lowest priority first (registration order among
    /// equals), including any that they register in turn.
    void RunPostLoadCallbacks();
    /// @}

private:
    struct Impl;
    Impl* impl_; // owned: the bytes, the open chunks, the post-load state
};

// ---------------------------------------------------------------------------------------
// SceneRoots, SceneReport

/// The top-level objects of a scene. Each is held as a reference, so releasing the roots
/// (or destroying this) deletes every object that nothing else holds.
class HOST_API SceneRoots : public ReferenceMaker {
public:
    SceneRoots() = default;
    ~SceneRoots() override;

    int Count() const { return roots_.Count(); }
    /// Root i; null out of range, or when the root was deleted meanwhile.
    ReferenceTarget* Get(int i) const;
    /// Makes `target` one more root.
    void Add(ReferenceTarget* target);
    /// Drops every root.
    void Clear();

    int NumRefs() override { return roots_.Count(); }
    RefTargetHandle GetReference(int i) override { return Get(i); }

protected:
    void SetReference(int i, RefTargetHandle target) override;

private:
    Tab<ReferenceTarget*> roots_; // entry i is reference i
};

/// Messages about what a scene save or load skipped or refused.
class HOST_API SceneReport {
public:
    SceneReport();
    ~SceneReport();
    SceneReport(const SceneReport&) = delete;
    SceneReport& operator=(const SceneReport&) = delete;

    int Count() const;
    /// Message i; empty out of range.
    const char* Message(int i) const;
    /// Adds a message (printf format).
    void Add(const char* format, ...);
    /// Whether any message contains `text`.
    bool Contains(const char* text) const;
    /// Set when some object read an older layout of its data.
    bool Obsolete() const { return obsolete_; }
    void SetObsolete() { obsolete_ = true; }
    void Clear();

private:
    struct Impl;
    Impl* impl_;    // owned: the messages
    bool obsolete_; // some loader called SetObsolete
};

// ---------------------------------------------------------------------------------------
// The scene writer and reader

/// Saves `roots` (null entries are skipped) and every object they reach through
/// references into `out`: each object by class, its own chunks, and its references by
/// index, null ones included. IO_ERROR when an object's Save failed or misused the
/// stream (the report says which). Reference loops, which the host never builds, are
/// saved but not restored.
HOST_API IOResult SaveScene(ReferenceTarget* const* roots, int numRoots, ChunkSave& out,
                            SceneReport* report = nullptr);
HOST_API IOResult SaveSceneFile(const char* path, ReferenceTarget* const* roots, int numRoots,
                                SceneReport* report = nullptr);

/// Reads a scene: creates each object through ClassDirectory::Get().FindClass, loads it,
/// restores its references, patches recorded pointers, runs the post-load callbacks, and
/// adds the saved roots to `roots`. An object of a class no module knows is left out
/// (references to it become null) and reported. Any read failure ends the load with its
/// result: then every object made so far is deleted and `roots` gets nothing.
HOST_API IOResult LoadScene(ILoad& in, SceneRoots& roots, SceneReport* report = nullptr);
HOST_API IOResult LoadSceneFile(const char* path, SceneRoots& roots, SceneReport* report = nullptr);
