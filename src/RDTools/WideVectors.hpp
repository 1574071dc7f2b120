#pragma once

// Kernels that the compiler turns into vector code, and that gain by wider vectors than every processor of the target
// has, are compiled a second time for these, and the processor decides at run time which of the two runs. Both give the
// same bits: such kernels are in integers only, or come with a proof.
//
//     RD_KERNEL void AddRows(...) { ... }                                  // the loop, inlined into both
//     void AddRowsNarrow(...) { AddRows(...); }
//     RD_FOR_WIDE_VECTORS void AddRowsWide(...) { AddRows(...); }
//     (HasWideVectors() ? AddRowsWide : AddRowsNarrow)(...);
//
// KORMELIN_NARROW_VECTORS makes a build that takes the narrow ones everywhere: to compare the two as a whole.

#define RD_KERNEL [[gnu::always_inline]] inline

#if defined(__x86_64__) && defined(__GNUC__)

#define RD_FOR_WIDE_VECTORS [[gnu::target("avx2")]]

/// Whether this processor can run what is marked RD_FOR_WIDE_VECTORS.
inline bool HasWideVectors()
{
#if defined(KORMELIN_NARROW_VECTORS)
    return false;
#else
    static const bool bHas = __builtin_cpu_supports("avx2") != 0;
    return bHas;
#endif
}

#else

#define RD_FOR_WIDE_VECTORS

inline bool HasWideVectors()
{
    return false;
}

#endif
