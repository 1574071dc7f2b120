#include "RDTools/ParameterContainer.hpp"

#include <cstring>
#include <strings.h>

namespace
{
constexpr char szModule[] = "RDTools/ParameterContainer";
constexpr unsigned long nMaxPart = 255; // characters of one part of a path
} // namespace

ClParameterContainer::ClParameterContainer()
{
    m_nFlags = eContainer;
    m_pTypeInfo = &typeid(ClParameterContainer);
}

ClParameterContainer::ClParameterContainer(const char* szName) : ClParameterContainer()
{
    SetName(szName);
}

ClParameterContainer::~ClParameterContainer()
{
    Clear();
}

void ClParameterContainer::Clear()
{
    for (unsigned long i = m_aChildren.Entries(); i > 0; --i)
    {
        delete m_aChildren[i - 1];
    }
    m_aChildren.New(0);
}

ClParameterContainer* ClParameterContainer::GetContainerInterface()
{
    return this;
}

ClParameter* ClParameterContainer::GetParameterInterface()
{
    return this;
}

bool ClParameterContainer::IsContainer() const
{
    return true;
}

bool ClParameterContainer::IsDefault() const
{
    for (unsigned long i = 0; i < m_aChildren.Entries(); ++i)
    {
        if (!m_aChildren[i]->IsDefault())
        {
            return false;
        }
    }
    return true;
}

ClParameterContainer* ClParameterContainer::CastOrThrow(ClParameterBase* pOther, long nLine) const
{
    ClParameterContainer* pContainer = pOther == nullptr ? nullptr : pOther->GetContainerInterface();
    if (pContainer == nullptr)
    {
        throw ClException("pCast is not set", FPC_ERROR_BAD_POINTER, true, szModule, nLine);
    }
    return pContainer;
}

template <class Fn> void ClParameterContainer::ForEachPair(ClParameterBase* pOther, Fn&& fn)
{
    ClParameterContainer* pContainer = CastOrThrow(pOther, __LINE__);
    for (unsigned long i = 0; i < m_aChildren.Entries(); ++i)
    {
        fn(m_aChildren[i], pContainer->m_aChildren[i]);
    }
}

ClParameterBase* ClParameterContainer::Clone()
{
    std::unique_ptr<ClParameterContainer> pClone(ConvertBadAlloc([] { return new ClParameterContainer; }));
    CopyTo(pClone.get());
    return pClone.release();
}

void ClParameterContainer::CopyTo(ClParameterBase* pDest)
{
    pDest->SetName(m_szName);
    CloneDataTo(pDest);
}

void ClParameterContainer::CloneDataTo(ClParameterBase* pDest)
{
    ClParameterContainer* pContainer = CastOrThrow(pDest, __LINE__);
    for (unsigned long i = 0; i < m_aChildren.Entries(); ++i)
    {
        ClParameterBase* pClone = m_aChildren[i]->Clone();
        pContainer->AddParameter(m_aChildren[i]->m_szName, pClone->GetParameterInterface());
    }
}

void ClParameterContainer::CopyDefaultFrom(ClParameterBase* pOther)
{
    ForEachPair(pOther, [](ClParameter* pOwn, ClParameter* pFrom) { pOwn->CopyDefaultFrom(pFrom); });
}

void ClParameterContainer::CopyDefaultFromValue(ClParameterBase* pOther)
{
    ForEachPair(pOther, [](ClParameter* pOwn, ClParameter* pFrom) { pOwn->CopyDefaultFromValue(pFrom); });
}

void ClParameterContainer::CopyValuesFrom(ClParameterBase* pOther, bool bPointers)
{
    ForEachPair(pOther, [bPointers](ClParameter* pOwn, ClParameter* pFrom) { pOwn->CopyValuesFrom(pFrom, bPointers); });
}

void ClParameterContainer::SetToDefaultFrom(ClParameterBase* pOther)
{
    ForEachPair(pOther, [](ClParameter* pOwn, ClParameter* pFrom) { pOwn->SetToDefaultFrom(pFrom); });
}

void ClParameterContainer::SetToDefault()
{
    for (unsigned long i = 0; i < m_aChildren.Entries(); ++i)
    {
        m_aChildren[i]->SetToDefault();
    }
}

void ClParameterContainer::SwapDefaultAndValue()
{
    for (unsigned long i = 0; i < m_aChildren.Entries(); ++i)
    {
        m_aChildren[i]->SwapDefaultAndValue();
    }
}

void ClParameterContainer::SetValue(const char*) {}

bool ClParameterContainer::GetValue(char* szBuffer, unsigned long& nSize)
{
    return GiveText("", szBuffer, nSize);
}

