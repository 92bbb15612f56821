// Batch kernels for AVX2: 8 lanes, hardware gathers, control points of curves with up to
// eight segments permuted from registers. Built with -mavx2 and without FMA; run only when
// the processor has AVX2 (curve_batch_dispatch.cpp). The algorithm is
// curve_batch_body.inc.
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

struct Isa {
    static constexpr int W = 8;
    static constexpr int kPermuteLimit = 8;
    using F = __m256;
    using I = __m256i;
    using M = __m256; // all ones in a lane that is on

    static F Load(const float* p) { return _mm256_loadu_ps(p); }
    static void Store(float* p, F v) { _mm256_storeu_ps(p, v); }
    static F Set(float v) { return _mm256_set1_ps(v); }
    static I SetI(int v) { return _mm256_set1_epi32(v); }

    static F Add(F a, F b) { return _mm256_add_ps(a, b); }
    static F Sub(F a, F b) { return _mm256_sub_ps(a, b); }
    static F Mul(F a, F b) { return _mm256_mul_ps(a, b); }
    static F Div(F a, F b) { return _mm256_div_ps(a, b); }

    // Ordered comparisons: false for a NaN operand, as in C++.
    static M Gt(F a, F b) { return _mm256_cmp_ps(a, b, _CMP_GT_OQ); }
    static M Lt(F a, F b) { return _mm256_cmp_ps(a, b, _CMP_LT_OQ); }
    static M Ge(F a, F b) { return _mm256_cmp_ps(a, b, _CMP_GE_OQ); }
    static M Le(F a, F b) { return _mm256_cmp_ps(a, b, _CMP_LE_OQ); }
    static M Eq(F a, F b) { return _mm256_cmp_ps(a, b, _CMP_EQ_OQ); }

    static M AllLanes() { return _mm256_castsi256_ps(_mm256_set1_epi32(-1)); }
    static M NoLanes() { return _mm256_setzero_ps(); }
    static M And(M a, M b) { return _mm256_and_ps(a, b); }
    static M Or(M a, M b) { return _mm256_or_ps(a, b); }
    static M AndNot(M a, M b) { return _mm256_andnot_ps(b, a); } // a and not b
    static M Not(M a) { return _mm256_xor_ps(a, AllLanes()); }
    static M Xnor(M a, M b) { return Not(_mm256_xor_ps(a, b)); }
    static unsigned Bits(M m) { return unsigned(_mm256_movemask_ps(m)); }
    static bool Any(M m) { return Bits(m) != 0; }
    static M FirstLanes(int n) { return LtI(_mm256_setr_epi32(0, 1, 2, 3, 4, 5, 6, 7), SetI(n)); }

    static F Select(M m, F a, F b) { return _mm256_blendv_ps(b, a, m); }
    static I SelectI(M m, I a, I b) {
        return _mm256_castps_si256(
            _mm256_blendv_ps(_mm256_castsi256_ps(b), _mm256_castsi256_ps(a), m));
    }

    static I Truncate(F a) { return _mm256_cvttps_epi32(a); }
    static F ToFloat(I a) { return _mm256_cvtepi32_ps(a); }
    static I AddI(I a, I b) { return _mm256_add_epi32(a, b); }
    static I SubI(I a, I b) { return _mm256_sub_epi32(a, b); }
    static M LtI(I a, I b) { return _mm256_castsi256_ps(_mm256_cmpgt_epi32(b, a)); }
    static M GtI(I a, I b) { return _mm256_castsi256_ps(_mm256_cmpgt_epi32(a, b)); }
    static I AddWhere(I a, M m, int v) {
        return _mm256_add_epi32(a, _mm256_and_si256(_mm256_castps_si256(m), SetI(v)));
    }

