// Batch kernels for AVX-512 (foundation instructions only): 16 lanes, mask registers,
// hardware gathers and scatters, control points of curves with up to 16 segments permuted
// from registers. Built with -mavx512f; run only when the processor and the operating
// system support it (curve_batch_dispatch.cpp). The algorithm is curve_batch_body.inc.
#include "curve/curve_batch_kernels.h"

// GCC 12's intrinsic headers make their "undefined" registers by initialising a variable
// with itself, which its own maybe-uninitialized warning then reports wherever such an
// intrinsic is inlined (GCC bug 105593); the warning is off for the headers alone.
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#endif
#include <immintrin.h>
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic pop
#endif

namespace curve_batch {
namespace {

/// For values s floats apart (s = 2, 3, 4): the 16 values span s registers of 16 floats.
/// Per register r: the values' places in it (bit j: float 16r + j is one) and, for
/// stores, position -> lane. For loads, two-source permutes: load[0] picks the values of
/// registers 0 and 1 (lanes 0 .. 31 / s); with s = 3, load[1] keeps those and adds the
/// rest from register 2; with s = 4, load[0] also picks registers 2 and 3's values, which
/// a 128-bit shuffle joins to the first eight. Worked out at compile time: the constructor
/// below only loads them.
struct SpanPlan {
    unsigned places[4];
    int load[2][16];
    int store[4][16];
};
constexpr SpanPlan MakeSpanPlan(int s) {
    SpanPlan plan{};
    for (int r = 0; r < s; ++r) {
        for (int j = 0; j < 16; ++j) {
            const int at = 16 * r + j; // float position from the first value
            plan.store[r][j] = at / s;
            if (at % s == 0)
                plan.places[r] |= 1u << j;
        }
    }
    for (int l = 0; l < 16; ++l) {
        const int at = l * s;                         // lane l's float position
        plan.load[0][l] = at < 32 ? at : 0;           // from registers 0 and 1
        plan.load[1][l] = at < 32 ? l : at - 32 + 16; // keep lane l, or register 2's float
    }
    return plan;
}
constexpr SpanPlan kSpanPlans[3] = {MakeSpanPlan(2), MakeSpanPlan(3), MakeSpanPlan(4)};

struct Isa {
    static constexpr int W = 16;
    static constexpr int kPermuteLimit = 16;
    using F = __m512;
    using I = __m512i;
    using M = __mmask16; // bit l: lane l is on

    static F Load(const float* p) { return _mm512_loadu_ps(p); }
    static void Store(float* p, F v) { _mm512_storeu_ps(p, v); }
    static F Set(float v) { return _mm512_set1_ps(v); }
    static I SetI(int v) { return _mm512_set1_epi32(v); }

    static F Add(F a, F b) { return _mm512_add_ps(a, b); }
    static F Sub(F a, F b) { return _mm512_sub_ps(a, b); }
    static F Mul(F a, F b) { return _mm512_mul_ps(a, b); }
    static F Div(F a, F b) { return _mm512_div_ps(a, b); }

    // Ordered comparisons: false for a NaN operand, as in C++.
    static M Gt(F a, F b) { return _mm512_cmp_ps_mask(a, b, _CMP_GT_OQ); }
    static M Lt(F a, F b) { return _mm512_cmp_ps_mask(a, b, _CMP_LT_OQ); }
    static M Ge(F a, F b) { return _mm512_cmp_ps_mask(a, b, _CMP_GE_OQ); }
    static M Le(F a, F b) { return _mm512_cmp_ps_mask(a, b, _CMP_LE_OQ); }
    static M Eq(F a, F b) { return _mm512_cmp_ps_mask(a, b, _CMP_EQ_OQ); }

    static M AllLanes() { return M(0xFFFF); }
    static M NoLanes() { return M(0); }
    static M And(M a, M b) { return M(a & b); }
    static M Or(M a, M b) { return M(a | b); }
    static M AndNot(M a, M b) { return M(a & ~b); }
    static M Not(M a) { return M(~a); }
    static M Xnor(M a, M b) { return M(~(a ^ b)); }
    static unsigned Bits(M m) { return unsigned(m); }
    static bool Any(M m) { return m != 0; }
    static M FirstLanes(int n) { return M((1u << n) - 1u); }

    static F Select(M m, F a, F b) { return _mm512_mask_blend_ps(m, b, a); }
    static I SelectI(M m, I a, I b) { return _mm512_mask_blend_epi32(m, b, a); }

