// How an operation takes a matrix.
#pragma once

#include <cstdint>

namespace passband {

class TVec;
class TMtx;

/// What is known about a matrix. A structure that it does not have gives wrong results: a symmetric matrix is read from
/// its lower triangle, a triangular one from its triangle.
enum class TMtxType : std::uint8_t { General, Symmetric, Hermitian, LowerTriangular, UpperTriangular };

/// Whether an operand is used as it is, transposed, or conjugated and transposed.
enum class TMtxOperation : std::uint8_t { None, Transposed, ConjTransposed };

}  // namespace passband
