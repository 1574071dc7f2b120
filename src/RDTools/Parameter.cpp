#include "RDTools/Parameter.hpp"

#include "RDTools/ParameterContainer.hpp"

#include <cstring>

namespace
{
/// A text of up to 255 characters in one call, a longer one in a second with the size reported by the first.
template <class Read> std::string TextOf(Read&& read)
{
    return ConvertBadAlloc(
        [&]
        {
            std::string sText(256, '\0');
            unsigned long nSize = sText.size();
            while (!read(&sText[0], nSize) && nSize > sText.size())
            {
                sText.assign(nSize, '\0');
            }
            sText.resize(std::strlen(sText.c_str()));
            return sText;
        });
}
} // namespace

ClParameterBase::~ClParameterBase() = default;

const char* ClParameterBase::GetName() const
{
    return nullptr;
}

void ClParameterBase::SetName(const char*) {}

const char* ClParameterBase::GetDescription() const
{
    return nullptr;
}

void ClParameterBase::SetDescription(const char*) {}

ClParameterContainer* ClParameterBase::GetContainerInterface()
{
    return dynamic_cast<ClParameterContainer*>(this);
}

ClParameter* ClParameterBase::GetParameterInterface()
{
    return dynamic_cast<ClParameter*>(this);
}

ClParameterNumericInterface* ClParameterBase::GetNumericInterface()
{
    return dynamic_cast<ClParameterNumericInterface*>(this);
}

ClParameterEnumInterface* ClParameterBase::GetEnumInterface()
{
    return dynamic_cast<ClParameterEnumInterface*>(this);
}

ClParameterBlobInterface* ClParameterBase::GetBlobnterface()
{
    return dynamic_cast<ClParameterBlobInterface*>(this);
}

bool ClParameterBase::IsParameter() const
{
    return false;
}

bool ClParameterBase::IsNumeric() const
{
    return false;
}

bool ClParameterBase::IsEnum() const
{
    return false;
}

bool ClParameterBase::IsPointer() const
{
    return false;
}

bool ClParameterBase::IsString() const
{
    return false;
}

void ClParameterBase::SwapDefaultAndValue() {}

ClParameterContainer* ClParameterBase::GetRoot()
{
    ClParameterBase* pTop = this;
    while (pTop->m_pParent != nullptr)
    {
        pTop = pTop->m_pParent;
    }
    return pTop->GetContainerInterface();
}

bool ClParameterBase::GetPathName(char* szBuffer, unsigned long& nSize) const
{
    unsigned long nNeeded = 0; // every name counts its point; the last one's place is the terminator
    for (const ClParameterBase* pNode = this; pNode != nullptr; pNode = pNode->m_pParent)
    {
        const char* szName = pNode->GetName();
        nNeeded += szName != nullptr ? std::strlen(szName) + 1 : 0;
    }
    nNeeded = nNeeded == 0 ? 1 : nNeeded;
    const bool bFits = nSize >= nNeeded;
    nSize = nNeeded;
    if (!bFits || szBuffer == nullptr)
    {
        return bFits;
    }
    char* szEnd = szBuffer + nNeeded - 1; // filled from the end, as the walk goes from the leaf up
    *szEnd = '\0';
    bool bLast = true;
    for (const ClParameterBase* pNode = this; pNode != nullptr; pNode = pNode->m_pParent)
    {
        const char* szName = pNode->GetName();
        if (szName == nullptr)
        {
            continue;
        }
        if (!bLast)
        {
            *--szEnd = '.';
        }
        bLast = false;
        const std::size_t nLength = std::strlen(szName);
        szEnd -= nLength;
        std::memcpy(szEnd, szName, nLength);
    }
    return true;
}

std::string ClParameterBase::GetPathName() const
{
    return TextOf([this](char* szBuffer, unsigned long& nSize) { return GetPathName(szBuffer, nSize); });
}

void ClParameterBase::SetString(char** ppDest, const char* szSource)
{
    // Copied first: the source may be the text that is replaced.
    char* szCopy = nullptr;
    if (szSource != nullptr)
    {
        const std::size_t nSize = std::strlen(szSource) + 1;
        szCopy = new (std::nothrow) char[nSize];
        if (szCopy != nullptr)
        {
            std::memcpy(szCopy, szSource, nSize);
        }
    }
    delete[] * ppDest;
    *ppDest = szCopy;
    if (szSource != nullptr && szCopy == nullptr)
    {
        ThrowBadAlloc();
    }
}

ClParameter::~ClParameter()
{
    delete[] m_szCache;
    delete[] m_szName;
    delete[] m_szDescription;
}

const char* ClParameter::GetName() const
{
    return m_szName;
}

void ClParameter::SetName(const char* szName)
{
    SetString(&m_szName, szName);
}

const char* ClParameter::GetDescription() const
{
    return m_szDescription;
}

void ClParameter::SetDescription(const char* szDescription)
{
    SetString(&m_szDescription, szDescription);
}

ClParameter* ClParameter::GetParameterInterface()
{
    return this;
}

bool ClParameter::IsParameter() const
{
    return true;
}

bool ClParameter::IsContainer() const
{
    return false;
}

void ClParameter::CopyTo(ClParameterBase* pDest)
{
    ClParameter* pCopy = pDest->GetParameterInterface();
    pCopy->m_pTypeInfo = m_pTypeInfo;
    pCopy->m_nFlags = m_nFlags;
    pCopy->SetName(m_szName);
    pCopy->SetDescription(m_szDescription);
}

void ClParameter::SetContainer(ClParameterContainer*) {}

std::string ClParameter::GetValue()
{
    return TextOf([this](char* szBuffer, unsigned long& nSize) { return GetValue(szBuffer, nSize); });
}

std::string ClParameter::GetDefaultValue()
{
    return TextOf([this](char* szBuffer, unsigned long& nSize) { return GetDefaultValue(szBuffer, nSize); });
}

bool GiveText(const char* szText, char* szBuffer, unsigned long& nSize)
{
    const unsigned long nNeeded = std::strlen(szText) + 1;
    const bool bFits = nSize >= nNeeded;
    nSize = nNeeded;
    if (bFits && szBuffer != nullptr)
    {
        std::memcpy(szBuffer, szText, nNeeded);
    }
    return bFits;
}