    // The unmasked forms of these intrinsics start from an undefined register, which GCC 12
    // reports as maybe uninitialised; the masked forms with every lane on are the same
    // instructions.
    static I Truncate(F a) { return _mm512_mask_cvttps_epi32(_mm512_setzero_si512(), 0xFFFF, a); }
    static F ToFloat(I a) { return _mm512_mask_cvtepi32_ps(_mm512_setzero_ps(), 0xFFFF, a); }
    static I AddI(I a, I b) { return _mm512_add_epi32(a, b); }
    static I SubI(I a, I b) { return _mm512_sub_epi32(a, b); }
    static M LtI(I a, I b) { return _mm512_cmplt_epi32_mask(a, b); }
    static M GtI(I a, I b) { return _mm512_cmpgt_epi32_mask(a, b); }
    static I AddWhere(I a, M m, int v) { return _mm512_mask_add_epi32(a, m, a, SetI(v)); }

    /// base[idx] in the lanes that are on, 0 in the others (which are not read).
    static F Gather(const float* base, I idx, M on) {
        return _mm512_mask_i32gather_ps(_mm512_setzero_ps(), on, idx, base, 4);
    }
    /// Reads the table entries e and e + 1 of each vector's lanes that are on.
    ///
    /// Neighbouring x (a row of a picture) mostly read nearby entries: when every lane's
    /// pair lies in a window of 32 entries around lane 0's, two loads and two permutes
    /// fetch them. Otherwise one 8-byte pair per lane is gathered (two gathers of eight)
    /// and split into firsts and seconds. The window is tried while it keeps working; after
    /// a few vectors it did not fit, only one vector in 16 tries it again.
    class TableReader {
    public:
        TableReader(const float* v, int size) : v_(v), size_(size) {}
        __attribute__((always_inline)) void Pair(I e, M on, F& v0, F& v1) {
            if (credit_ > 0) {
                if (window(e, on, v0, v1)) {
                    credit_ = kCredit;
                    return;
                }
                --credit_;
            } else if (++sinceTry_ == kRetryEvery) {
                sinceTry_ = 0;
                credit_ = 1;
            }
            // Lanes that are off read entries 0 and 1.
            const I k = SelectI(on, e, SetI(0));
            const F a = _mm512_castpd_ps(_mm512_mask_i32gather_pd(
                _mm512_setzero_pd(), 0xFF, _mm512_castsi512_si256(k), v_, 4));
            const F b = _mm512_castpd_ps(_mm512_mask_i32gather_pd(
                _mm512_setzero_pd(), 0xFF, _mm512_extracti64x4_epi64(k, 1), v_, 4));
            v0 = _mm512_permutex2var_ps(
                a, _mm512_setr_epi32(0, 2, 4, 6, 8, 10, 12, 14, 16, 18, 20, 22, 24, 26, 28, 30), b);
            v1 = _mm512_permutex2var_ps(
                a, _mm512_setr_epi32(1, 3, 5, 7, 9, 11, 13, 15, 17, 19, 21, 23, 25, 27, 29, 31), b);
        }

    private:
        static constexpr int kCredit = 4;      // failed tries before the window rests
        static constexpr int kRetryEvery = 16; // vectors between tries while it rests

        __attribute__((always_inline)) bool window(I e, M on, F& v0, F& v1) const {
            // Lane 0's index may be anything (a lane that is off): clamped, in 64 bits.
            const long long e0 = _mm_cvtsi128_si32(_mm512_castsi512_si128(e));
            const long long lastBase = (long long)size_ + 1 - 32; // the window in the table
            long long base = e0 - 15;
            base = base > lastBase ? lastBase : base;
            base = base < 0 ? 0 : base;
            const I k = SubI(e, SetI(int(base)));
            if (_mm512_mask_cmpgt_epu32_mask(on, k, SetI(30)))
                return false;
            const long long avail = (long long)size_ + 1 - base; // entries from base on, >= 2
            const float* w = v_ + base;
            const F w0 =
                avail >= 16 ? _mm512_loadu_ps(w) : _mm512_maskz_loadu_ps(FirstLanes(int(avail)), w);
            const F w1 = avail >= 32  ? _mm512_loadu_ps(w + 16)
                         : avail > 16 ? _mm512_maskz_loadu_ps(FirstLanes(int(avail - 16)), w + 16)
                                      : _mm512_setzero_ps();
            v0 = _mm512_permutex2var_ps(w0, k, w1);
            v1 = _mm512_permutex2var_ps(w0, AddI(k, SetI(1)), w1);
            return true;
        }

        const float* v_; // the table, size_ + 1 entries
        int size_;
        int credit_ = kCredit;
        int sinceTry_ = 0;
    };