bool ClParameterContainer::GetDefaultValue(char* szBuffer, unsigned long& nSize)
{
    return GiveText("", szBuffer, nSize);
}

void* ClParameterContainer::GetParameterPtr()
{
    return this;
}

ClParameter* ClParameterContainer::FindLocal(const char* szName) const
{
    for (unsigned long i = 0; szName != nullptr && i < m_aChildren.Entries(); ++i)
    {
        const char* szChild = m_aChildren[i]->GetName();
        if (szChild != nullptr && strcasecmp(szChild, szName) == 0)
        {
            return m_aChildren[i];
        }
    }
    return nullptr;
}

ClParameter* ClParameterContainer::Find(const char* szPath)
{
    if (szPath == nullptr)
    {
        return nullptr;
    }
    if (std::strcmp(szPath, ".") == 0)
    {
        return GetRoot();
    }
    if (szPath[0] == '.')
    {
        return FindNamePart(GetRoot(), szPath);
    }
    char szPart[nMaxPart + 1];
    const char* szRest = CopyNamePathPart(szPath, szPart, nMaxPart);
    if (m_pParent == nullptr && m_szName != nullptr && std::strcmp(m_szName, szPart) == 0 && *szRest == '.')
    {
        szRest = CopyNamePathPart(szRest + 1, szPart, nMaxPart);
    }
    return FindNamePart(FindLocal(szPart), szRest);
}

ClParameter* ClParameterContainer::FindNamePart(ClParameter* pPart, const char* szRest)
{
    if (*szRest == '.' && pPart != nullptr && pPart->IsContainer())
    {
        return pPart->GetContainerInterface()->Find(szRest + 1);
    }
    return pPart;
}

const char* ClParameterContainer::CopyNamePathPart(const char* szPath, char* szPart, unsigned long nMax)
{
    unsigned long nLeft = nMax;
    while (nLeft != 0 && *szPath != '\0' && *szPath != '.')
    {
        *szPart++ = *szPath++;
        --nLeft;
    }
    *szPart = '\0';
    // Only a part that fills the room to the last character is refused; a longer one is cut.
    if (nLeft == 0 && (*szPath == '\0' || *szPath == '.'))
    {
        throw ClException("Parameter path part was to long max len is 255", FPC_ERROR_INTERNAL, false, "Unknown", -1);
    }
    return szPath;
}

ClParameter* ClParameterContainer::GetFirstParameter()
{
    return GetNextParameter(0UL);
}

ClParameter* ClParameterContainer::GetNextParameter(unsigned long nIndex)
{
    for (unsigned long i = nIndex; i < m_aChildren.Entries(); ++i)
    {
        ClParameter* pChild = m_aChildren[i];
        if (pChild == nullptr)
        {
            ThrowBadAlloc();
        }
        ClParameter* pFound = pChild->IsContainer() ? pChild->GetContainerInterface()->GetFirstParameter() : pChild;
        if (pFound != nullptr)
        {
            return pFound;
        }
    }
    return nullptr;
}

ClParameter* ClParameterContainer::GetNextParameter(ClParameter* pLast)
{
    if (pLast == nullptr)
    {
        return GetFirstParameter();
    }
    ClParameterContainer* pParent = pLast->m_pParent;
    if (pParent == nullptr)
    {
        throw ClException("pParent is not set", FPC_ERROR_BAD_POINTER, true, szModule, __LINE__);
    }
    const ClParameter* pBehind = pLast;
    while (pParent != nullptr)
    {
        const unsigned long nIndex = pParent->m_aChildren.Find(const_cast<ClParameter*>(pBehind), 0);
        if (ClParameter* pFound = pParent->GetNextParameter(nIndex + 1))
        {
            return pFound;
        }
        pBehind = pParent;
        pParent = pParent->m_pParent;
    }
    return nullptr;
}

ClParameterContainer* ClParameterContainer::AddContainer(const char* szName)
{
    ClParameterContainer* pContainer = ConvertBadAlloc([] { return new ClParameterContainer; });
    AddParameter(szName, pContainer);
    return pContainer;
}

void ClParameterContainer::AddParameter(const char* szName, ClParameter* pParameter)
{
    std::unique_ptr<ClParameter> pOwned(pParameter);
    pParameter->SetName(szName);
    if (FindLocal(szName) != nullptr)
    {
        throw ClExVelmarin(FPC_ERROR_PARAM_VALUE_DUPLICATE, "RDTools/ParameterContainer.hpp", __LINE__);
    }
    m_aChildren.Add(pParameter);
    pParameter->m_pParent = this;
    pParameter->m_nFlags = static_cast<unsigned char>(pParameter->m_nFlags & ~eAddedMark);
    pOwned.release();
}
