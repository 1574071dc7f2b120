#pragma once

// Results are the same to the bit wherever the library is built. They rest on arithmetic that rounds each operation
// once, to the type that the source names, in the order in which it is written. All that calculate with images include
// this and refuse to be compiled otherwise. Contraction (-ffp-contract) cannot be seen from within: see
// docs/determinism.md.

#include <cfloat>
#include <limits>

#if defined(__FAST_MATH__) || (defined(__FINITE_MATH_ONLY__) && __FINITE_MATH_ONLY__) ||                               \
    defined(__ASSOCIATIVE_MATH__) || defined(__RECIPROCAL_MATH__) || defined(__NO_SIGNED_ZEROS__)
#error "Build without -ffast-math and its parts: NaN is in use, and sums depend on their order."
#endif

static_assert(std::numeric_limits<float>::is_iec559 && std::numeric_limits<double>::is_iec559,
              "float and double are those of IEC 60559");
static_assert(FLT_EVAL_METHOD == 0,
              "intermediate results have the precision of their type: 32-bit x86 takes -msse2 -mfpmath=sse");