    /// Whole vectors at a byte stride: one load when contiguous; for two to four floats
    /// apart (interleaved channels such as RGB or RGBA) the registers that span the 16
    /// values, loaded and stored under masks that touch only the values' own places, and
    /// permuted into lanes; a gather and a scatter up to a megabyte apart; else lane by lane.
    class Lanes {
    public:
        explicit Lanes(std::ptrdiff_t stride) : stride_(stride) {
            const std::ptrdiff_t f = std::ptrdiff_t(sizeof(float));
            if (stride == f) {
                mode_ = kDense;
            } else if (stride > f && stride <= 4 * f && stride % f == 0) {
                mode_ = kSpan;
                regs_ = int(stride / f);
                const SpanPlan& plan = kSpanPlans[regs_ - 2];
                for (int r = 0; r < regs_; ++r) {
                    places_[r] = M(plan.places[r]);
                    storeIdx_[r] = _mm512_loadu_si512(plan.store[r]);
                }
                loadIdx_[0] = _mm512_loadu_si512(plan.load[0]);
                loadIdx_[1] = _mm512_loadu_si512(plan.load[1]);
            } else if (stride >= -kGatherStride && stride <= kGatherStride) {
                mode_ = kGather;
                offsets_ = _mm512_mullo_epi32(
                    _mm512_setr_epi32(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15),
                    SetI(int(stride)));
            } else {
                mode_ = kSingle;
            }
        }
        __attribute__((always_inline)) F Load(const char* p) const {
            switch (mode_) {
            case kDense:
                return _mm512_loadu_ps(p);
            case kSpan: {
                // Registers under masks, merged pairwise by two-source permutes.
                const F r0 = _mm512_maskz_loadu_ps(places_[0], p);
                const F r1 = _mm512_maskz_loadu_ps(places_[1], p + 64);
                if (regs_ == 2)
                    return _mm512_permutex2var_ps(r0, loadIdx_[0], r1);
                const F r2 = _mm512_maskz_loadu_ps(places_[2], p + 128);
                if (regs_ == 3)
                    return _mm512_permutex2var_ps(_mm512_permutex2var_ps(r0, loadIdx_[0], r1),
                                                  loadIdx_[1], r2);
                const F r3 = _mm512_maskz_loadu_ps(places_[3], p + 192);
                return _mm512_shuffle_f32x4(_mm512_permutex2var_ps(r0, loadIdx_[0], r1),
                                            _mm512_permutex2var_ps(r2, loadIdx_[0], r3), 0x44);
            }
            case kGather:
                return _mm512_mask_i32gather_ps(_mm512_setzero_ps(), 0xFFFF, offsets_, p, 1);
            default: {
                alignas(64) float v[16];
                for (int l = 0; l < 16; ++l)
                    __builtin_memcpy(&v[l], p + l * stride_, sizeof(float));
                return _mm512_load_ps(v);
            }
            }
        }
        __attribute__((always_inline)) void Store(char* p, F y) const {
            switch (mode_) {
            case kDense:
                _mm512_storeu_ps(p, y);
                return;
            case kSpan:
                for (int r = 0; r < regs_; ++r)
                    _mm512_mask_storeu_ps(p + 64 * r, places_[r],
                                          _mm512_mask_permutexvar_ps(y, 0xFFFF, storeIdx_[r], y));
                return;
            case kGather:
                _mm512_i32scatter_ps(p, offsets_, y, 1);
                return;
            default: {
                alignas(64) float v[16];
                _mm512_store_ps(v, y);
                for (int l = 0; l < 16; ++l)
                    __builtin_memcpy(p + l * stride_, &v[l], sizeof(float));
            }
            }
        }

    private:
        static constexpr std::ptrdiff_t kGatherStride = std::ptrdiff_t(1) << 20;
        enum Mode { kDense, kSpan, kGather, kSingle };
        std::ptrdiff_t stride_;
        Mode mode_ = kSingle;
        int regs_ = 0;        // kSpan: registers the 16 values span (2 .. 4)
        M places_[4] = {};    // kSpan: the values' places in each register
        I loadIdx_[2] = {};   // kSpan: the permutes that gather the lanes
        I storeIdx_[4] = {};  // kSpan: position -> lane
        I offsets_ = SetI(0); // kGather: lane * stride
    };

    /// The first n (1 .. 16) floats of p, 0 beyond (which are not read).
    static F LoadFirst(const float* p, int n) { return _mm512_maskz_loadu_ps(FirstLanes(n), p); }
    /// table[idx & 15] per lane.
    static F Permute(F table, I idx) {
        return _mm512_mask_permutexvar_ps(table, 0xFFFF, idx, table);
    }
};

#include "curve/curve_batch_body.inc"

} // namespace

const KernelSet kAvx512Kernels = {"avx512", Isa::W, &Classify, &Exact};

} // namespace curve_batch