    /// base[idx] in the lanes that are on, 0 in the others (which are not read).
    static F Gather(const float* base, I idx, M on) {
        return _mm256_mask_i32gather_ps(_mm256_setzero_ps(), base, idx, on, 4);
    }
    /// The table entries e and e + 1 of each lane, gathered as one 8-byte pair per lane
    /// (lanes that are off read entries 0 and 1).
    static void TablePair(const float* v, I e, M on, F& v0, F& v1) {
        const I k = SelectI(on, e, SetI(0));
        const double* pairs = reinterpret_cast<const double*>(v); // 8 bytes at v + k, unaligned
        // (The masked gathers, all lanes on: the unmasked intrinsics start from an undefined
        // register that GCC 12 reports as maybe uninitialised.)
        const __m256d all = _mm256_castsi256_pd(_mm256_set1_epi32(-1));
        const F a = _mm256_castpd_ps(_mm256_mask_i32gather_pd(_mm256_setzero_pd(), pairs,
                                                              _mm256_castsi256_si128(k), all, 4));
        const F b = _mm256_castpd_ps(_mm256_mask_i32gather_pd(
            _mm256_setzero_pd(), pairs, _mm256_extracti128_si256(k, 1), all, 4));
        // a holds the pairs of lanes 0 .. 3, b of lanes 4 .. 7; the shuffles pick the firsts
        // (seconds) in the order 0 1 4 5 2 3 6 7, which the permute puts right.
        const I order = _mm256_setr_epi32(0, 1, 4, 5, 2, 3, 6, 7);
        v0 = _mm256_permutevar8x32_ps(_mm256_shuffle_ps(a, b, 0x88), order);
        v1 = _mm256_permutevar8x32_ps(_mm256_shuffle_ps(a, b, 0xDD), order);
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

    /// Whole vectors at a byte stride: one load when contiguous, a gather up to a megabyte
    /// apart, else lane by lane; stores lane by lane unless contiguous.
    class Lanes {
    public:
        explicit Lanes(std::ptrdiff_t stride)
            : stride_(stride), gather_(stride >= -kGatherStride && stride <= kGatherStride),
              offsets_(_mm256_mullo_epi32(_mm256_setr_epi32(0, 1, 2, 3, 4, 5, 6, 7),
                                          SetI(gather_ ? int(stride) : 0))) {}
        __attribute__((always_inline)) F Load(const char* p) const {
            if (stride_ == std::ptrdiff_t(sizeof(float)))
                return _mm256_loadu_ps(reinterpret_cast<const float*>(p));
            if (gather_)
                return _mm256_mask_i32gather_ps(_mm256_setzero_ps(),
                                                reinterpret_cast<const float*>(p), offsets_,
                                                AllLanes(), 1);
            alignas(32) float v[8];
            for (int l = 0; l < 8; ++l)
                __builtin_memcpy(&v[l], p + l * stride_, sizeof(float));
            return _mm256_load_ps(v);
        }
        __attribute__((always_inline)) void Store(char* p, F y) const {
            if (stride_ == std::ptrdiff_t(sizeof(float))) {
                _mm256_storeu_ps(reinterpret_cast<float*>(p), y);
                return;
            }
            alignas(32) float v[8];
            _mm256_store_ps(v, y);
            for (int l = 0; l < 8; ++l)
                __builtin_memcpy(p + l * stride_, &v[l], sizeof(float));
        }

    private:
        static constexpr std::ptrdiff_t kGatherStride = std::ptrdiff_t(1) << 20;
        std::ptrdiff_t stride_;
        bool gather_; // 32-bit lane offsets hold the stride
        I offsets_;   // lane * stride
    };

    /// The first n (1 .. 8) floats of p, 0 beyond.
    static F LoadFirst(const float* p, int n) {
        alignas(32) float v[8] = {};
        for (int l = 0; l < n; ++l)
            v[l] = p[l];
        return _mm256_load_ps(v);
    }
    /// table[idx & 7] per lane.
    static F Permute(F table, I idx) { return _mm256_permutevar8x32_ps(table, idx); }
};

#include "curve/curve_batch_body.inc"

} // namespace

const KernelSet kAvx2Kernels = {"avx2", Isa::W, &Classify, &Exact};

} // namespace curve_batch
