#pragma once

#include "RDImageProcessing/IpConnectedComponent2.hpp"
#include "RDTools/FpImage.hpp"
#include "RDTools/ProcessorBase.hpp"
#include "RDTools/Rect.hpp"
#include "RDTools/TpArrayDynamic.hpp"
#include "RDTools/Vector.hpp"

/// Finds the single fingers in one grey slap image, by fixed rules on the size and position of dark objects; ridges are
/// never looked at.
///
/// Input       8 bits, one plane (three planes are folded to grey), at least 160 by 160 pixels, at least 3900 pels per
///             metre in both directions, dark fingers on light ground, tips upwards. It is never written to.
/// Output      m_nFingers (0 to 4), m_aRects in input coordinates, m_aImages at input resolution (at most 500 by 500),
///             m_nHand, m_abFingerSlots; m_pOutImage, if given, receives the binary working image.
/// Coordinates x is the column, y the row as stored: bitmaps are bottom-up, so y grows towards the finger tips. The
///             working image stands at 3937 pels per metre (100 pixels per inch), where all thresholds of the detection
///             are pixels; m_dScale is the input's resolution over that. Angles are radians, an upright finger 1.57.
/// Errors      results of Apply(): -10 no input, -13 resolution, -15 uniform image, -14 size, and the codes of the
///             operators; raised: ClExBadAlloc -102 and what an operator raises during the detection.
/// Thread      one object, one thread, one run: a second run would append to the first one's lists.
class ClIpFourPrintSegmentation : public ClProcessorBase
{
public:
    /// A geometric object that can be put back to its start.
    class ClCustomGeometricObjects
    {
    public:
        ClCustomGeometricObjects() = default;
        ClCustomGeometricObjects(const ClCustomGeometricObjects&) = default;
        ClCustomGeometricObjects& operator=(const ClCustomGeometricObjects&) = default;
        virtual ~ClCustomGeometricObjects();
        virtual void Reset() = 0;

        bool m_bFlag0 = false; // both only travel with a copy
        bool m_bFlag1 = false;
    };

    /// The box of a finger, its limits inclusive.
    class cBoundingboxes : public ClCustomGeometricObjects
    {
    public:
        void Reset() override; ///< nothing seen yet; colour and mark stay

        static constexpr int nNothingSeen = 99999999;

        int m_nMinX = nNothingSeen;
        int m_nMaxX = 0;
        int m_nMinY = nNothingSeen;
        int m_nMaxY = 0; ///< the tip side
        float m_fRed = 0.0f;
        float m_fGreen = 0.0f;
        float m_fBlue = 0.0f;
        float m_fAlpha = 255.0f;
        bool m_bMarked = false;
    };

    using Boxes_t = TpArrayDynamic<cBoundingboxes, 10>;
    using Images_t = TpArrayDynamic<ClImage, 10>;
    using Components_t = ClIpConnectedComponent2::ComponentsArray_t;
    using Marks_t = TpArrayDynamic<int, 10>;

    ClIpFourPrintSegmentation();

    void SetParametersToDefault() override;
    void PublishParameters(ClParameterContainer& cContainer) override; ///< "pInImage", "pOutImage"
    ClProcessorBase* Create() override;
    const char* Name() const override;
    using ClProcessorBase::QueryParameters;
    long Process() override;
    long ApplyParam(ClImage& in, ClImage& out); ///< sets the two images and runs Apply()

    // Input and binarisation (IpFourPrintInput.cpp)
    long ValidateInput();
    /// Whether no byte differs from the first one of the last row, over planes * width bytes a row: exact for 8-bit
    /// samples. An image without rows or columns is uniform.
    bool IsUni(ClImage& image);
    /// cGrey: one plane at full resolution, sharing the input's pixels where it is grey already. cScaled: a copy at the
    /// working resolution. Sets m_dScale, to exactly 1 within 2 percent.
    long PrepareInputImage(ClImage& cGrey, ClImage& cScaled);
    /// cBinary: 0 where fingers are, 255 elsewhere; cScaled ends as the stretched grey image.
    long BinarizeImage(ClImage& cScaled, ClImage& cBinary);

    // Initial segments (IpFourPrintSegments.cpp)
    static double Overlapping1D(double dFrom1, double dTo1, double dFrom2, double dTo2);
    static bool OverlappingComponents(ClIpConnectedComponent2::ClComponent& cFirst,
                                      ClIpConnectedComponent2::ClComponent& cSecond, double& dOverlapX,
                                      double& dOverlapY);
    static void InitBoundingboxes(Boxes_t& aBoxes, int nCount, float fRed, float fGreen, float fBlue, float fAlpha);
    /// Labels the objects of cImage, straightens a leaning hand once and cuts objects that are too large for one finger
    /// until none is left. dAngle: 0 on entry; the mean orientation if the image was rotated, else 0.
    long FindInitialFingerSegments(ClImage& cImage, Components_t& aComponents, double& dAngle);

