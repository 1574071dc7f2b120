#pragma once

/// A point or a direction in the plane, in double precision.
class ClVector
{
public:
    ClVector() = default;
    ClVector(double dX, double dY) : m_dX(dX), m_dY(dY) {}
    ClVector(const ClVector&) = default;
    ClVector& operator=(const ClVector&) = default;
    virtual ~ClVector() = default;

    /// Intersection of the line through p1 with direction d1 and the line through p2 with direction d2. dS and dT are
    /// the positions along the two lines, in lengths of their directions. Parallel lines (determinant at most 1e-07 in
    /// absolute value): all four results are positive infinity.
    static ClVector IntersectionINF(const ClVector& p1, const ClVector& d1, const ClVector& p2, const ClVector& d2,
                                    double& dS, double& dT);
    /// The same, with 0 in place of infinity for parallel lines.
    static ClVector Intersection(const ClVector& p1, const ClVector& d1, const ClVector& p2, const ClVector& d2,
                                 double& dS, double& dT);
    static ClVector CrossPoint(ClVector& p1, ClVector& d1, ClVector& p2, ClVector& d2, double& dS, double& dT);

    /// Geometric values whose difference is less than this count as equal.
    static constexpr double m_cdEpsilon = 1e-07;

    double m_dX = 0.0;
    double m_dY = 0.0;
};
