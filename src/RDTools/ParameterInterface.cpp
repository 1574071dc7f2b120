#include "RDTools/ParameterInterface.hpp"

#include "RDTools/SampleCast.hpp"
#include "RDTools/Stream.hpp"
#include "RDTools/TpArrayStatic.hpp"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <memory>
#include <utility>

namespace
{
constexpr char szModule[] = "RDTools/ParameterInterface";
constexpr char szUnknown[] = "Unknown";
constexpr std::size_t nTextSize = 256; // of a value as text, terminator included

/// A number through an untyped pointer.
template <class T> T Load(const void* pValue)
{
    T value;
    std::memcpy(&value, pValue, sizeof(T));
    return value;
}

template <class T> void Store(void* pTarget, T value)
{
    std::memcpy(pTarget, &value, sizeof(T));
}

/// The number of texts before the empty one that ends a list.
long CountTexts(const char* szList)
{
    long nCount = 0;
    for (; szList != nullptr && *szList != '\0'; szList += std::strlen(szList) + 1)
    {
        ++nCount;
    }
    return nCount;
}

/// Text nIndex of a list, or null.
const char* TextAt(const char* szList, long nIndex)
{
    for (; nIndex > 0 && szList != nullptr && *szList != '\0'; --nIndex)
    {
        szList += std::strlen(szList) + 1;
    }
    return nIndex == 0 && szList != nullptr && *szList != '\0' ? szList : nullptr;
}

void CopyText(const char* szText, char* szBuffer, std::size_t nSize)
{
    const std::size_t nLength = std::min(std::strlen(szText), nSize - 1);
    std::memmove(szBuffer, szText, nLength);
    szBuffer[nLength] = '\0';
}

void CheckType(bool bType)
{
    if (!bType)
    {
        throw ClException("the parameter holds something else", FPC_ERROR_PARAM_INVALID, true, szModule, __LINE__);
    }
}

/// Reads a number as it stands in a record and hands it on; one that is not complete is passed over.
template <class TFile, class Fn> void ReadNumber(ClStream& cStream, Fn&& store)
{
    TFile number = 0;
    if (cStream.ReadAutoSwap(number) == sizeof number)
    {
        store(number);
    }
}

void ReadFlag(ClStream& cStream, bool& bFlag)
{
    ReadNumber<unsigned char>(cStream, [&bFlag](unsigned char cFlag) { bFlag = cFlag != 0; });
}

void Drop(ClStream& cStream)
{
    ReadNumber<unsigned char>(cStream, [](unsigned char) {});
}

/// As "%d", so the low half of a long.
void FmtInt(long nValue, char* szBuffer, std::size_t nSize)
{
    std::snprintf(szBuffer, nSize, "%d", static_cast<int>(nValue));
}
} // namespace

ClParameterInterface::ClParameter::~ClParameter()
{
    delete[] m_szEnumList;
    delete[] m_pnEnumValues;
    delete[] m_szName;
    delete[] m_szDescription;
}

void ClParameterInterface::ClParameter::SetName(const char* szName)
{
    ClParameterBase::SetString(&m_szName, szName);
}

void ClParameterInterface::ClParameter::SetDescription(const char* szDescription)
{
    ClParameterBase::SetString(&m_szDescription, szDescription);
}

void ClParameterInterface::ClParameter::SetEnumList(const char* szList, const long* pnValues)
{
    std::unique_ptr<char[]> szCopy;
    std::unique_ptr<long[]> pnCopy;
    if (szList != nullptr)
    {
        const char* pEnd = szList;
        while (*pEnd != '\0')
        {
            pEnd += std::strlen(pEnd) + 1;
        }
        const auto nBytes = static_cast<std::size_t>(pEnd - szList) + 1;
        szCopy.reset(NewArray<char>(nBytes));
        std::memcpy(szCopy.get(), szList, nBytes);
        if (pnValues != nullptr)
        {
            const auto nCount = static_cast<unsigned long>(CountTexts(szList));
            pnCopy.reset(NewArray<long>(nCount));
            std::copy_n(pnValues, nCount, pnCopy.get());
        }
    }
    delete[] m_szEnumList;
    delete[] m_pnEnumValues;
    m_szEnumList = szCopy.release();
    m_pnEnumValues = pnCopy.release();
}

