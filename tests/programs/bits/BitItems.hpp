#pragma once

#include <functional>
#include <string>
#include <utility>
#include <vector>

/// One piece of work whose results are hashed. Different items, and the same one on different threads, do not touch.
struct ClBitItem
{
    using Lines_t = std::vector<std::string>; ///< each a name without blanks and a hash

    std::string m_sName; ///< the beginning of the names of its lines
    std::function<Lines_t()> m_fnRun;
};
using BitItems_t = std::vector<ClBitItem>;

/// Every operator with many settings on pseudo-random images: an item for each sample type and number of planes.
void AddOperatorItems(BitItems_t& aItems);
/// The road on drawn slaps, upright and leaning, of several resolutions, noisy and faint, and on pictures without
/// fingers. bLarge: those of 1000 pixels per inch, too.
void AddDrawnItems(BitItems_t& aItems, bool bLarge);
/// The road on the BMP files of a folder, in the order of their names. Errors: std::filesystem::filesystem_error.
void AddFileItems(BitItems_t& aItems, const std::string& sFolder);
