#include "SystemText.hpp"

#include <cstring>

namespace SegmentTool
{
std::string SystemText(int nError)
{
    const char* szText = strerrordesc_np(nError);
    return szText != nullptr ? szText : "error " + std::to_string(nError) + " of the system";
}
} // namespace SegmentTool
