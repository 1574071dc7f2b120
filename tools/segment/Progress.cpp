#include "Progress.hpp"

#include <algorithm>
#include <cstdio>

#include <sys/ioctl.h>
#include <unistd.h>

namespace SegmentTool
{
namespace
{
constexpr int nUsualWidth = 80;
constexpr int nMostBar = 40;
constexpr std::chrono::milliseconds cBetweenDraws{100};

int TerminalWidth()
{
    winsize cSize = {};
    if (ioctl(STDERR_FILENO, TIOCGWINSZ, &cSize) != 0 || cSize.ws_col == 0) return nUsualWidth;
    return cSize.ws_col;
}
} // namespace

std::string ClockText(double dSeconds)
{
    const auto nSeconds = static_cast<long long>(std::clamp(dSeconds, 0.0, 1e9));
    char szText[40];
    if (nSeconds >= 3600)
        std::snprintf(szText, sizeof szText, "%lld:%02lld:%02lld", nSeconds / 3600, nSeconds / 60 % 60, nSeconds % 60);
    else
        std::snprintf(szText, sizeof szText, "%lld:%02lld", nSeconds / 60, nSeconds % 60);
    return szText;
}

std::string ProgressLine(const ClStanding& c, int nWidth)
{
    const double dRate = c.m_dSeconds > 0.0 ? static_cast<double>(c.m_nDone - c.m_nEarlier) / c.m_dSeconds : 0.0;
    std::string sText = std::to_string(c.m_nDone);
    if (c.m_nTotal != 0)
    {
        sText += '/' + std::to_string(c.m_nTotal) + "  " + std::to_string(c.m_nDone * 100 / c.m_nTotal) + '%';
    }
    char szRate[40];
    std::snprintf(szRate, sizeof szRate, "  %.1f/s", dRate);
    sText += szRate;
    if (c.m_nTotal != 0 && dRate > 0.0)
    {
        const std::uint64_t nLeft = c.m_nTotal - std::min(c.m_nDone, c.m_nTotal);
        sText += "  " + ClockText(static_cast<double>(nLeft) / dRate) + " left";
    }
    if (c.m_nNotSegmented != 0) sText += "  " + std::to_string(c.m_nNotSegmented) + " not segmented";

    const int nBar = std::min(nMostBar, nWidth - static_cast<int>(sText.size()) - 4);
    if (c.m_nTotal != 0 && nBar >= 5)
    {
        const auto nFull = static_cast<std::size_t>(static_cast<double>(std::min(c.m_nDone, c.m_nTotal)) /
                                                    static_cast<double>(c.m_nTotal) * nBar);
        sText =
            '[' + std::string(nFull, '#') + std::string(static_cast<std::size_t>(nBar) - nFull, '.') + "]  " + sText;
    }
    return sText.substr(0, static_cast<std::size_t>(std::max(0, nWidth)));
}

ClMessages::ClMessages(bool bQuiet) : m_bQuiet(bQuiet), m_bProgress(!bQuiet && isatty(STDERR_FILENO) != 0) {}

ClMessages::~ClMessages()
{
    End();
}

void ClMessages::Start(std::uint64_t nTotal, const ClTally& cEarlier)
{
    m_bStarted = true;
    m_cStanding.m_nTotal = nTotal;
    m_cStanding.m_nEarlier = cEarlier.Total();
    m_cBegin = Clock_t::now();
    Step(cEarlier);
}

void ClMessages::Step(const ClTally& cTally)
{
    m_cStanding.m_nDone = cTally.Total();
    m_cStanding.m_nNotSegmented = cTally.Total() - cTally.Of(EOutcome::eSegmented);
    if (!m_bDrawn || Clock_t::now() - m_cLast >= cBetweenDraws) Draw();
}

void ClMessages::Tell(const std::string& sText)
{
    if (m_bQuiet) return;
    Clear();
    TellAlways(sText);
    Draw();
}

void ClMessages::End()
{
    Clear();
    m_bStarted = false;
}

void ClMessages::Draw()
{
    if (!m_bProgress || !m_bStarted) return;
    m_cLast = Clock_t::now();
    m_cStanding.m_dSeconds = std::chrono::duration<double>(m_cLast - m_cBegin).count();
    // One column is left free: some terminals go to the next line in the last one.
    std::fprintf(stderr, "\r%s\x1b[K", ProgressLine(m_cStanding, TerminalWidth() - 1).c_str());
    std::fflush(stderr);
    m_bDrawn = true;
}

void ClMessages::Clear()
{
    if (!m_bDrawn) return;
    std::fputs("\r\x1b[K", stderr);
    std::fflush(stderr);
    m_bDrawn = false;
}

void TellAlways(const std::string& sText)
{
    std::fprintf(stderr, "kormelin-segment: %s\n", sText.c_str());
}
} // namespace SegmentTool
