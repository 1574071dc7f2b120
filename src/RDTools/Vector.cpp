#include "RDTools/Vector.hpp"

#include "RDTools/FloatingPoint.hpp"

#include <cmath>
#include <limits>

ClVector ClVector::IntersectionINF(const ClVector& p1, const ClVector& d1, const ClVector& p2, const ClVector& d2,
                                   double& dS, double& dT)
{
    const double dDet = d2.m_dY * d1.m_dX - d2.m_dX * d1.m_dY;
    if (!(std::fabs(dDet) > m_cdEpsilon)) // not a number counts as parallel, too
    {
        dS = dT = std::numeric_limits<double>::infinity();
        return ClVector(dS, dS);
    }
    dS = (d2.m_dX * p1.m_dY - d2.m_dY * p1.m_dX - d2.m_dX * p2.m_dY + d2.m_dY * p2.m_dX) / dDet;
    dT = (d1.m_dX * p1.m_dY - d1.m_dY * p1.m_dX - d1.m_dX * p2.m_dY + d1.m_dY * p2.m_dX) / dDet;
    return ClVector(p2.m_dX + dT * d2.m_dX, p2.m_dY + dT * d2.m_dY);
}

ClVector ClVector::Intersection(const ClVector& p1, const ClVector& d1, const ClVector& p2, const ClVector& d2,
                                double& dS, double& dT)
{
    const ClVector cPoint = IntersectionINF(p1, d1, p2, d2, dS, dT);
    if (std::isinf(dS))
    {
        dS = dT = 0.0;
        return ClVector();
    }
    return cPoint;
}

ClVector ClVector::CrossPoint(ClVector& p1, ClVector& d1, ClVector& p2, ClVector& d2, double& dS, double& dT)
{
    return Intersection(p1, d1, p2, d2, dS, dT);
}