    // Rules on the candidates (IpFourPrintRules.cpp)
    /// aSelected: 1 for each entry of m_aCenters that is a finger, else 0. Shortens aComponents. Always 0.
    long ApplyRulesToGetRightFingerSegments(Components_t& aComponents, ClImage& cImage, Marks_t& aSelected);

    // Geometry (IpFourPrintGeometry.cpp)
    static void SortBoundingboxesByXCoordinate(Boxes_t& aBoxes);
    static void BoundingBoxCorrection(Boxes_t& aBoxes, Boxes_t& aOrigins, int nWidth, int nHeight, int nMargin,
                                      unsigned long nImageWidth, unsigned long nImageHeight);
    void CutFingerFromImage(cBoundingboxes& cBox, ClImage& cImage, Images_t& aCut, int nIndex,
                            TpArrayStatic<bool>& aLeftOfCenter, bool& bAtImageEdge, bool& bFarFromEdge,
                            unsigned long nWidth, unsigned long nHeight);
    /// The place of a finished box in the input image; of a rotated hand the upright rectangle around its corners.
    void CalculateBoxCoordinates(cBoundingboxes cResult, cBoundingboxes cOrigin, long& nLeft, long& nRight,
                                 long& nBottom, long& nTop);

    // Pruning (IpFourPrintPruning.cpp)
    static void RemoveAmputatedFingerprints(Boxes_t& aBoxes, Boxes_t& aOrigins, int& nCount);
    void RemoveRelativelySmallFingerprintBoxes(Images_t& aImages, Boxes_t& aBoxes, Boxes_t& aOrigins, int& nCount);
    void RemoveOverlappingFingerprintBoxes(Images_t& aImages, Boxes_t& aBoxes, Boxes_t& aOrigins, int& nCount,
                                           double dLimit);
    void ReduceFingerCountToMaxOfFourByRules(Images_t& aImages, Boxes_t& aBoxes, Boxes_t& aOrigins, int& nCount);
    void RemoveToSmallFingerprintBoxes(Images_t& aImages, Boxes_t& aBoxes, Boxes_t& aOrigins, int& nCount,
                                       double dMinSize);

    // Hand (IpFourPrintHand.cpp)
    long SpecifyHand();
    long CalculateFingerPositions(bool& bSlot0, bool& bSlot1, bool& bSlot2, bool& bSlot3);
    long ProcessHorizontalThumbs(TpArrayStatic<bool>& aLeftOfCenter);

    // Looking at the state after a run (IpFourPrintDemo.cpp). None of these changes the processor.
    /// The input with three planes and the finished boxes drawn on it as frames of one pixel. dAngle: that of the hand
    /// as in m_dRotation, 0 for an upright one. An upright hand has one frame a finger, with the samples 255, 0, 0. Of
    /// another hand the picture is turned upright for these frames and back, which blurs it, and each finger has a
    /// second frame, 255, 0, 255: the rectangle in the input. pPicture gets the input's size; an input of 2 or 4 planes
    /// keeps them, and one of 2 or of other than 8 bits has no frames.
    /// Errors: -10 without input or picture, or if they are the same image; ClExBadAlloc. An operator that fails leaves
    /// the picture empty.
    long CreateDemoPicture(ClImage* pPicture, double dAngle) const;
    /// Copies m_aCenters, its capacity included.
    void SaveKoords(TpArrayDynamic<ClVector, 10>& aCenters) const;
    /// Copy the first four entries of m_aBoxes, m_aResultBoxes or m_aOriginBoxes; a missing one is a box that has seen
    /// nothing.
    void SaveBoxes(cBoundingboxes& cBox0, cBoundingboxes& cBox1, cBoundingboxes& cBox2, cBoundingboxes& cBox3) const;
    void SaveResultBoxes(cBoundingboxes& cBox0, cBoundingboxes& cBox1, cBoundingboxes& cBox2,
                         cBoundingboxes& cBox3) const;
    void SaveAfisBoxes(cBoundingboxes& cBox0, cBoundingboxes& cBox1, cBoundingboxes& cBox2,
                       cBoundingboxes& cBox3) const;

