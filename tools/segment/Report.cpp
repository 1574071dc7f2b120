#include "Report.hpp"

#include "Escape.hpp"
#include "FingerCode.hpp"
#include "SystemText.hpp"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <memory>
#include <string_view>

#include <unistd.h>

namespace SegmentTool
{
namespace
{
constexpr char szCardBegin[] = "<article ";

constexpr char szHead[] = R"html(<!DOCTYPE html>
<html lang="en">
<head>
<meta charset="utf-8">
<meta http-equiv="Content-Security-Policy" content="default-src 'none'; img-src data:; style-src 'unsafe-inline'; script-src 'unsafe-inline'">
<meta name="viewport" content="width=device-width, initial-scale=1">
<meta name="color-scheme" content="light dark">
<title>Slap pictures</title>
<style>
body { font: 15px/1.4 system-ui, sans-serif; margin: 0; background: Canvas; color: CanvasText; }
header { position: sticky; top: 0; z-index: 1; padding: .6em 1em; display: flex; flex-wrap: wrap; gap: .3em 1.2em;
  align-items: center; background: Canvas; border-bottom: 1px solid GrayText; }
h1 { font-size: 1.1em; margin: 0; }
main { display: grid; grid-template-columns: repeat(auto-fill, minmax(300px, 1fr)); gap: 1em; padding: 1em; }
article { border: 1px solid color-mix(in srgb, GrayText 50%, transparent); border-left: 6px solid var(--c);
  border-radius: 4px; padding: .6em; content-visibility: auto; contain-intrinsic-size: auto 380px; }
article svg { display: block; width: 100%; height: 300px; background: #fff; }
article .none { height: 300px; display: grid; place-items: center; background: color-mix(in srgb, GrayText 15%, transparent); }
rect { fill: none; stroke-width: 2px; vector-effect: non-scaling-stroke; }
text { font-weight: bold; paint-order: stroke; stroke: #fff; stroke-width: .25em; }
h2 { font-size: 1em; margin: .5em 0 0; overflow-wrap: anywhere; }
p { margin: .2em 0 0; overflow-wrap: anywhere; }
b { color: var(--c); }
[data-outcome=segmented] { --c: #00806c; }
[data-outcome=too_few] { --c: #b06a00; }
[data-outcome=no_finger] { --c: #8a5fb5; }
[data-outcome=unreadable], [data-outcome=not_written], [data-outcome=failed] { --c: #c8321e; }
</style>
</head>
<body>
<header><h1>Slap pictures</h1></header>
<main>
)html";

constexpr char szFootBegin[] = R"html(</main>
<noscript><p>Without scripts the pictures stand in the order of the list.</p></noscript>
)html";

constexpr char szFootEnd[] = R"html(<script>
const header = document.querySelector('header'), main = document.querySelector('main');
const cards = [...document.querySelectorAll('article')];
const outcomes = ['segmented', 'too_few', 'no_finger', 'unreadable', 'not_written', 'failed'];
const orders = {
  'list': (a, b) => a.dataset.index - b.dataset.index,
  'outcome': (a, b) => outcomes.indexOf(b.dataset.outcome) - outcomes.indexOf(a.dataset.outcome),
  'fewest fingers': (a, b) => a.dataset.fingers - b.dataset.fingers,
  'name': (a, b) => a.dataset.name < b.dataset.name ? -1 : a.dataset.name > b.dataset.name ? 1 : 0,
};
const select = document.createElement('select');
for (const name in orders) select.add(new Option(name));
select.onchange = () => main.append(...cards.sort((a, b) => orders[select.value](a, b) || orders.list(a, b)));
const label = document.createElement('label');
label.append('Sort by ', select);
header.append(label);
for (const outcome of outcomes) {
  const those = cards.filter(card => card.dataset.outcome === outcome);
  if (those.length === 0) continue;
  const box = document.createElement('input'), mark = document.createElement('label');
  box.type = 'checkbox';
  box.checked = true;
  box.name = outcome;
  box.onchange = () => those.forEach(card => card.hidden = !box.checked);
  mark.append(box, ` ${outcome.replace('_', ' ')} (${those.length})`);
  header.append(mark);
}
</script>
</body>
</html>
)html";

// Those of the overlay, as red, green and blue.
constexpr const char* aszColours[4] = {"#d55e00", "#0072b2", "#009e73", "#cc79a7"};

std::string Attribute(const char* szName, const std::string& sValue)
{
    return std::string(" ") + szName + "=\"" + EscapeHtml(sValue) + '"';
}

std::string Attribute(const char* szName, long long nValue)
{
    return Attribute(szName, std::to_string(nValue));
}

std::string Drawing(const ClResult& cResult, const std::string& sThumbnailUri)
{
    const int nWidth = cResult.m_nWidth;
    const int nHeight = cResult.m_nHeight;
    std::string sText = "<svg viewBox=\"0 0 " + std::to_string(nWidth) + ' ' + std::to_string(nHeight) +
                        "\" role=\"img\"" + Attribute("aria-label", cResult.m_sInput) + "><image" +
                        Attribute("href", sThumbnailUri) + Attribute("width", nWidth) + Attribute("height", nHeight) +
                        "/>";
    const int nLetters = std::max(nWidth, nHeight) / 14;
    for (std::size_t i = 0; i < cResult.m_aFingers.size(); ++i)
    {
        const ClFinger& c = cResult.m_aFingers[i];
        sText += "<rect" + Attribute("x", c.m_nX) + Attribute("y", c.m_nSeenY) +
                 Attribute("width", std::max(0, c.m_nWidth)) + Attribute("height", std::max(0, c.m_nHeight)) +
                 Attribute("stroke", aszColours[i % 4]) + "/><text" + Attribute("x", c.m_nX + nLetters / 4) +
                 Attribute("y", c.m_nSeenY + nLetters) + Attribute("font-size", nLetters) +
                 Attribute("fill", aszColours[i % 4]) + '>' +
                 (c.m_nPosition == 0 ? "?" : std::to_string(c.m_nPosition)) + "<title>" + PositionName(c.m_nPosition) +
                 "</title></text>";
    }
    return sText + "</svg>";
}

// What stands below the name.
std::string Words(const ClResult& cResult)
{
    std::string sOutcome = OutcomeName(cResult.m_eOutcome);
    std::replace(sOutcome.begin(), sOutcome.end(), '_', ' ');
    std::string sText = "<b>" + sOutcome + "</b>";
    if (!cResult.m_sMessage.empty()) sText += ": " + EscapeHtml(cResult.m_sMessage);
    if (cResult.m_nCode != 0) sText += " (" + std::to_string(cResult.m_nCode) + ')';
    if (cResult.m_eOutcome == EOutcome::eSegmented && !cResult.m_bBiggest)
    {
        const std::size_t nFingers = cResult.m_aFingers.size();
        sText += std::string(", hand ") + HandName(cResult.m_eHand) + ", " + std::to_string(nFingers) +
                 (nFingers == 1 ? " finger" : " fingers");
    }
    return sText;
}

void CloseFile(std::FILE* pFile)
{
    if (pFile != nullptr) std::fclose(pFile);
}
using File_t = std::unique_ptr<std::FILE, void (*)(std::FILE*)>;

// How many whole cards, up to nMost, a page begins with, and where the last of them ends.
struct ClCards
{
    ClCards(const std::string& sPath, std::uint64_t nMost)
    {
        const File_t pFile(std::fopen(sPath.c_str(), "rbe"), CloseFile);
        constexpr std::string_view sBegin = szCardBegin;
        std::size_t nInLine = 0; // bytes of the line so far
        bool bCard = true;
        std::uint64_t nRead = 0;
        for (int c = 0; pFile != nullptr && m_nCards < nMost && (c = std::getc(pFile.get())) != EOF; ++nRead)
        {
            if (nInLine < sBegin.size()) bCard = bCard && c == sBegin[nInLine];
            ++nInLine;
            if (c != '\n') continue;
            if (bCard)
            {
                ++m_nCards;
                m_nBytes = nRead + 1;
            }
            nInLine = 0;
            bCard = true;
        }
    }

    std::uint64_t m_nCards = 0;
    std::uint64_t m_nBytes = 0;
};
} // namespace

std::string ReportHead()
{
    return szHead;
}

std::string ReportCard(const ClResult& cResult, const std::string& sThumbnailUri)
{
    return szCardBegin + std::string("data-index=\"") + std::to_string(cResult.m_nIndex) + '"' +
           Attribute("data-outcome", OutcomeName(cResult.m_eOutcome)) +
           Attribute("data-fingers", static_cast<long long>(cResult.m_aFingers.size())) +
           Attribute("data-name", cResult.m_sInput) + '>' +
           (sThumbnailUri.empty() ? "<div class=\"none\">no picture</div>" : Drawing(cResult, sThumbnailUri)) + "<h2>" +
           EscapeHtml(cResult.m_sInput) + "</h2><p>" + Words(cResult) + "</p></article>\n";
}

std::string ReportFoot(const ClTally& cTally)
{
    return szFootBegin + ("<footer><p>" + cTally.Summary() + "</p></footer>\n") + szFootEnd;
}

void ClReport::Open(const std::string& sPath, std::uint64_t nKept)
{
    m_sPath = sPath;
    m_sPart = sPath + ".part";
    m_cFile.Open(m_sPart, nKept > 0);
    m_bOpen = true;
    if (nKept > 0)
        KeepCards(nKept);
    else
        m_cFile.Write(ReportHead());
}

// An earlier run was interrupted at any point, also when it copied the cards itself.
void ClReport::KeepCards(std::uint64_t nKept)
{
    const ClCards cPart(m_sPart, nKept);
    const ClCards cWhole(m_sPath, nKept);
    if (cPart.m_nCards == nKept)
    {
        m_cFile.Truncate(cPart.m_nBytes);
        return;
    }
    if (cWhole.m_nCards < nKept)
    {
        Abandon(cPart.m_nCards > 0);
        throw ClRunError(eExitUsage, "the report " + EscapeText(m_sPath) + " holds " +
                                         std::to_string(std::max(cPart.m_nCards, cWhole.m_nCards)) + " of the " +
                                         std::to_string(nKept) +
                                         " pictures that have results already; resume without --report, or begin anew");
    }
    m_cFile.Truncate(0);
    const File_t pFile(std::fopen(m_sPath.c_str(), "rbe"), CloseFile);
    char aBytes[65536];
    for (std::uint64_t nLeft = cWhole.m_nBytes; pFile != nullptr && nLeft > 0;)
    {
        const std::size_t nRead =
            std::fread(aBytes, 1, static_cast<std::size_t>(std::min<std::uint64_t>(nLeft, sizeof aBytes)), pFile.get());
        if (nRead == 0) throw ClRunError(eExitInternal, "cannot read " + EscapeText(m_sPath));
        m_cFile.Write(std::string_view(aBytes, nRead));
        nLeft -= nRead;
    }
}

void ClReport::Add(const std::string& sCard)
{
    if (m_bOpen) m_cFile.Write(sCard);
}

void ClReport::Finish(const ClTally& cTally)
{
    if (!m_bOpen) return;
    m_cFile.Write(ReportFoot(cTally));
    m_cFile.Close();
    m_bOpen = false;
    if (rename(m_sPart.c_str(), m_sPath.c_str()) != 0)
    {
        const int nError = errno;
        unlink(m_sPart.c_str());
        throw ClRunError(eExitInternal, "cannot write " + EscapeText(m_sPath) + ": " + SystemText(nError));
    }
}

void ClReport::Abandon(bool bKeep)
{
    if (!m_bOpen) return;
    m_bOpen = false;
    if (!bKeep) unlink(m_sPart.c_str());
}
} // namespace SegmentTool
