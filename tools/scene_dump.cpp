// scene_dump: prints the chunk tree of a scene file (or of one object's chunk stream) with
// ids, offsets and sizes, and the fields of the chunks this module and the host's scene
// layer define. Damaged files are printed as far as they are readable.
//
//   scene_dump [--as scene|curve|control|raw] FILE
//
// Without --as, a file that starts with the scene header is read as a scene, anything else
// as a plain chunk tree. Exit code: 0 when the whole file was readable, 1 when some chunk
// was damaged, 2 when the file could not be read.
#include "curvectl/icurvectl.h"
#include "host/chunk_values.h"
#include "host/controller.h"
#include "host/scene.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

namespace {

using Bytes = std::vector<unsigned char>;

/// What the chunks at one level mean.
enum class Context {
    Raw,        // unknown: ids and sizes only
    SceneTop,   // header, objects, roots
    Objects,    // one object chunk each
    Object,     // class, data, references
    Curve,      // a Curve's own chunks
    CurvePoint, // inside a curve's 0x1030
    Control,    // a CurveControl's own chunks
    ControlExt, // inside a control's 0x0480: its extensions
    Controller, // the host's Point3 controller
};

std::string format(const char* fmt, ...) {
    char text[512];
    va_list args;
    va_start(args, fmt);
    std::vsnprintf(text, sizeof(text), fmt, args);
    va_end(args);
    return text;
}

/// Reads 32-bit values from a payload; reading past its end marks it short.
class Fields {
public:
    explicit Fields(const Bytes& p) : p_(p) {}
    bool has(std::size_t n) const { return at_ + n <= p_.size(); }
    template <class T> T next() {
        if (!has(4)) {
            short_ = true;
            at_ = p_.size();
            return T();
        }
        const T v = UnpackLE32<T>(&p_[at_]);
        at_ += 4;
        return v;
    }
    int i() { return next<int32_t>(); }
    unsigned u() { return next<uint32_t>(); }
    double f() { return next<float>(); }
    std::string point() {
        const double x = f(), y = f();
        return format("(%g, %g)", x, y);
    }
    /// What is left over or missing, as a note for the line.
    std::string tail() const {
        if (short_)
            return "  [cut short]";
        if (at_ < p_.size())
            return format("  [+%llu bytes]", static_cast<unsigned long long>(p_.size() - at_));
        return "";
    }

private:
    const Bytes& p_;
    std::size_t at_ = 0;
    bool short_ = false;
};

std::string hexPreview(const Bytes& p) {
    std::string s;
    for (std::size_t i = 0; i < p.size() && i < 16; ++i)
        s += format("%s%02X", i ? " " : "", p[i]);
    if (p.size() > 16)
        s += " ...";
    return s;
}

std::string idList(Fields& f) {
    const int n = f.i();
    std::string s = format("%d:", n);
    for (int k = 0; k < n && k < 64 && f.has(4); ++k)
        s += format(" %d", f.i());
    if (n > 64)
        s += " ...";
    return s;
}

std::string knotFlags(unsigned flags) {
    static const char* const types[4] = {"none", "bezier-smooth", "corner", "bezier-corner"};
    std::string s = format("0x%X %s", flags, types[flags & 3]);
    if (flags & 0x10)
        s += " selected";
    if (flags & 0x100)
        s += " end";
    if (flags & 0x200)
        s += " free-end-x";
    return s;
}

/// One point as the file stores it: position and absolute handles, flags.
std::string pointRecord(Fields& f) {
    const std::string pos = f.point(), in = f.point(), out = f.point();
    return "pos " + pos + " in " + in + " out " + out + " flags " + knotFlags(f.u());
}

std::string describeCurve(unsigned id, const Bytes& p) {
    Fields f(p);
    std::string s;
    switch (id) {
    case 0x1000:
        s = format("point count %d", f.i());
        break;
    case 0x1010: {
        s = format("older layout, %llu points", static_cast<unsigned long long>(p.size() / 28));
        for (std::size_t k = 0; k < p.size() / 28; ++k)
            s += format("\n        [%llu] ", static_cast<unsigned long long>(k)) + pointRecord(f);
        break;
    }
    case 0x1020: {
        const unsigned flags = f.u();
        s = format("curve flags 0x%X%s end behaviour %d", flags, (flags & 1) ? " cyclic" : "",
                   (flags & 4) ? 1 : 0);
        break;
    }
    case 0x1030:
        return "point";
    case 0x1040: {
        const unsigned c = f.u(), dc = f.u();
        const int w = f.i(), dw = f.i(), st = f.i(), dst = f.i(), a = f.i();
        s = format("pen 0x%06X width %d style %d, disabled pen 0x%06X width %d style %d, "
                   "animatable %d",
                   c, w, st, dc, dw, dst, a);
        break;
    }
    default:
        return "(not a curve chunk: skipped by the loader)";
    }
    return s + f.tail();
}

std::string describeControl(unsigned id, const Bytes& p) {
    Fields f(p);
    std::string s;
    switch (id) {
    case 0x03E8:
        s = format("legacyInt %d", f.i());
        break;
    case 0x03F2: {
        const int n = f.i();
        s = format("shownCurves %d bits: ", n);
        std::string bits;
        for (int w = 0; w < (n + 31) / 32 && f.has(4); ++w) {
            const unsigned word = f.u();
            for (int b = 0; b < 32 && w * 32 + b < n && bits.size() < 128; ++b)
                bits += (word >> b) & 1 ? '1' : '0';
        }
        s += bits;
        break;
    }
    case 0x0424:
        s = format("zoomFlyOff %d", f.i());
        break;
    case 0x0406: {
        const double h = f.f(), v = f.f();
        s = format("hZoom %g vZoom %g zoomSet %d", h, v, f.i());
        break;
    }
    case 0x0410: {
        const int h = f.i(), v = f.i();
        s = format("hScroll %d vScroll %d scrollSet %d", h, v, f.i());
        break;
    }
    case 0x041A: {
        int v[11];
        for (int& x : v)
            x = f.i();
        s = format("placement length %d flags %d show %d min (%d, %d) max (%d, %d) "
                   "normal (%d, %d)-(%d, %d), placementSaved %d",
                   v[0], v[1], v[2], v[3], v[4], v[5], v[6], v[7], v[8], v[9], v[10], f.i());
        break;
    }
    case 0x042E:
        s = format("curve count %d", f.i());
        break;
    case 0x0438: {
        const std::string x = f.point(), y = f.point();
        s = "xRange " + x + " yRange " + y;
        break;
    }
    case 0x046A:
        s = format("flags 0x%X", f.u());
        break;
    case 0x0474:
        s = format("toolMode %d", f.i());
        break;
    case 0x044C:
        s = format("client object id %d", f.i());
        break;
    case 0x0480:
        return "extensions";
    case 0x0456: {
        const void* nul = std::memchr(p.data(), 0, p.size());
        if (!nul)
            return "title (no terminator)";
        return "title \"" + std::string(reinterpret_cast<const char*>(p.data())) + "\"" +
               (static_cast<const unsigned char*>(nul) + 1 < p.data() + p.size()
                    ? format("  [+%llu bytes]",
                             static_cast<unsigned long long>(
                                 p.data() + p.size() - static_cast<const unsigned char*>(nul) - 1))
                    : std::string());
    }
    default:
        return "(not a control chunk: skipped by the loader)";
    }
    return s + f.tail();
}

std::string describeControlExt(unsigned id, const Bytes& p) {
    Fields f(p);
    std::string s;
    switch (id) {
    case 0x0001:
        s = format("extended flags 0x%X", f.u());
        break;
    case 0x0002:
        s = format("snap %d", f.i());
        break;
    case 0x0003: {
        const int frames = f.i();
        s = format("onion skin %d frames each side, step %d", frames, f.i());
        break;
    }
    default:
        return "(not known to this version: skipped by the loader)";
    }
    return s + f.tail();
}

std::string describeController(unsigned id, const Bytes& p) {
    Fields f(p);
    std::string s;
    if (id == 0x0100) {
        const double x = f.f(), y = f.f(), z = f.f();
        s = format("constant (%g, %g, %g)", x, y, z);
    } else if (id == 0x0110) {
        const int t = f.i();
        const double x = f.f(), y = f.f(), z = f.f();
        s = format("key at %d: (%g, %g, %g)", t, x, y, z);
    } else {
        return "";
    }
    return s + f.tail();
}

std::string className(uint32_t sclass, const Class_ID& cid, Context& data) {
    data = Context::Raw;
    if (cid == CURVE_CLASS_ID) {
        data = Context::Curve;
        return "Curve";
    }
    if (cid == CURVE_CONTROL_CLASS_ID) {
        data = Context::Control;
        return "CurveControl";
    }
    if (sclass == CTRL_POINT3_CLASS_ID && cid == POINT3_KEY_CONTROL_CLASS_ID) {
        data = Context::Controller;
        return "Point3 Keys";
    }
    return "a class this tool does not know";
}

class Dumper {
public:
    explicit Dumper(const Bytes& bytes) : bytes_(bytes), in_(bytes.data(), bytes.size()) {}

