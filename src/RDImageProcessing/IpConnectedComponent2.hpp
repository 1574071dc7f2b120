#pragma once

#include "RDImageProcessing/ObjectRuns.hpp"
#include "RDTools/FpImage.hpp"
#include "RDTools/ProcessorBase.hpp"
#include "RDTools/Vector.hpp"

/// Measures the four-connected objects of an image.
/// Input   pInImage, 8-bit, one plane, object pixels 0 (see ClIpLabeling); optional m_pInImageGrey, 8-bit, same size.
/// Output  m_pComponents: one entry per object in label order. Optional m_pOutImage: the label image.
/// Values  pixel coordinates, x the column, y the row as stored. All values are those of sums that run over the pixels
/// in
///         raster order, one addition a pixel: sums of whole numbers are exact however they are taken, the moments are
///         summed up in that order.
/// Errors  ClException -37 without input or array, -44 for a grey image of another size; those of ClIpLabeling.
/// Cost    that of ClObjectRuns, a step for each run and, for the moments, one for each object pixel.
class ClIpConnectedComponent2 : public ClProcessorBase
{
public:
    /// One connected object with its statistics.
    class ClComponent
    {
    public:
        ClComponent() = default;
        ClComponent(const ClComponent&) = default;
        ClComponent& operator=(const ClComponent&) = default;
        virtual ~ClComponent() = default;

        double Area() const { return m_dArea; }
        /// Orientation and moments take no part; points count as equal within ClVector::m_cdEpsilon.
        bool operator==(const ClComponent& cOther) const;

        ClVector m_cCenter;                 ///< centre of gravity
        ClVector m_cMin;                    ///< smallest column, smallest row
        ClVector m_cMax;                    ///< largest column, largest row, inclusive
        ClVector m_cFirstPixel{-1.0, -1.0}; ///< first in raster order
        double m_dArea = 0.0;               ///< pixels
        double m_dEccentricity = 0.0;       ///< 0 for a round shape, towards 1 for a line
        double m_dMeanGrey = 0.0;           ///< of the grey image under the object
        double m_dOrientation = 0.0;        ///< of the principal axis, radians; not a number for a single pixel
        int m_nLabel = 0;                   ///< index in the array + 1
        double m_dMomentXY = 0.0;           ///< sum of dy dx about the centre
        double m_dMomentYY = 0.0;           ///< sum of dy dy
        double m_dMomentXX = 0.0;           ///< sum of dx dx
    };

    class ComponentsArray_t : public TpArrayDynamic<ClComponent, 10>
    {
    };

    /// Leaves ties as they are.
    struct ClSortNone
    {
        static bool Compare(const ClComponent&, const ClComponent&) { return false; }
    };

    /// Orders by a value, the largest first; Next decides between equal ones.
    template <double (ClComponent::*Value)() const, class Next> struct TpSortDescending
    {
        static bool Compare(const ClComponent& cFirst, const ClComponent& cSecond)
        {
            const double dFirst = (cFirst.*Value)();
            const double dSecond = (cSecond.*Value)();
            return dFirst == dSecond ? Next::Compare(cFirst, cSecond) : dFirst > dSecond;
        }
        bool operator()(const ClComponent& cFirst, const ClComponent& cSecond) const
        {
            return Compare(cFirst, cSecond);
        }
    };

    void SetParametersToDefault() override; ///< does nothing
    void PublishParameters(ClParameterContainer& cContainer) override;
    using ClProcessorBase::QueryParameters;
    ClProcessorBase* Create() override;
    const char* Name() const override;
    bool CanApply() override;
    /// The array is fresh or cleared. In entries that are in use the moments, the mean and the first pixel run on.
    long Process() override;
    /// What m_bMomentsOnDemand has left out, for one entry of the array as Process has left it.
    void MeasureMoments(unsigned long nEntry);

    ClImage* pInImage = nullptr;                ///< not owned
    ClImage* m_pInImageGrey = nullptr;          ///< not owned, may be null
    ClImage* m_pOutImage = nullptr;             ///< not owned, may be null
    ComponentsArray_t* m_pComponents = nullptr; ///< not owned
    bool m_bMomentsOnDemand = false; ///< leave moments, eccentricity and orientation as they are: they cost the most

private:
    bool GreyHasSameSize() const;
    void PrepareEntries(unsigned long nLabels);

    ClObjectRuns m_cRuns; ///< of the last run
};