void ClParameterInterface::ClParameter::SetEnumNames(const StEnumName* pNames, std::size_t nCount)
{
    std::size_t nBytes = 1;
    for (std::size_t i = 0; i < nCount; ++i)
    {
        nBytes += std::strlen(pNames[i].szName) + 1;
    }
    const std::unique_ptr<char[]> szList(NewArray<char>(nBytes));
    const std::unique_ptr<long[]> pnValues(NewArray<long>(nCount));
    char* pText = szList.get();
    for (std::size_t i = 0; i < nCount; ++i)
    {
        pnValues[i] = pNames[i].nValue;
        const std::size_t nText = std::strlen(pNames[i].szName) + 1;
        std::memcpy(pText, pNames[i].szName, nText);
        pText += nText;
    }
    *pText = '\0';
    SetEnumList(szList.get(), pnValues.get());
}

void ClParameterInterface::ClParameter::SetRange(double dLower, double dUpper)
{
    m_dLower = dLower;
    m_dUpper = dUpper;
    if (!RangeDefined())
    {
        m_bNoRange = 1;
    }
}

const char* ClParameterInterface::ClParameter::szType() const
{
    switch (m_eType)
    {
    case eByte: return "eByte";
    case eShort: return "eShort";
    case eAngle: return "eAngle";
    case eLong: return "eLong";
    case eDouble: return "eDouble";
    case eFloat: return "eFloat";
    case eVoid: return "eVoid";
    case eImage: return "eImage";
    case eBool: return "eBool";
    case eEnum: return "eEnum";
    case eGraph: return "eGraph";
    default: return szUnknown;
    }
}

const char* ClParameterInterface::ClParameter::szDir() const
{
    switch (m_eDirection)
    {
    case eIn: return "eIn";
    case eOut: return "eOut";
    case eInOut: return "eInOut";
    case eOptional: return "eOptional";
    default: return szUnknown;
    }
}

/// Whether this is the parameter's own variable and, though described as long, an int.
bool ClParameterInterface::ClParameter::HoldsInt(const void* pVariable) const
{
    return pVariable == m_pValue && m_nLongBytes == sizeof(int);
}

long ClParameterInterface::ClParameter::LoadInteger(const void* pValue) const
{
    switch (m_eType)
    {
    case eByte:
    case eBool: return Load<unsigned char>(pValue);
    case eShort: return Load<short>(pValue);
    case eAngle: return Load<unsigned short>(pValue);
    default: return HoldsInt(pValue) ? Load<int>(pValue) : Load<long>(pValue);
    }
}

/// Integers keep their low bits.
void ClParameterInterface::ClParameter::StoreInteger(void* pTarget, long nValue) const
{
    switch (m_eType)
    {
    case eByte:
    case eBool: Store(pTarget, static_cast<unsigned char>(nValue)); break;
    case eShort:
    case eAngle: Store(pTarget, static_cast<unsigned short>(nValue)); break;
    default:
        if (HoldsInt(pTarget))
        {
            Store(pTarget, static_cast<int>(nValue));
        }
        else
        {
            Store(pTarget, nValue);
        }
    }
}

void ClParameterInterface::ClParameter::SetValue(void* pTarget, double dValue)
{
    switch (m_eType)
    {
    case eByte:
    case eShort:
    case eAngle:
    case eLong:
    case eEnum:
        CheckVariable(pTarget);
        StoreInteger(pTarget, CastSample<long>(dValue));
        break;
    case eDouble:
        CheckVariable(pTarget);
        Store(pTarget, dValue);
        break;
    case eFloat:
        CheckVariable(pTarget);
        Store(pTarget, static_cast<float>(dValue));
        break;
    case eBool:
        CheckVariable(pTarget);
        StoreInteger(pTarget, dValue != 0.0 ? 1 : 0);
        break;
    default: break;
    }
}

