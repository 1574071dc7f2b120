#pragma once

#include "RDTools/FpImage.hpp"

// Parts of a drawn hand at the sizes at which a run meets them: 320 by 300 pixels is a hand at the working resolution,
// 500 by 600 the cut-out of a finger, 1600 by 1500 a whole slap at 500 pixels per inch. A picture is named by its width
// and made when it is first asked for.

constexpr int n500Ppi = 19685; // pels per metre
constexpr int n100Ppi = 3937;

/// As it comes, 8-bit grey.
ClImage& GreyOf(int nWidth);

/// Its objects, black on white, as the detection and the refinement have them: of the smoothed picture.
ClImage& ObjectsOf(int nWidth);

/// The same pixels as GreyOf in three planes.
ClImage& ColourOf(int nWidth);

/// A drawn hand of four upright fingers in 1600 by 1500 pixels at 500 pixels per inch, or in twice as many at 1000.
struct ClSlapScene;
ClSlapScene FourFingerScene(int nPelsPerMetre);