    ClImage* m_pInImage = nullptr;  ///< not owned
    ClImage* m_pOutImage = nullptr; ///< if not null, receives the binary image; not owned
    TpArrayDynamic<tagRECT, 10> m_aRects;
    Images_t m_aImages;    ///< the fingers
    Images_t m_aCutImages; ///< raw cut-outs of the full-resolution image
    int m_nFingers = 0;
    bool m_bReverseOrder = false; ///< three tips rise from left to right
    bool m_bKeepOrder = false;    ///< keep that flag through SpecifyHand
    bool m_bSuccess = true;
    double m_dScale = 0.0;
    double m_dRotation = 0.0; ///< angle of the hand in radians, 0 if it was not rotated
    bool m_bDebugImages = false;
    int m_nDebugThreshold = 0;
    ClImage* m_pDebugFiltered = nullptr;
    ClImage* m_pDebugScaled = nullptr;
    ClImage* m_pDebugStretched = nullptr;
    bool m_bCutFingers = true;
    bool m_bRefineFingers = true;
    int m_nHand = 0;                         ///< 0 not decided, 1 right, 2 left, 3 two thumbs
    bool m_abFingerSlots[4] = {};            ///< the places of a hand, in picture order from left to right
    TpArrayDynamic<ClVector, 10> m_aCenters; ///< centres of the candidates
    TpArrayDynamic<ClVector, 10> m_aShapes;  ///< their areas (m_dX) and eccentricities (m_dY)
    Boxes_t m_aBoxes;                        ///< tight boxes at the working resolution
    Boxes_t m_aResultBoxes;                  ///< boxes inside the cut-outs, in their coordinates
    Boxes_t m_aOriginBoxes;                  ///< boxes of the cut-outs at the working resolution
    int m_nRotationDelta = 0;                ///< width of the rotated image minus that of the unrotated one

private:
    static constexpr double dUpright = 1.57; // radians; this value as it stands, not pi over 2

    // The halves of a run (IpFourPrintSegmentation.cpp)
    long Detect(ClImage& cGrey, ClImage& cBinary, Components_t& aComponents, double& dAngle, Marks_t& aSelected);
    void MakeBoxes(const ClImage& cBinary, Components_t& aComponents, const Marks_t& aSelected, double dAngle);
    void RotateGrey(ClImage& cGrey, double dAngle);
    void DropFingersWithoutImage();
    static void RemoveImage(Images_t& aImages, unsigned long nIndex);
    static void RemoveBox(Images_t& aImages, Boxes_t& aBoxes, Boxes_t& aOrigins, int& nCount, int nBox);
    long CutAndJudge(ClImage& cGrey, double dAngle);
    void CollectRectangles();
    void LimitImages();

    // Geometry: a rectangle of a picture, limits inclusive; in pictures of any size, so wider than their coordinates
    struct StRectangle
    {
        long nLeft;
        long nRight;
        long nBottom;
        long nTop;
    };
    StRectangle PlaceOfBox(const cBoundingboxes& cResult, const cBoundingboxes& cOrigin) const;
    static StRectangle Clamped(const StRectangle& cPlace, long nWidth, long nHeight);
    static StRectangle TurnedBack(const StRectangle& cPlace, double dHand, long nWidth, long nHeight);

    // Demonstration picture
    template <class Fn> void ForEachFinger(Fn&& fn) const;
    static void DrawFrame(ClImage& cPicture, const StRectangle& cPlace, const unsigned char (&anColour)[3]);

    // Rules
    void FillCandidates(const Components_t& aComponents, Marks_t& aSelected);
    int RemoveStrayAbove(Marks_t& aSelected);
    void KeepTopOfEachColumn(Marks_t& aSelected) const;
    void ClearPalm(Marks_t& aSelected, int nSecond);
    void ClearSmallExtra(Marks_t& aSelected);
    void ClearLoneCandidate(Marks_t& aSelected);

    // Hand
    long ScaledMinX(int nBox) const;
    long ScaledMinY(int nBox) const;
    long TipRow(int nBox) const;
    void PlaceBox(int nBox, bool* const* apSlot) const;
    void ShiftThreeSlots(bool* const* apSlot);
    void DetectFlatThumbs(bool* const* apSlot);
    void HandOfThree();
    void HandOfFour();

    // Refinement of each finger in its cut-out (IpFourPrintRefinement.cpp)
    int FingerIndex(int i) const { return m_bReverseOrder ? m_nFingers - 1 - i : i; }
    void RefineFingers(const TpArrayStatic<bool>& abAtImageEdge);
};

/// Runs an operator whose failure leaves an image empty instead of ending the run; only out of memory passes through.
template <class Fn> void RunLeavingEmpty(ClImage& cImage, Fn&& fn)
{
    try
    {
        fn();
    }
    catch (const ClExBadAlloc&)
    {
        throw;
    }
    catch (const ClException&)
    {
        cImage.Delete();
    }
}