void ClParameterInterface::ClParameter::SetValue(double dValue)
{
    if (!m_bIndirect)
    {
        SetValue(m_pValue, dValue);
    }
}

void ClParameterInterface::ClParameter::SetValue(ClImage* pImage)
{
    CheckType(m_eType == eImage);
    CheckVariable(m_pValue);
    *static_cast<ClImage**>(m_pValue) = pImage;
}

void ClParameterInterface::ClParameter::SetValue(ClGraph* pGraph)
{
    CheckType(m_eType == eGraph);
    CheckVariable(m_pValue);
    *static_cast<ClGraph**>(m_pValue) = pGraph;
}

ClImage* ClParameterInterface::ClParameter::GetImage() const
{
    return m_eType == eImage && m_pValue != nullptr ? *static_cast<ClImage**>(m_pValue) : nullptr;
}

ClGraph* ClParameterInterface::ClParameter::GetGraph() const
{
    return m_eType == eGraph && m_pValue != nullptr ? *static_cast<ClGraph**>(m_pValue) : nullptr;
}

const char* ClParameterInterface::ClParameter::GetszValue(const void* pValue) const
{
    if (m_eType == eImage || m_eType == eGraph)
    {
        return m_eType == eImage ? "Image" : "Graph";
    }
    thread_local char szText[nTextSize];
    if (pValue == nullptr)
    {
        return szUnknown;
    }
    switch (m_eType)
    {
    case eByte:
    case eShort:
    case eLong: FmtInt(LoadInteger(pValue), szText, nTextSize); break;
    case eAngle:
    {
        const auto nAngle = Load<unsigned short>(pValue);
        std::snprintf(szText, nTextSize, "%hu=%.3f\xB0", nAngle, nAngle * 360.0 / 65536.0);
        break;
    }
    case eDouble: std::snprintf(szText, nTextSize, "%.5f", Load<double>(pValue)); break;
    case eFloat: std::snprintf(szText, nTextSize, "%.5f", static_cast<double>(Load<float>(pValue))); break;
    case eBool:
    case eEnum: return EnumToStr(LoadInteger(pValue), m_szEnumList, szText, nTextSize);
    case eText: CopyText(static_cast<const char*>(pValue), szText, nTextSize); break;
    default: return szUnknown;
    }
    return szText;
}

const char* ClParameterInterface::ClParameter::EnumToStr(long nValue, const char* szList, char* szBuffer,
                                                         long nSize) const
{
    if (szBuffer == nullptr || nSize <= 0)
    {
        return szBuffer;
    }
    long nIndex = nValue;
    if (m_pnEnumValues != nullptr)
    {
        const long nCount = CountTexts(m_szEnumList);
        nIndex = std::find(m_pnEnumValues, m_pnEnumValues + nCount, nValue) - m_pnEnumValues;
        nIndex = nIndex < nCount ? nIndex : -1;
    }
    const char* szText = TextAt(szList, nIndex);
    CopyText(szText == nullptr ? szUnknown : szText, szBuffer, static_cast<std::size_t>(nSize));
    return szBuffer;
}

void ClParameterInterface::ClParameter::WriteToStream(ClStream& cStream)
{
    cStream.WriteString(m_szName);
    cStream.WriteAutoSwap(static_cast<unsigned char>(m_eDirection));
    cStream.WriteAutoSwap(static_cast<unsigned char>(m_bNoRange));
    cStream.WriteAutoSwap(m_dLower);
    cStream.WriteAutoSwap(m_dUpper);
    cStream.WriteAutoSwap(m_dDefault);
    cStream.WriteAutoSwap(static_cast<unsigned char>(m_bFlag1));
    cStream.WriteAutoSwap(static_cast<unsigned char>(m_bIndirect));
    cStream.WriteAutoSwap(static_cast<unsigned char>(m_eType));
    static constexpr double dNone = 0.0; // as many zeroes as any value has bytes, for a parameter without variable
    const void* pValue = m_pValue == nullptr ? &dNone : m_pValue;
    switch (m_eType)
    {
    case eByte: cStream.WriteAutoSwap(static_cast<std::uint8_t>(LoadInteger(pValue))); break;
    case eShort:
    case eAngle: cStream.WriteAutoSwap(static_cast<std::uint16_t>(LoadInteger(pValue))); break;
    case eLong: cStream.WriteAutoSwap(static_cast<std::uint32_t>(LoadInteger(pValue))); break;
    case eDouble: cStream.WriteAutoSwap(Load<double>(pValue)); break;
    case eFloat: cStream.WriteAutoSwap(Load<float>(pValue)); break;
    default: break;
    }
}

