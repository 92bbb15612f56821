// Batch kernels for SSE2, the x86-64 baseline: 4 lanes, on every processor. Gathers and
// scatters are done lane by lane; there is no permute, so segment control points are
// always read from the table. The algorithm is curve_batch_body.inc.
#include "curve/curve_batch_kernels.h"

#include <emmintrin.h>

namespace curve_batch {
namespace {

struct Isa {
    static constexpr int W = 4;
    static constexpr int kPermuteLimit = 0; // control points always from the table
    using F = __m128;
    using I = __m128i;
    using M = __m128; // all ones in a lane that is on

    static F Load(const float* p) { return _mm_loadu_ps(p); }
    static void Store(float* p, F v) { _mm_storeu_ps(p, v); }
    static F Set(float v) { return _mm_set1_ps(v); }
    static I SetI(int v) { return _mm_set1_epi32(v); }

    static F Add(F a, F b) { return _mm_add_ps(a, b); }
    static F Sub(F a, F b) { return _mm_sub_ps(a, b); }
    static F Mul(F a, F b) { return _mm_mul_ps(a, b); }
    static F Div(F a, F b) { return _mm_div_ps(a, b); }

    // Comparisons are false for a NaN operand, as in C++.
    static M Gt(F a, F b) { return _mm_cmpgt_ps(a, b); }
    static M Lt(F a, F b) { return _mm_cmplt_ps(a, b); }
    static M Ge(F a, F b) { return _mm_cmpge_ps(a, b); }
    static M Le(F a, F b) { return _mm_cmple_ps(a, b); }
    static M Eq(F a, F b) { return _mm_cmpeq_ps(a, b); }

    static M AllLanes() { return _mm_castsi128_ps(_mm_set1_epi32(-1)); }
    static M NoLanes() { return _mm_setzero_ps(); }
    static M And(M a, M b) { return _mm_and_ps(a, b); }
    static M Or(M a, M b) { return _mm_or_ps(a, b); }
    static M AndNot(M a, M b) { return _mm_andnot_ps(b, a); } // a and not b
    static M Not(M a) { return _mm_xor_ps(a, AllLanes()); }
    static M Xnor(M a, M b) { return Not(_mm_xor_ps(a, b)); }
    static unsigned Bits(M m) { return unsigned(_mm_movemask_ps(m)); }
    static bool Any(M m) { return Bits(m) != 0; }
    static M FirstLanes(int n) { return LtI(_mm_setr_epi32(0, 1, 2, 3), SetI(n)); }

    static F Select(M m, F a, F b) { return _mm_or_ps(_mm_and_ps(m, a), _mm_andnot_ps(m, b)); }
    static I SelectI(M m, I a, I b) {
        const I mi = _mm_castps_si128(m);
        return _mm_or_si128(_mm_and_si128(mi, a), _mm_andnot_si128(mi, b));
    }

    static I Truncate(F a) { return _mm_cvttps_epi32(a); }
    static F ToFloat(I a) { return _mm_cvtepi32_ps(a); }
    static I AddI(I a, I b) { return _mm_add_epi32(a, b); }
    static I SubI(I a, I b) { return _mm_sub_epi32(a, b); }
    static M LtI(I a, I b) { return _mm_castsi128_ps(_mm_cmplt_epi32(a, b)); }
    static M GtI(I a, I b) { return _mm_castsi128_ps(_mm_cmpgt_epi32(a, b)); }
    static I AddWhere(I a, M m, int v) {
        return _mm_add_epi32(a, _mm_and_si128(_mm_castps_si128(m), SetI(v)));
    }

    /// base[idx] in the lanes that are on, 0 in the others.
    static F Gather(const float* base, I idx, M on) {
        alignas(16) int i[4];
        alignas(16) float v[4];
        _mm_store_si128(reinterpret_cast<I*>(i), idx);
        const unsigned bits = Bits(on);
        for (int l = 0; l < 4; ++l)
            v[l] = (bits >> l) & 1u ? base[i[l]] : 0.0f;
        return _mm_load_ps(v);
    }
    /// The table entries e and e + 1 of each lane, read as one 8-byte pair per lane
    /// (lanes that are off read entries 0 and 1).
    static void TablePair(const float* v, I e, M on, F& v0, F& v1) {
        // Each pair straight into a register half: pairs stored to memory and read back as
        // a vector would wait for the stores (no forwarding from two stores to one load).
        alignas(16) int i[4];
        _mm_store_si128(reinterpret_cast<I*>(i), SelectI(on, e, SetI(0)));
        auto pairOf = [&](int l0, int l1) {
            const __m128d lo =
                _mm_castsi128_pd(_mm_loadl_epi64(reinterpret_cast<const I*>(v + i[l0])));
            return _mm_castpd_ps(_mm_loadh_pd(lo, reinterpret_cast<const double*>(v + i[l1])));
        };
        const F a = pairOf(0, 1), b = pairOf(2, 3);
        v0 = _mm_shuffle_ps(a, b, _MM_SHUFFLE(2, 0, 2, 0));
        v1 = _mm_shuffle_ps(a, b, _MM_SHUFFLE(3, 1, 3, 1));
    }

    /// Reads the table entries of each vector's lanes.
    class TableReader {
    public:
        TableReader(const float* v, int) : v_(v) {}
        __attribute__((always_inline)) void Pair(I e, M on, F& v0, F& v1) const {
            TablePair(v_, e, on, v0, v1);
        }

    private:
        const float* v_; // the table
    };

    /// Whole vectors at a byte stride: one load when contiguous, else lane by lane.
    class Lanes {
    public:
        explicit Lanes(std::ptrdiff_t stride) : stride_(stride) {}
        __attribute__((always_inline)) F Load(const char* p) const {
            if (stride_ == std::ptrdiff_t(sizeof(float)))
                return _mm_loadu_ps(reinterpret_cast<const float*>(p));
            // Lane by lane into the register (see TablePair on reading stores back).
            auto at = [&](int l) {
                return _mm_load_ss(reinterpret_cast<const float*>(p + l * stride_));
            };
            return _mm_movelh_ps(_mm_unpacklo_ps(at(0), at(1)), _mm_unpacklo_ps(at(2), at(3)));
        }
        __attribute__((always_inline)) void Store(char* p, F y) const {
            if (stride_ == std::ptrdiff_t(sizeof(float))) {
                _mm_storeu_ps(reinterpret_cast<float*>(p), y);
                return;
            }
            alignas(16) float v[4];
            _mm_store_ps(v, y);
            for (int l = 0; l < 4; ++l)
                __builtin_memcpy(p + l * stride_, &v[l], sizeof(float));
        }

    private:
        std::ptrdiff_t stride_;
    };

    // No permute: never called (kPermuteLimit is 0).
    static F LoadFirst(const float*, int) { return _mm_setzero_ps(); }
    static F Permute(F table, I) { return table; }
};

#include "curve/curve_batch_body.inc"

} // namespace

const KernelSet kSse2Kernels = {"sse2", Isa::W, &Classify, &Exact};

} // namespace curve_batch