    /// Prints one level and everything under it; false when a header was damaged.
    /// `next` is the offset of the level's first header.
    bool level(Context ctx, int depth, std::size_t next) {
        bool ok = true;
        int index = 0;
        Context dataContext = Context::Raw;
        IOResult r;
        while ((r = in_.OpenChunk()) == IO_OK) {
            const unsigned id = in_.CurChunkID();
            const std::size_t offset = in_.CurChunkOffset();
            const std::size_t start = offset + CHUNK_HEADER_SIZE;
            const Bytes payload(bytes_.begin() + start,
                                bytes_.begin() + start + in_.CurChunkSize());
            const bool holds = in_.CurChunkHoldsChunks();
            const std::string what = describe(ctx, id, payload, index, dataContext);
            std::printf("%*s0x%04X @%llu %llu bytes%s%s%s\n", depth * 2, "", id,
                        static_cast<unsigned long long>(offset),
                        static_cast<unsigned long long>(payload.size()), holds ? " {" : "",
                        what.empty() ? "" : "  ", what.c_str());
            if (holds) {
                ok = level(childContext(ctx, id, dataContext), depth + 1, start) && ok;
                std::printf("%*s}\n", depth * 2, "");
            }
            in_.CloseChunk();
            next = start + payload.size();
            ++index;
        }
        if (r == IO_ERROR) {
            std::printf("%*s!! damaged chunk header at offset %llu: the rest of this level is "
                        "unreadable\n",
                        depth * 2, "", static_cast<unsigned long long>(next));
            return false;
        }
        return ok;
    }

private:
    std::string describe(Context ctx, unsigned id, const Bytes& p, int index,
                         Context& dataContext) {
        switch (ctx) {
        case Context::SceneTop: {
            Fields f(p);
            if (id == SCENE_CHUNK_HEADER) {
                const unsigned magic = f.u(), version = f.u();
                const std::string s =
                    format("scene header: magic 0x%08X%s version %u", magic,
                           magic == SCENE_MAGIC ? " (HSCN)" : " (not a scene)", version);
                return s + f.tail();
            }
            if (id == SCENE_CHUNK_OBJECTS)
                return "objects";
            if (id == SCENE_CHUNK_ROOTS) {
                const std::string s = "roots " + idList(f);
                return s + f.tail();
            }
            return "(unknown: skipped)";
        }
        case Context::Objects:
            return id == SCENE_CHUNK_OBJECT ? format("object #%d", index) : "(unknown: skipped)";
        case Context::Object: {
            Fields f(p);
            if (id == SCENE_CHUNK_OBJECT_CLASS) {
                const uint32_t sclass = f.u(), a = f.u(), b = f.u();
                const std::string name = className(sclass, Class_ID(a, b), dataContext);
                const std::string s = format("class 0x%08X:0x%08X super class 0x%08X (%s)", a, b,
                                             sclass, name.c_str());
                return s + f.tail();
            }
            if (id == SCENE_CHUNK_OBJECT_DATA)
                return "data";
            if (id == SCENE_CHUNK_OBJECT_REFS) {
                const std::string s = "references " + idList(f);
                return s + f.tail();
            }
            return "(unknown: skipped)";
        }
        case Context::Curve:
            return describeCurve(id, p);
        case Context::CurvePoint:
            if (id == 0x1000) {
                Fields f(p);
                const std::string s = pointRecord(f);
                return s + f.tail();
            }
            return "(skipped by the loader)";
        case Context::Control:
            return describeControl(id, p);
        case Context::ControlExt:
            return describeControlExt(id, p);
        case Context::Controller:
            return describeController(id, p);
        case Context::Raw:
            break;
        }
        return hexPreview(p);
    }