long ClParameterInterface::ClParameter::ReadFromStream(ClStream& cStream)
{
    char* szRead = nullptr;
    cStream.ReadString(&szRead);
    const std::unique_ptr<char[]> szOwned(szRead);
    if (std::strcmp(szRead == nullptr ? "" : szRead, m_szName == nullptr ? "" : m_szName) != 0)
    {
        return FPC_ERROR_FORMAT_NOTSUPPORTED;
    }
    Drop(cStream); // direction
    Drop(cStream); // no range
    for (double* pdField : {&m_dLower, &m_dUpper, &m_dDefault})
    {
        ReadNumber<double>(cStream, [pdField](double dRead) { *pdField = dRead; });
    }
    ReadFlag(cStream, m_bFlag1);
    ReadFlag(cStream, m_bIndirect);
    Drop(cStream); // type
    ReadValue(cStream);
    return FPC_SUCCESS;
}

void ClParameterInterface::ClParameter::ReadValue(ClStream& cStream)
{
    const auto storeInteger = [this](long nRead)
    {
        if (m_pValue != nullptr)
        {
            StoreInteger(m_pValue, nRead);
        }
    };
    const auto storeNumber = [this](auto dRead)
    {
        if (m_pValue != nullptr)
        {
            Store(m_pValue, dRead);
        }
    };
    switch (m_eType)
    {
    case eByte: ReadNumber<std::uint8_t>(cStream, storeInteger); break;
    case eShort: ReadNumber<std::int32_t>(cStream, storeInteger); break; // meant: two bytes more than are written
    case eAngle: ReadNumber<std::uint16_t>(cStream, storeInteger); break;
    case eLong: ReadNumber<std::int32_t>(cStream, storeInteger); break;
    case eDouble: ReadNumber<double>(cStream, storeNumber); break;
    case eFloat: ReadNumber<float>(cStream, storeNumber); break;
    default: break;
    }
}

ClParameterInterface::~ClParameterInterface()
{
    Clear();
}

void ClParameterInterface::Clear()
{
    while (m_pFirst != nullptr)
    {
        const std::unique_ptr<ClParameter> pGone(m_pFirst);
        m_pFirst = pGone->m_pNext;
    }
    m_nCount = 0;
}

void ClParameterInterface::WriteToStream(ClStream& cStream)
{
    for (ClParameter* pParameter = m_pFirst; pParameter != nullptr; pParameter = pParameter->m_pNext)
    {
        pParameter->WriteToStream(cStream);
    }
}

void ClParameterInterface::ReadFromStream(ClStream& cStream)
{
    for (ClParameter* pParameter = m_pFirst; pParameter != nullptr; pParameter = pParameter->m_pNext)
    {
        if (const long nFailure = pParameter->ReadFromStream(cStream))
        {
            throw ClExVelmarin(nFailure, szModule, __LINE__);
        }
    }
}

void ClParameterInterface::CheckVariable(const void* pValue)
{
    if (pValue == nullptr)
    {
        throw ClException("m_pValue is not set", FPC_ERROR_BAD_POINTER, true, szModule, __LINE__);
    }
}

std::unique_ptr<ClParameterInterface::ClParameter> ClParameterInterface::Make(void* pValue, const char* szName,
                                                                              const char* szDescription,
                                                                              EDirection eDirection, EType eType)
{
    std::unique_ptr<ClParameter> pParameter(ConvertBadAlloc([] { return new ClParameter; }));
    pParameter->SetName(szName);
    pParameter->SetDescription(szDescription);
    pParameter->m_pValue = pValue;
    pParameter->m_eDirection = eDirection;
    pParameter->m_eType = eType;
    return pParameter;
}

