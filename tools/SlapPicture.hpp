#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

/// One printed area of a synthetic slap: a fingertip, a lower joint or a palm. Lengths are micrometres in the scene,
/// whose origin is the lower left corner of the picture and whose y grows towards the finger tips.
struct ClSlapPart
{
    enum EKind
    {
        eFingertip,
        eJoint,
        ePalm
    };
    enum EPointing
    {
        eUp,
        eRight,
        eLeft
    };
    enum EPattern
    {
        eWhorl,
        eLoopLeft,
        eLoopRight,
        eArch
    };

    EKind m_eKind = eFingertip;
    EPattern m_ePattern = eWhorl; // ridge flow; joints and palms have flows of their own
    EPointing m_ePointing = eUp;  // where the tip lies, seen from the base
    int m_nTipX = 0;              // place of the outermost point of the tip
    int m_nTipY = 0;
    int m_nWidth = 0;  // across the finger, about 13000 to 19000 for a fingertip
    int m_nLength = 0; // from the tip to the base, about 20000 to 28000 for a fingertip
};

/// What lies on the scanner: size and resolution of the picture and the parts in any order.
struct ClSlapScene
{
    int m_nPelsPerMetre = 19685;
    int m_nWidth = 0;      // micrometres
    int m_nHeight = 0;     // micrometres
    double m_dLean = 0.0;  // radians, -0.8 to 0.8, turned about the picture's centre; positive moves the tips left
    unsigned m_nSeed = 1u; // of the noise; the same scene gives the same bytes everywhere
    std::vector<ClSlapPart> m_aParts;
};

/// Bottom-up rectangle, half open: width is right - left, height is top - bottom, and top is larger than bottom.
/// Columns left to right - 1 and rows bottom to top - 1 are inside.
struct ClSlapRect
{
    int left = 0;
    int top = 0;
    int right = 0;
    int bottom = 0;
};

/// Cosine and sine of a lean in units of 1 / m_nOne, worked out without a mathematics library; up to 1 radian.
struct ClSlapTurn
{
    static constexpr std::int64_t m_nOne = 1 << 20;

    explicit ClSlapTurn(double dAngle);

    std::int64_t m_nCosine = m_nOne;
    std::int64_t m_nSine = 0;
};

/// An 8-bit grey slap picture with known truth, drawn from a scene in integer arithmetic, so that the bytes are the
/// same with every compiler. Ground 235 to 250, ridges of 0.46 mm period down to about 40.
/// Errors: std::invalid_argument for a scene outside the ranges above or without a pixel; std::bad_alloc.
class ClSlapPicture
{
public:
    /// A pixel below this grey is ink; every other one is ground or a valley between ridges.
    static constexpr int m_nInkLimit = 200;

    explicit ClSlapPicture(const ClSlapScene& cScene);

    /// The picture as one packed device-independent bitmap: 40-byte header, 256 grey entries, rows padded to 4 bytes.
    std::vector<std::uint8_t> Block() const;

    /// The same behind a 14-byte file header, as a BMP file holds it.
    std::vector<std::uint8_t> BmpFile() const;

    int m_nWidth = 0; // pixels
    int m_nHeight = 0;
    int m_nPelsPerMetre = 0;
    std::vector<std::uint8_t> m_aPixels; // m_nHeight rows of m_nWidth bytes without padding, row 0 the lower edge

    /// Tight rectangles around the ink of each fingertip, from left to right, and of each joint and palm, as listed in
    /// the scene. A part without ink has an empty rectangle.
    std::vector<ClSlapRect> m_aFingers;
    std::vector<ClSlapRect> m_aOthers;

private:
    void DrawGround(unsigned nSeed);
    ClSlapRect DrawPart(const ClSlapScene& cScene, const ClSlapPart& cPart, unsigned nPartSeed,
                        const std::vector<std::uint8_t>& aGround);
};

/// Ready-made scenes. All are at least 41 mm in both directions, so 161 pixels at 3937 pels per metre.
namespace SlapScenes
{
enum EHand
{
    eLeftHand,
    eRightHand
};

ClSlapScene OneFinger(int nPelsPerMetre);
ClSlapScene TwoFingers(int nPelsPerMetre);   // index and middle finger of a right hand
ClSlapScene ThreeFingers(int nPelsPerMetre); // index, middle and ring finger of a right hand
ClSlapScene FourFingers(EHand eHand, int nPelsPerMetre);
ClSlapScene TwoFlatThumbs(int nPelsPerMetre);               // lying across the picture, tips towards each other
ClSlapScene LeaningHand(double dLean, int nPelsPerMetre);   // four fingers of a right hand, lean as in ClSlapScene
ClSlapScene LeaningPair(double dLean, int nPelsPerMetre);   // the scene TwoFingers, leaning
ClSlapScene TouchingFingers(int nPelsPerMetre);             // two fingers pressed side by side without a gap
ClSlapScene FingersWithJointsAndPalm(int nPelsPerMetre);    // four fingers, two joints below each, and a palm
ClSlapScene TwoFingersWithJointsAndPalm(int nPelsPerMetre); // the same of two fingers

struct ClNamedScene
{
    const char* m_szName;
    const char* m_szDescription;
    ClSlapScene (*m_pMake)(int nPelsPerMetre);
};

/// Every ready-made scene under the name that make-slap takes.
const std::vector<ClNamedScene>& All();

/// The entry of that name, or null.
const ClNamedScene* Find(const std::string& sName);
} // namespace SlapScenes