    static Context childContext(Context ctx, unsigned id, Context dataContext) {
        switch (ctx) {
        case Context::SceneTop:
            return id == SCENE_CHUNK_OBJECTS ? Context::Objects : Context::Raw;
        case Context::Objects:
            return id == SCENE_CHUNK_OBJECT ? Context::Object : Context::Raw;
        case Context::Object:
            return id == SCENE_CHUNK_OBJECT_DATA ? dataContext : Context::Raw;
        case Context::Curve:
            return id == 0x1030 ? Context::CurvePoint : Context::Raw;
        case Context::Control:
            return id == 0x0480 ? Context::ControlExt : Context::Raw;
        default:
            return Context::Raw;
        }
    }

    const Bytes& bytes_;
    ChunkLoad in_;
};

bool startsWithSceneHeader(const Bytes& b) {
    return b.size() >= CHUNK_HEADER_SIZE + 4 && b[0] == (SCENE_CHUNK_HEADER & 0xFF) &&
           b[1] == (SCENE_CHUNK_HEADER >> 8) &&
           UnpackLE32<uint32_t>(&b[CHUNK_HEADER_SIZE]) == SCENE_MAGIC;
}

int usage() {
    std::fprintf(stderr, "usage: scene_dump [--as scene|curve|control|raw] FILE\n");
    return 2;
}

} // namespace

int main(int argc, char** argv) {
    const char* path = nullptr;
    std::string as = "auto";
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--as") == 0 && i + 1 < argc)
            as = argv[++i];
        else if (!path)
            path = argv[i];
        else
            return usage();
    }
    if (!path)
        return usage();

    Bytes bytes;
    if (std::FILE* f = std::fopen(path, "rb")) {
        unsigned char block[65536];
        for (std::size_t n; (n = std::fread(block, 1, sizeof(block), f)) > 0;)
            bytes.insert(bytes.end(), block, block + n);
        std::fclose(f);
    } else {
        std::fprintf(stderr, "scene_dump: cannot read %s\n", path);
        return 2;
    }

    Context top = Context::Raw;
    if (as == "scene" || (as == "auto" && startsWithSceneHeader(bytes)))
        top = Context::SceneTop;
    else if (as == "curve")
        top = Context::Curve;
    else if (as == "control")
        top = Context::Control;
    else if (as != "raw" && as != "auto")
        return usage();

    std::printf("%s: %llu bytes\n", path, static_cast<unsigned long long>(bytes.size()));
    Dumper dumper(bytes);
    return dumper.level(top, 0, 0) ? 0 : 1;
}