std::unique_ptr<ClParameterInterface::ClParameter>
ClParameterInterface::MakeNumber(void* pValue, const StNumber& cNumber, const char* szName, const char* szDescription,
                                 EDirection eDirection, double dLower, double dUpper)
{
    ProcessRanges(cNumber.dValue, dLower, dUpper);
    auto pParameter = Make(pValue, szName, szDescription, eDirection, cNumber.eType);
    pParameter->SetRange(std::clamp(dLower, cNumber.dLowest, cNumber.dHighest),
                         std::clamp(dUpper, cNumber.dLowest, cNumber.dHighest));
    pParameter->m_nLongBytes = cNumber.nBytes == sizeof(int) ? sizeof(int) : sizeof(long);
    pParameter->m_dDefault = cNumber.dValue;
    return pParameter;
}

ClParameterInterface::ClParameter* ClParameterInterface::Append(std::unique_ptr<ClParameter> pParameter)
{
    ClParameter** ppEnd = &m_pFirst;
    while (*ppEnd != nullptr)
    {
        ppEnd = &(*ppEnd)->m_pNext;
    }
    *ppEnd = pParameter.release();
    ++m_nCount;
    return *ppEnd;
}

ClParameterInterface::ClParameter* ClParameterInterface::AddParameter()
{
    return Append(Make(nullptr, nullptr, nullptr, eInOut, eVoid));
}

ClParameterInterface::ClParameter* ClParameterInterface::AddParameter(void** ppValue, const char* szName,
                                                                      const char* szDescription, EDirection eDirection,
                                                                      long eType, long bNoRange)
{
    auto pParameter = Make(ppValue, szName, szDescription, eDirection, static_cast<EType>(eType));
    pParameter->m_bNoRange = static_cast<int>(bNoRange);
    return Append(std::move(pParameter));
}

ClParameterInterface::ClParameter* ClParameterInterface::AddPointer(void* ppValue, const char* szName,
                                                                    const char* szDescription, EDirection eDirection,
                                                                    EType eType, double dLower, double dUpper)
{
    auto pParameter = Make(ppValue, szName, szDescription, eDirection, eType);
    pParameter->SetRange(dLower, dUpper);
    return Append(std::move(pParameter));
}

ClParameterInterface::ClParameter* ClParameterInterface::AddParameter(ClImage** ppImage, const char* szName,
                                                                      const char* szDescription, EDirection eDirection,
                                                                      double dLower, double dUpper)
{
    return AddPointer(ppImage, szName, szDescription, eDirection, eImage, dLower, dUpper);
}

ClParameterInterface::ClParameter* ClParameterInterface::AddParameter(ClGraph** ppGraph, const char* szName,
                                                                      const char* szDescription, EDirection eDirection,
                                                                      double dLower, double dUpper)
{
    return AddPointer(ppGraph, szName, szDescription, eDirection, eGraph, dLower, dUpper);
}

ClParameterInterface::ClParameter* ClParameterInterface::AddComment(const char* szText)
{
    return AddParameter(nullptr, szText, nullptr, eOut, static_cast<long>(eCommentLine), 1L);
}

void ClParameterInterface::ProcessRanges(double dValue, double& dLower, double& dUpper)
{
    if (dLower == 1.0 && dUpper == -1.0)
    {
        const double dLess = dValue * 0.6666666666666666;
        const double dMore = dValue * 1.3333333333333333;
        dLower = std::min(dLess, dMore);
        dUpper = std::max(dLess, dMore);
    }
}

ClParameterInterface::ClParameter* ClParameterInterface::GetParameter(long nIndex) const
{
    ClParameter* pParameter = nIndex < 0 ? nullptr : m_pFirst;
    for (; nIndex > 0 && pParameter != nullptr; --nIndex)
    {
        pParameter = pParameter->m_pNext;
    }
    return pParameter;
}
