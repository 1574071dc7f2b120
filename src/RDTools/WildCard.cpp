#include "RDTools/WildCard.hpp"

#include "RDTools/Exception.hpp"

namespace
{
void CheckText(const char* szText)
{
    if (szText == nullptr)
    {
        throw ClExVelmarin(FPC_ERROR_INVALID_PARAMETER, "RDTools/WildCard", __LINE__);
    }
}

/// Whether one character of the name, or its terminator, stands for a character of the pattern.
bool SameCharacter(char cPattern, char cName)
{
    return cName != '\0' && (cName == cPattern || (cPattern == '?' && cName != '.'));
}

/// Characters of the segment that are met at szName, a segment being what comes before the next star.
std::size_t Compare(const char* szSegment, const char* szName)
{
    std::size_t n = 0;
    while (szSegment[n] != '*' && SameCharacter(szSegment[n], szName[n]))
    {
        ++n;
    }
    return n;
}
} // namespace

FileSystem::ClWildCard::ClWildCard(const char* szPattern)
{
    CheckText(szPattern);
    ConvertBadAlloc([&] { m_sPattern = szPattern; });
}

bool FileSystem::ClWildCard::Match(const char* szName) const
{
    return Match(m_sPattern.c_str(), szName);
}

bool FileSystem::ClWildCard::Match(const char* szPattern, const char* szName) const
{
    CheckText(szPattern);
    CheckText(szName);
    // A segment that is met as far left as possible leaves the most for those behind it, so none is ever taken back.
    bool bStar = false;
    for (;;)
    {
        for (; *szPattern == '*'; ++szPattern)
        {
            bStar = true;
        }
        if (bStar && *szPattern == '\0')
        {
            return true;
        }
        const std::size_t nMet = Compare(szPattern, szName);
        if (szPattern[nMet] == '*')
        {
            szPattern += nMet;
            szName += nMet;
        }
        else if (szName[nMet] == '\0')
        {
            return szPattern[nMet] == '\0';
        }
        else if (bStar)
        {
            ++szName;
        }
        else
        {
            return false;
        }
    }
}
